#pragma once
// Evaluation tables: king zones, distances, pawn masks, and the report's display of the square
// values (the material and square tables themselves are board/material.h). All but the display
// arrays are computed at compile time; pst_init fills those from a position.

#include <cstdint>

#include "board/bitboard.h"
#include "board/material.h"
#include "board/types.h"

constexpr int passed_bonus[8]      = {0, 0, 4, 10, 40, 70, 90, 0};
constexpr int connected_mg[8]      = {0, 10, 15, 25, 40, 65, 110, 0};
constexpr int connected_eg[8]      = {0, 5, 5, 10, 25, 60, 110, 0};
constexpr int king_safety_scale[8] = {0, 1, 7, 12, 16, 18, 20, 22};

// Computed at compile time.
using ColourSquareMasks = Table<uint64_t[2][64]>;
extern const Table<uint64_t[64]> king_zone_table;
// King distance, capped at 5.
extern const Table<uint8_t[64][64]> distance_table;
// Squares ahead of a pawn of colour c on its own and the neighbouring files; ahead on its own file
// only; beside it and diagonally behind it.
extern const ColourSquareMasks passed_mask_table;
extern const ColourSquareMasks front_span_table;
extern const ColourSquareMasks pawn_neighbours_table;
extern const Table<uint64_t[8]> adjacent_files_table;
inline constexpr auto& king_zone       = king_zone_table.at;
inline constexpr auto& distance        = distance_table.at;
inline constexpr auto& passed_mask     = passed_mask_table.at;
inline constexpr auto& front_span      = front_span_table.at;
inline constexpr auto& pawn_neighbours = pawn_neighbours_table.at;
inline constexpr auto& adjacent_files  = adjacent_files_table.at;

// Display arrays of the evaluation report, filled by pst_init (per piece code).
extern int32_t pst_display_mg[16];
extern int32_t pst_display_eg[16];

// Recomputes mg and eg from scratch and fills the evaluation report's display arrays.
void pst_init(Position& p);
