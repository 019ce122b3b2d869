#pragma once
// Attack tables: leaper tables, empty-board rays, between-squares, castling masks and the magic
// lookups for sliders (one dense block per square). All but the magic lookups are computed at
// compile time; tables_init fills those once at start-up before any other thread exists, and
// everything here is read-only afterwards.

#include <array>
#include <cstddef>
#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

struct MagicEntry {
    const uint64_t* block; // this square's block in the attack array
    uint64_t mask;         // relevant occupancy
    uint64_t magic;        // multiplier
    uint32_t shift;        // 64 - popcount(mask)
};

struct Step {
    int df, dr;
};
constexpr std::array<Step, 8> knight_steps = {
    {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};
constexpr std::array<Step, 8> king_steps = {
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};
constexpr std::array<Step, 4> bishop_steps = {{{1, 1}, {-1, 1}, {-1, -1}, {1, -1}}};
constexpr std::array<Step, 4> rook_steps   = {{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};
// A pawn attacks one rank forward; off the board forward means no attacks at all.
constexpr std::array<Step, 2> white_pawn_steps = {{{-1, 1}, {1, 1}}};
constexpr std::array<Step, 2> black_pawn_steps = {{{-1, -1}, {1, -1}}};

// One step in each direction: the leapers' tables.
template <std::size_t N> constexpr std::array<uint64_t, 64> make_leaper(const std::array<Step, N>& steps) {
    std::array<uint64_t, 64> t{};
    for (int s = 0; s < 64; ++s)
        for (const Step& d : steps) {
            const int f = file_of(s) + d.df, r = rank_of(s) + d.dr;
            if (on_board(f, r)) t[s] |= bit(f + 8 * r);
        }
    return t;
}

// Every step in each direction up to the edge: the sliders' empty-board rays.
template <std::size_t N> constexpr std::array<uint64_t, 64> make_rays(const std::array<Step, N>& steps) {
    std::array<uint64_t, 64> t{};
    for (int s = 0; s < 64; ++s)
        for (const Step& d : steps)
            for (int f = file_of(s) + d.df, r = rank_of(s) + d.dr; on_board(f, r); f += d.df, r += d.dr)
                t[s] |= bit(f + 8 * r);
    return t;
}

// pawn_attacks[c][s] also answers "which pawns of colour c ^ 1 attack s" when read backwards.
inline constexpr std::array<uint64_t, 64> knight_attacks              = make_leaper(knight_steps);
inline constexpr std::array<uint64_t, 64> king_attacks                = make_leaper(king_steps);
inline constexpr std::array<std::array<uint64_t, 64>, 2> pawn_attacks = {make_leaper(white_pawn_steps),
                                                                         make_leaper(black_pawn_steps)};
inline constexpr std::array<uint64_t, 64> bishop_empty                = make_rays(bishop_steps);
inline constexpr std::array<uint64_t, 64> rook_empty                  = make_rays(rook_steps);
// cflag mask applied when the king of a colour moves: it clears both of that colour's rights.
inline constexpr uint32_t king_castle_mask[2] = {~uint32_t{CASTLE_WHITE}, ~uint32_t{CASTLE_BLACK}};

// Computed at compile time in attacks.cpp. pseudo_attacks by piece code: the empty-board attacks.
extern const Table<uint64_t[16][64]> pseudo_attacks_table;
extern const Table<uint64_t[64][64]> between_table;
// cflag mask applied when a piece moves from or to a square.
extern const Table<uint32_t[64]> castle_mask_table;
inline constexpr auto& pseudo_attacks = pseudo_attacks_table.at;
inline constexpr auto& between        = between_table.at;
inline constexpr auto& castle_mask    = castle_mask_table.at;

// Filled by tables_init.
extern MagicEntry rook_magic[64];
extern MagicEntry bishop_magic[64];

// Block sizes of all squares together: 2^popcount(mask) entries per square.
constexpr int ROOK_TABLE_SIZE   = 102400;
constexpr int BISHOP_TABLE_SIZE = 5248;

// The stored multipliers (one table per slider kind, indexed by square).
extern const uint64_t rook_multipliers[64];
extern const uint64_t bishop_multipliers[64];

// The engine's one table too large to compute at compile time, the magic lookups. Start-up, the
// benchmarks, the fuzz targets and the tests all begin here, so they agree about what is ready.
void tables_init();

// Start-up helpers, also used by the multiplier search tool and the tests; never on a hot path.
uint64_t rook_mask(int sq);
uint64_t bishop_mask(int sq);
// The slider's attack set found by walking each ray until the first occupied square.
uint64_t walk_rook_attacks(int sq, uint64_t occ);
uint64_t walk_bishop_attacks(int sq, uint64_t occ);
// The occupancy whose j-th lowest mask square is set exactly when bit j of index is set.
uint64_t mask_subset(uint64_t index, uint64_t mask);

inline uint64_t rook_attacks(int sq, uint64_t occ) {
    const MagicEntry& m = rook_magic[sq];
    return m.block[((occ & m.mask) * m.magic) >> m.shift];
}
inline uint64_t bishop_attacks(int sq, uint64_t occ) {
    const MagicEntry& m = bishop_magic[sq];
    return m.block[((occ & m.mask) * m.magic) >> m.shift];
}
inline uint64_t queen_attacks(int sq, uint64_t occ) {
    return rook_attacks(sq, occ) | bishop_attacks(sq, occ);
}

// Every piece of either colour that attacks sq when exactly the squares of occ are occupied (kings
// by adjacency). Pieces standing outside occ are not masked off here.
inline uint64_t attackers_to(const Position& p, int sq, uint64_t occ) {
    const uint64_t diagonal = p.type_bb[BISHOP] | p.type_bb[QUEEN];
    const uint64_t straight = p.type_bb[ROOK] | p.type_bb[QUEEN];
    return (pawn_attacks[BLACK][sq] & pieces(p, WHITE, PAWN)) |
           (pawn_attacks[WHITE][sq] & pieces(p, BLACK, PAWN)) | (knight_attacks[sq] & p.type_bb[KNIGHT]) |
           (king_attacks[sq] & (bit(p.wking) | bit(p.bking))) | (bishop_attacks(sq, occ) & diagonal) |
           (rook_attacks(sq, occ) & straight);
}

// Whether one of the pieces `by`, all of colour c, attacks sq under the occupancy occ; c's king
// counts by adjacency wherever it stands. The legality tests ask it with pieces taken out of `by`
// and occ. A slider lookup is skipped when no such slider stands on the square's empty-board rays.
[[gnu::always_inline]] inline bool attacked_by(const Position& p, int sq, int c, uint64_t by, uint64_t occ) {
    const uint64_t diagonal = by & (p.type_bb[BISHOP] | p.type_bb[QUEEN]);
    const uint64_t straight = by & (p.type_bb[ROOK] | p.type_bb[QUEEN]);
    return (pawn_attacks[c ^ 1][sq] & by & p.type_bb[PAWN]) ||
           (knight_attacks[sq] & by & p.type_bb[KNIGHT]) || (king_attacks[sq] & bit(king_square(p, c))) ||
           ((bishop_empty[sq] & diagonal) && (bishop_attacks(sq, occ) & diagonal)) ||
           ((rook_empty[sq] & straight) && (rook_attacks(sq, occ) & straight));
}
