#pragma once
// Pawn structure: scores of pawns and kings, cached in a table shared by all search threads
// without locks. A torn or foreign entry fails the check word and is recomputed; never blocks.
// The three words are plain storage read and written only through relaxed atomic_ref; the table
// starts zeroed, and stale contents fail the check.

#include <atomic>
#include <cstdint>
#include <type_traits>

#include "board/types.h"

struct PawnEntry {
    uint64_t check; // pawnkey ^ score ^ stops
    uint64_t score; // bits 0..15 mg, 16..31 eg (signed 16-bit each)
    uint64_t stops; // squares in front of every passed pawn
};
static_assert(sizeof(PawnEntry) == 24);
static_assert(std::is_trivially_copyable_v<PawnEntry>);

constexpr uint64_t PAWN_HASH_ENTRIES = 1ULL << 20;
constexpr uint64_t PAWN_HASH_MASK    = PAWN_HASH_ENTRIES - 1;
extern PawnEntry* pawn_hash;

// Releases any previous table first. Returns false when the 24 MiB cannot be obtained.
bool pawn_hash_alloc();
void pawn_hash_free();

struct PawnScore {
    uint64_t score; // mg in bits 0..15, eg in 16..31
    uint64_t stops;
};
inline int pawn_mg(uint64_t score) {
    return static_cast<int16_t>(score & 0xFFFF);
}
inline int pawn_eg(uint64_t score) {
    return static_cast<int16_t>((score >> 16) & 0xFFFF);
}
inline uint64_t pack_pawn_score(int mg, int eg) {
    return static_cast<uint64_t>(static_cast<uint16_t>(mg)) | static_cast<uint64_t>(static_cast<uint16_t>(eg))
                                                                  << 16;
}

// Starts loading a pawn key's entry (both cache lines it may span), for an evaluation soon after.
inline void pawn_prefetch(uint64_t pawnkey) {
    const char* e = reinterpret_cast<const char*>(&pawn_hash[pawnkey & PAWN_HASH_MASK]);
    __builtin_prefetch(e);
    __builtin_prefetch(e + sizeof(PawnEntry) - 1);
}

// Cached: probes the entry at pawnkey's low 20 bits, computes and overwrites it on a miss.
PawnScore eval_pawns(const Position& p);
// The structure terms computed from scratch, without the cache.
PawnScore compute_pawns(const Position& p);

// Relaxed atomic access to one word of an entry.
inline uint64_t pawn_word_load(const uint64_t& w) {
    return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(w)).load(std::memory_order_relaxed);
}
inline void pawn_word_store(uint64_t& w, uint64_t v) {
    std::atomic_ref<uint64_t>(w).store(v, std::memory_order_relaxed);
}
