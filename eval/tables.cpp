#include "eval/tables.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "board/attacks.h"

// Square values by type as White sees the board: row 0 is rank 8, so a white piece reads index
// square ^ 56 and a black piece reads the square itself (the tables flip top to bottom only).
// clang-format off
const int32_t pst_mg_base[6][64] = {
    // pawn
    {
          0,   0,   0,   0,   0,   0,   0,   0, // rank 8
          0,   0,   0,   0,   0,   0,   0,   0, // rank 7
          0,   0,   0,   0,   0,   0,   0,   0, // rank 6
          0,   0,   5,  10,  10,   0,  -5,  -5, // rank 5
          0,   0,  10,  10,  10,   0,  -5,  -5, // rank 4
          0,   0,  -5,  -5,  -5,  -5,   0,   0, // rank 3
          0,  -5,  -5, -10, -10,   5,  15,   5, // rank 2
          0,   0,   0,   0,   0,   0,   0,   0, // rank 1
    },
    // knight
    {
        -30, -20, -10, -10, -10, -10, -20, -30, // rank 8
        -20,   5,  20,  15,  15,  15,   5,  10, // rank 7
        -15,  10,  15,  25,  25,  25,  15,  10, // rank 6
        -10,  -5,  10,  15,  15,  15,  10,  10, // rank 5
        -10,   0,   0,   5,  10,  10,  15,   5, // rank 4
        -20, -10,   0,   5,  10,   0,   0, -20, // rank 3
        -30, -20, -15,  -5,  -5, -15, -15,  -5, // rank 2
        -45, -20, -30, -30, -30, -15, -30, -45, // rank 1
    },
    // bishop
    {
        -10,  -4,  -2,  -4,  -4,  -2,  -3, -10, // rank 8
         -5,   0,   2,   2,   2,   2,   4,   4, // rank 7
         -5,   2,   4,   5,   5,   5,   5,   4, // rank 6
         -5,   3,   5,   5,   6,   5,   3,   1, // rank 5
         -5,   1,   6,   6,   4,   6,   3,   2, // rank 4
         -5,   2,   3,   3,   2,   0,   1,   0, // rank 3
         -5,   0,   2,  -2,   0,   0,   1,   1, // rank 2
        -15, -10,  -2,  -6,  -6,  -2, -10, -15, // rank 1
    },
    // rook
    {
          0,   5,  10,  10,  10,  10,  10,  10, // rank 8
         -5,   5,   5,  15,  15,  15,  15,  15, // rank 7
         -5,   5,   5,  10,  10,  10,  10,   0, // rank 6
         -5,   0,   0,   5,   5,   0,   0,   0, // rank 5
        -10,   0,   5,  -5,  -5,  -5,   0,   0, // rank 4
        -15,  -5,   0,  -5,  -5,  -5,   0,   0, // rank 3
        -10,  -5,   0,  -5,  -5,   0,   0, -15, // rank 2
        -10,  -5,   0,   5,   0,   5,   0, -10, // rank 1
    },
    // queen
    {
         -5,   0,   0,   0,   0,   0,   0,   0, // rank 8
         -5,   0,   5,   5,   5,   5,   5,   0, // rank 7
         -5,   0,   5,   5,   5,   5,   5,   5, // rank 6
         -5,   0,   5,   5,   5,   5,   5,   0, // rank 5
        -10,   5,   5,   5,   5,   5,   5,   0, // rank 4
        -10,   0,   5,   0,   0,   5,   5,   0, // rank 3
        -10,  -5,   5,   5,   0,  -5,  -5,   0, // rank 2
        -15,  -5,  -5,   0,   0,  -5,  -5, -15, // rank 1
    },
    // king
    {
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 8
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 7
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 6
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 5
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 4
        -20, -20, -20, -20, -20, -20, -20, -20, // rank 3
          0,   0, -15, -15, -15, -15,   5,   0, // rank 2
          5,  10,   0, -15,  -5, -15,  20,   5, // rank 1
    },
};
const int32_t pst_eg_base[6][64] = {
    // pawn
    {
          0,   0,   0,   0,   0,   0,   0,   0, // rank 8
         25,  30,  25,  20,  20,  25,  30,  25, // rank 7
         15,  20,  15,   5,   5,  15,  20,  15, // rank 6
          0,   0,   0,  -5,  -5,   0,   0,   0, // rank 5
         -5,  -5,  -5, -10, -10,  -5,  -5,  -5, // rank 4
        -15, -15, -15, -15, -15, -15, -15, -15, // rank 3
        -15, -15, -15, -15, -15, -15, -15, -15, // rank 2
          0,   0,   0,   0,   0,   0,   0,   0, // rank 1
    },
    // knight
    {
        -15,   0,   5,  10,  10,   5,   0, -15, // rank 8
         -5,   5,  20,  20,  20,  20,   5,  -5, // rank 7
          0,  10,  20,  25,  25,  20,  10,   0, // rank 6
         -5,   5,  20,  30,  30,  20,   5,  -5, // rank 5
         -5,   5,  15,  20,  20,  15,   5,  -5, // rank 4
        -15,  -5,   0,  10,  10,   0,  -5, -15, // rank 3
        -20, -15, -10,  -5,  -5, -10, -15, -20, // rank 2
        -40, -30, -20, -10, -10, -20, -30, -40, // rank 1
    },
    // bishop
    {
          0,   1,   2,   2,   2,   2,   1,   0, // rank 8
          1,   2,   2,   3,   3,   2,   2,   1, // rank 7
          3,   4,   4,   5,   5,   4,   4,   3, // rank 6
          2,   3,   4,   5,   5,   4,   3,   2, // rank 5
          1,   3,   4,   5,   5,   4,   3,   1, // rank 4
          0,   2,   3,   3,   3,   3,   2,   0, // rank 3
         -2,  -1,   0,   1,   1,   0,  -1,  -2, // rank 2
         -5,  -4,  -3,  -2,  -2,  -3,  -4,  -5, // rank 1
    },
    // rook
    {
          5,   5,  10,  15,  15,  10,   5,   5, // rank 8
         10,  15,  15,  15,  15,  15,  15,  10, // rank 7
          5,  10,  10,  10,  10,  10,  10,   5, // rank 6
          5,  10,   5,   5,   5,   5,  10,   5, // rank 5
          5,  10,   5,   5,   5,   5,  10,   5, // rank 4
          0,   5,   0,   0,   0,   0,   5,   0, // rank 3
        -10,  -5,  -5,  -5,  -5,  -5,  -5, -10, // rank 2
        -15, -10, -10, -10, -10, -10, -10, -15, // rank 1
    },
    // queen
    {
          5,   5,  10,  15,  15,  10,   5,   5, // rank 8
         10,  15,  20,  25,  25,  20,  15,  10, // rank 7
         10,  15,  20,  25,  25,  20,  15,  10, // rank 6
         10,  15,  15,  20,  20,  15,  15,  10, // rank 5
          5,   5,  10,  10,  10,  10,   5,   5, // rank 4
         -5,   0,   0,   0,   0,   0,   0,  -5, // rank 3
        -15, -15, -10, -10, -10, -10, -15, -15, // rank 2
        -25, -20, -20, -20, -20, -20, -20, -25, // rank 1
    },
    // king
    {
          0,  20,  30,  30,  30,  30,  20,   0, // rank 8
          5,  30,  45,  40,  40,  45,  30,   5, // rank 7
         10,  30,  40,  40,  40,  40,  30,  10, // rank 6
         10,  20,  25,  30,  30,  25,  20,  10, // rank 5
          5,  10,  15,  20,  20,  15,  10,   5, // rank 4
         -5,   0,   5,  10,  10,   5,   0,  -5, // rank 3
        -15, -10, -10,   0,   0, -10, -10, -15, // rank 2
        -30, -20, -20, -15, -15, -20, -20, -30, // rank 1
    },
};
// clang-format on

