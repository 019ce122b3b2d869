#pragma once
// The transposition table, shared by every search thread without locks: each entry is two relaxed
// atomic words, check = key ^ data. A torn or foreign entry fails the check and counts as a miss;
// nothing here ever blocks. Allocation and clearing happen only while no search runs.

#include <atomic>
#include <cstdint>

#include "search/thread.h"

struct HashEntry {
    std::atomic<uint64_t> check;
    std::atomic<uint64_t> data;
};
static_assert(sizeof(HashEntry) == 16);

constexpr int BOUND_NONE = 0, BOUND_LOWER = 1, BOUND_UPPER = 2, BOUND_EXACT = 3;
constexpr int MATE_STORE_HIGH = 32630, MATE_STORE_LOW = -32646;

extern HashEntry* hash_table;
extern uint64_t hash_size; // bytes
extern uint64_t hash_mask; // entries - 1
extern uint32_t hash_age;

// Sizes the table (mb rounded down to even; 1 is raised to 2), clears it and prints "hash=%dMB".
// Exits with status 1 after " hash allocation error - exiting ..." when the memory is not there.
void hash_alloc(int mb);
void hash_clear();
void hash_free();

struct HashHit {
    Move move;
    int score; // converted to the reading ply
    int eval;
    int depth;
    int bound;
};

// Starts loading a key's entry into the cache, so that a probe soon after finds it there.
inline void hash_prefetch(uint64_t key) {
    __builtin_prefetch(&hash_table[key & hash_mask]);
}

// A hit needs a verifying entry with nonzero data.
bool hash_probe(uint64_t key, int ply, HashHit& hit);
void hash_store(const SearchThread& t, Move move, int score, int eval, int depth, int ply, int bound);
// Mate-score conversions between the node's ply and the entry's own position.
int score_to_hash(int score, int ply);
int score_from_hash(int score, int ply);

// Permille of the table written by the current search, from a sample of its first entries.
int hash_full();
// "dhash": hashing statistics lines.
void hash_stats(int cores);
