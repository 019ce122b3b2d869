#pragma once
// Material and square values: what make-move adds up incrementally into a position's middle-game
// and end-game sums (mg, eg), White minus Black. The tables by piece code are computed at compile
// time from the piece values and the base square tables.

#include <cstdint>

#include "board/types.h"

constexpr int piece_value[6] = {100, 310, 330, 500, 1000, 20000};
constexpr int mg_adjust[6]   = {-20, 0, 0, 0, 0, 0};
// Added to the middle-game sum of the side that castles.
constexpr int CASTLE_BONUS = 20;

// Base square values by type, index = file + 8 * row with row 0 the rank-8 line.
extern const int32_t pst_mg_base[6][64];
extern const int32_t pst_eg_base[6][64];

// Piece value plus square value, by piece code and square; computed at compile time.
using PstTable = Table<int32_t[16][64]>;
extern const PstTable pst_mg_table;
extern const PstTable pst_eg_table;
inline constexpr auto& pst_mg = pst_mg_table.at;
inline constexpr auto& pst_eg = pst_eg_table.at;

// Recomputes the position's mg and eg from scratch.
void material_init(Position& p);
