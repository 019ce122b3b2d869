#pragma once
// Pawn structure: scores of pawns and kings, cached in a table shared by all search threads
// without locks. A torn or foreign entry fails the check word and is recomputed; never blocks.

#include <atomic>
#include <cstdint>

#include "board/types.h"

struct PawnEntry {
    std::atomic<uint64_t> check; // pawnkey ^ score ^ stops
    std::atomic<uint64_t> score; // bits 0..15 mg, 16..31 eg (signed 16-bit each)
    std::atomic<uint64_t> stops; // squares in front of every passed pawn
};

constexpr uint64_t PAWN_HASH_ENTRIES = 1ULL << 20;
extern PawnEntry* pawn_hash;

// Returns false when the 24 MiB cannot be obtained.
bool pawn_hash_alloc();
void pawn_hash_free();

struct PawnScore {
    uint64_t score; // mg in bits 0..15, eg in 16..31
    uint64_t stops;
};
inline int pawn_mg(uint64_t score) { return static_cast<int16_t>(score & 0xFFFF); }
inline int pawn_eg(uint64_t score) { return static_cast<int16_t>((score >> 16) & 0xFFFF); }

PawnScore eval_pawns(const Position& p);
// The structure terms computed from scratch, without the cache.
PawnScore compute_pawns(const Position& p);