int32_t pst_mg[16][64];
int32_t pst_eg[16][64];
uint64_t king_zone[64];
uint8_t distance[64][64];
uint64_t passed_mask[2][64];
uint64_t front_span[2][64];
uint64_t pawn_neighbours[2][64];
uint64_t adjacent_files[8];
int32_t pst_display_mg[16];
int32_t pst_display_eg[16];

constexpr int MAX_DISTANCE = 5;

void pst_tables_init() {
    std::memset(pst_mg, 0, sizeof pst_mg);
    std::memset(pst_eg, 0, sizeof pst_eg);
    for (int t = PAWN; t <= KING; ++t)
        for (int a = 0; a < 64; ++a) {
            const int32_t mgv                    = pst_mg_base[t][a] + piece_value[t] + mg_adjust[t];
            const int32_t egv                    = pst_eg_base[t][a] + piece_value[t];
            pst_mg[piece_code(WHITE, t)][a ^ 56] = mgv;
            pst_eg[piece_code(WHITE, t)][a ^ 56] = egv;
            pst_mg[piece_code(BLACK, t)][a]      = mgv;
            pst_eg[piece_code(BLACK, t)][a]      = egv;
        }
}

static bool on_board(int f, int r) {
    return f >= 0 && f < 8 && r >= 0 && r < 8;
}

// A king on the edge rank is also guarded from the rank inward, and a corner king counts the zone
// of its neighbour on the same rank.
static void king_zones_init() {
    for (int s = 0; s < 64; ++s) {
        king_zone[s] = bit(s) | king_attacks[s];
        if (rank_of(s) == 0 || rank_of(s) == 7) king_zone[s] |= king_attacks[s ^ 8];
    }
    king_zone[A1] = king_zone[B1];
    king_zone[H1] = king_zone[G1];
    king_zone[A8] = king_zone[B8];
    king_zone[H8] = king_zone[G8];
}

void pawn_masks_init() {
    for (int c = WHITE; c <= BLACK; ++c) {
        const int d = c == WHITE ? 1 : -1;
        for (int s = 0; s < 64; ++s) {
            const int f = file_of(s), r = rank_of(s);
            uint64_t passed = 0, span = 0, neighbours = 0;
            for (int ahead = r + d; ahead >= 0 && ahead < 8; ahead += d)
                for (int df = -1; df <= 1; ++df)
                    if (on_board(f + df, ahead)) {
                        passed |= bit(f + df + 8 * ahead);
                        if (df == 0) span |= bit(f + 8 * ahead);
                    }
            for (int df = -1; df <= 1; df += 2)
                for (int rr : {r, r - d})
                    if (on_board(f + df, rr)) neighbours |= bit(f + df + 8 * rr);
            passed_mask[c][s]     = passed;
            front_span[c][s]      = span;
            pawn_neighbours[c][s] = neighbours;
        }
    }
    for (int s = 0; s < 64; ++s)
        for (int t = 0; t < 64; ++t) {
            const int df = std::abs(file_of(s) - file_of(t)), dr = std::abs(rank_of(s) - rank_of(t));
            distance[s][t] = static_cast<uint8_t>(std::min(std::max(df, dr), MAX_DISTANCE));
        }
    king_zones_init();
}

void adjacent_files_init() {
    for (int f = 0; f < 8; ++f)
        adjacent_files[f] = (f > 0 ? file_mask[f - 1] : 0) | (f < 7 ? file_mask[f + 1] : 0);
}
