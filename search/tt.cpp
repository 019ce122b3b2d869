#include "search/tt.h"

#include <algorithm>
#include <cassert>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "board/makemove.h"
#include "platform/platform.h"

HashEntry* hash_table = nullptr;
uint64_t hash_size    = 0;
uint64_t hash_mask    = 0;
uint32_t hash_age     = 0;

constexpr uint64_t MEGABYTE    = 1048576;
constexpr uint32_t AGE_MASK    = 63;
constexpr int DATA_SCORE_SHIFT = 16, DATA_EVAL_SHIFT = 32, DATA_DEPTH_SHIFT = 48;
constexpr int DATA_BOUND_SHIFT = 56, DATA_AGE_SHIFT = 58;

// The size of the block hash_table points into, which large_free needs back.
static uint64_t allocated_bytes = 0;

void hash_free() {
    if (hash_table) std::destroy_n(hash_table, allocated_bytes / sizeof(HashEntry));
    large_free(hash_table, allocated_bytes);
    hash_table      = nullptr;
    allocated_bytes = 0;
}

void hash_alloc(int mb) {
    // The size is kept even; anything below 2 MB (which would leave no entries) becomes 2 MB.
    int m = mb & ~1;
    if (m < 2) m = 2;
    hash_size = static_cast<uint64_t>(m) * MEGABYTE;
    if (hash_table && hash_size == allocated_bytes) {
        // The size it has already (a GUI sends its memory line before every game): the table is
        // emptied where it is, without giving back its pages and touching new ones.
        std::memset(static_cast<void*>(hash_table), 0, hash_size);
    } else {
        hash_mask = hash_size / sizeof(HashEntry) - 1;
        hash_free();
        // Probes land anywhere in the table, so it sits on huge pages where the system has them.
        // Value-initialised entries: every word of the new table is 0, and every page is touched
        // now, not in the middle of the first search.
        const uint64_t entries = hash_size / sizeof(HashEntry);
        void* block            = hash_size <= memory_available() ? large_alloc(hash_size) : nullptr;
        if (block) {
            hash_table = static_cast<HashEntry*>(block);
            std::uninitialized_value_construct_n(hash_table, entries);
            allocated_bytes = hash_size;
        }
        if (!hash_table) {
            std::printf(" hash allocation error - exiting ...\n");
            std::exit(1);
        }
    }
    std::printf("hash=%dMB\n", m);
}

void hash_clear() {
    // No search runs while the table is cleared, so one block fill serves for all the words.
    if (hash_table) std::memset(static_cast<void*>(hash_table), 0, hash_size);
    hash_age = 0;
}

int score_to_hash(int score, int ply) {
    if (score > MATE_STORE_HIGH) return score + ply;
    if (score < MATE_STORE_LOW) return score - ply;
    return score;
}

int score_from_hash(int score, int ply) {
    if (score > MATE_STORE_HIGH) return score - ply;
    if (score < MATE_STORE_LOW) return score + ply;
    return score;
}

bool hash_probe(uint64_t key, int ply, HashHit& hit) {
    const HashEntry& e   = hash_table[key & hash_mask];
    const uint64_t data  = e.data.load(std::memory_order_relaxed);
    const uint64_t check = e.check.load(std::memory_order_relaxed);
    if (data == 0 || (check ^ key) != data) return false;
    hit.move  = static_cast<Move>(data & MOVE_WORD_BITS);
    hit.score = score_from_hash(static_cast<int16_t>(data >> DATA_SCORE_SHIFT), ply);
    hit.eval  = static_cast<int16_t>(data >> DATA_EVAL_SHIFT);
    hit.depth = static_cast<int8_t>(data >> DATA_DEPTH_SHIFT);
    hit.bound = static_cast<int>((data >> DATA_BOUND_SHIFT) & 3);
    return true;
}

void hash_store(const SearchThread& t, Move move, int score, int eval, int depth, int ply, int bound) {
    // What the entry's fields can hold: a score within the mates, a depth of one byte.
    assert(score >= -MATE && score <= MATE && depth >= INT8_MIN && depth <= INT8_MAX);
    HashEntry& e           = hash_table[t.key & hash_mask];
    const uint64_t old     = e.data.load(std::memory_order_relaxed);
    const bool same        = (e.check.load(std::memory_order_relaxed) ^ t.key) == old;
    const int old_depth    = static_cast<int8_t>(old >> DATA_DEPTH_SHIFT);
    const uint32_t old_age = static_cast<uint32_t>(old >> DATA_AGE_SHIFT);
    // A deeper entry of another position from this same search is worth more than the new one.
    if (!same && old_depth > depth && old_age == (hash_age & AGE_MASK)) return;
    const uint64_t data = (move & MOVE_WORD_BITS) |
                          static_cast<uint64_t>(static_cast<uint16_t>(score_to_hash(score, ply)))
                              << DATA_SCORE_SHIFT |
                          static_cast<uint64_t>(static_cast<uint16_t>(eval)) << DATA_EVAL_SHIFT |
                          static_cast<uint64_t>(static_cast<uint8_t>(depth)) << DATA_DEPTH_SHIFT |
                          static_cast<uint64_t>(bound & 3) << DATA_BOUND_SHIFT |
                          static_cast<uint64_t>(hash_age & AGE_MASK) << DATA_AGE_SHIFT;
    e.data.store(data, std::memory_order_relaxed);
    e.check.store(data ^ t.key, std::memory_order_relaxed);
}

int hash_full() {
    constexpr uint64_t SAMPLE = 1000;
    const uint64_t n          = std::min(SAMPLE, hash_mask + 1);
    uint64_t used             = 0;
    for (uint64_t i = 0; i < n; ++i) {
        const uint64_t data = hash_table[i].data.load(std::memory_order_relaxed);
        used += data != 0 && static_cast<uint32_t>(data >> DATA_AGE_SHIFT) == (hash_age & AGE_MASK);
    }
    return static_cast<int>(used * 1000 / n);
}

void hash_stats(int cores) {
    if (nodes_searched.load(std::memory_order_relaxed) == 0)
        nodes_searched.store(1, std::memory_order_relaxed);
    const uint64_t nodes   = nodes_searched.load(std::memory_order_relaxed);
    const uint64_t entries = hash_size / sizeof(HashEntry);
    uint64_t count = 0, lowest = hash_size, highest = 0;
    for (uint64_t i = 0; i < entries; ++i) {
        if (hash_table[i].check.load(std::memory_order_relaxed) == 0) continue;
        ++count;
        // Table use is reported in 64-bit words; an entry's check word is its first.
        if (2 * i < lowest) lowest = 2 * i;
        if (2 * i > highest) highest = 2 * i;
    }
    std::printf("\n**** Hashing Statistics ****\n");
    std::printf("Cores             %d\n", cores);
    std::printf("Table size        %" PRId64 "\n", static_cast<int64_t>(hash_size));
    std::printf("Mask              0x%" PRIx64 "\n", hash_mask);
    std::printf("Count entries     %" PRId64 "\n", static_cast<int64_t>(count));
    std::printf("Nodes searched    %" PRId64 "\n", static_cast<int64_t>(nodes));
    std::printf("Percentage use    %f%%\n",
                16.0 * (100.0 * static_cast<double>(count)) / static_cast<double>(hash_size));
    std::printf("Node efficiency   %f%%  [hash entries/nodes_searched]\n",
                (100.0 * static_cast<double>(count)) / static_cast<double>(nodes));
    std::printf("Minimum table use 0x%" PRIx64 "\n", lowest);
    std::printf("Maximum table use 0x%" PRIx64 "\n\n", highest);
}
