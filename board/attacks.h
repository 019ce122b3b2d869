#pragma once
// Attack tables: leaper tables, empty-board rays, between-squares, castling masks and the magic
// lookups for sliders (one dense block per square). attack_init fills the non-constant tables once
// at start-up before any other thread exists; everything here is read-only afterwards.

#include <cstdint>

#include "board/types.h"

struct MagicEntry {
    const uint64_t* block; // this square's block in the attack array
    uint64_t mask;         // relevant occupancy
    uint64_t magic;        // multiplier
    uint32_t shift;        // 64 - popcount(mask)
};

extern const uint64_t knight_attacks[64];
extern const uint64_t king_attacks[64];
extern const uint64_t pawn_attacks[2][64];
extern const uint64_t bishop_empty[64];
extern const uint64_t rook_empty[64];
extern const uint32_t king_castle_mask[2];

// Filled by attack_init.
extern uint64_t pseudo_attacks[16][64];
extern uint64_t between[64][64];
extern uint32_t castle_mask[64];
extern MagicEntry rook_magic[64];
extern MagicEntry bishop_magic[64];

// The stored multipliers (one table per slider kind, indexed by square).
extern const uint64_t rook_multipliers[64];
extern const uint64_t bishop_multipliers[64];

void attack_init();

inline uint64_t rook_attacks(int sq, uint64_t occ) {
    const MagicEntry& m = rook_magic[sq];
    return m.block[((occ & m.mask) * m.magic) >> m.shift];
}
inline uint64_t bishop_attacks(int sq, uint64_t occ) {
    const MagicEntry& m = bishop_magic[sq];
    return m.block[((occ & m.mask) * m.magic) >> m.shift];
}
inline uint64_t queen_attacks(int sq, uint64_t occ) { return rook_attacks(sq, occ) | bishop_attacks(sq, occ); }
