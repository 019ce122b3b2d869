#include "board/material.h"

// Square values by type as White sees the board: row 0 is rank 8, so a white piece reads index
// square ^ 56 and a black piece reads the square itself (the tables flip top to bottom only).
// clang-format off
constexpr int32_t pst_mg_base[6][64] = {
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
constexpr int32_t pst_eg_base[6][64] = {
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

// A white piece reads its base value at the square mirrored top to bottom, a black piece at the
// square itself; the codes that name no piece stay zero.
static constexpr PstTable make_pst(const int32_t (&base)[6][64], const int (&adjust)[6]) {
    PstTable t{};
    for (int type = PAWN; type <= KING; ++type)
        for (int a = 0; a < 64; ++a) {
            const int32_t v                       = base[type][a] + piece_value[type] + adjust[type];
            t.at[piece_code(WHITE, type)][a ^ 56] = v;
            t.at[piece_code(BLACK, type)][a]      = v;
        }
    return t;
}

static constexpr int no_adjust[6] = {0, 0, 0, 0, 0, 0};
constexpr PstTable pst_mg_table   = make_pst(pst_mg_base, mg_adjust);
constexpr PstTable pst_eg_table   = make_pst(pst_eg_base, no_adjust);

void material_init(Position& p) {
    int mg[2] = {0, 0}, eg[2] = {0, 0};
    for (int s = 0; s < 64; ++s) {
        const int code = p.board[s];
        if (code == EMPTY) continue;
        mg[piece_colour(code)] += pst_mg[code][s];
        eg[piece_colour(code)] += pst_eg[code][s];
    }
    p.mg = static_cast<int16_t>(mg[WHITE] - mg[BLACK]);
    p.eg = static_cast<int16_t>(eg[WHITE] - eg[BLACK]);
}
