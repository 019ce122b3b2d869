#pragma once
// Board geometry as bitboards: the masks of ranks and files, and the shifts that move a whole set
// of pawns at once (pushes, attacked squares). All of it is computed at compile time; the
// generators, the legality tests and the evaluation read the same definitions.

#include <cstdint>

#include "board/types.h"

constexpr bool on_board(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

// King steps from a to b.
constexpr int square_distance(int a, int b) {
    const int df = file_of(a) - file_of(b), dr = rank_of(a) - rank_of(b);
    const int f = df < 0 ? -df : df, r = dr < 0 ? -dr : dr;
    return f > r ? f : r;
}

constexpr uint64_t rank_mask(int rank) {
    return 0xFFULL << (8 * rank);
}
// By file. The evaluation reads them in its loops, where a table read is cheaper than the shift.
inline constexpr uint64_t file_masks[8] = {
    0x0101010101010101ULL, 0x0202020202020202ULL, 0x0404040404040404ULL, 0x0808080808080808ULL,
    0x1010101010101010ULL, 0x2020202020202020ULL, 0x4040404040404040ULL, 0x8080808080808080ULL};
constexpr uint64_t file_mask(int file) {
    return file_masks[file];
}
constexpr uint64_t RANK_1 = rank_mask(0), RANK_8 = rank_mask(7);
constexpr uint64_t FILE_A = file_mask(0), FILE_H = file_mask(7);

// Rank r as colour c counts it: 0 is its home rank, 7 the rank its pawns promote on.
constexpr uint64_t relative_rank_mask(int c, int r) {
    return rank_mask(c == WHITE ? r : 7 - r);
}

// The set moved one rank forward, as the pawns of colour C move.
template <int C> constexpr uint64_t pawn_push(uint64_t b) {
    return C == WHITE ? b << 8 : b >> 8;
}

// Destinations of double pushes, from those of the single pushes onto empty squares: the ones on
// the third rank step once more.
template <int C> constexpr uint64_t double_pushes(uint64_t single, uint64_t empty) {
    return pawn_push<C>(single & relative_rank_mask(C, 2)) & empty;
}

// The squares the pawns of colour C attack towards file a and towards file h, and both; the edge
// files are masked so that nothing wraps.
template <int C> constexpr uint64_t pawn_attacks_west(uint64_t pawns) {
    return C == WHITE ? (pawns & ~FILE_A) << 7 : (pawns & ~FILE_A) >> 9;
}
template <int C> constexpr uint64_t pawn_attacks_east(uint64_t pawns) {
    return C == WHITE ? (pawns & ~FILE_H) << 9 : (pawns & ~FILE_H) >> 7;
}
template <int C> constexpr uint64_t pawn_attack_set(uint64_t pawns) {
    return pawn_attacks_west<C>(pawns) | pawn_attacks_east<C>(pawns);
}
constexpr uint64_t pawn_attack_set(int c, uint64_t pawns) {
    return c == WHITE ? pawn_attack_set<WHITE>(pawns) : pawn_attack_set<BLACK>(pawns);
}
