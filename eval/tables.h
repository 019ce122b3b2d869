#pragma once
// Evaluation tables: king zones, distances, pawn masks, and the report's display of the square
// values (the material and square tables themselves are board/material.h). Filled once at
// start-up, read-only after.

#include <cstdint>

#include "board/bitboard.h"
#include "board/material.h"
#include "board/types.h"

constexpr int passed_bonus[8]      = {0, 0, 4, 10, 40, 70, 90, 0};
constexpr int connected_mg[8]      = {0, 10, 15, 25, 40, 65, 110, 0};
constexpr int connected_eg[8]      = {0, 5, 5, 10, 25, 60, 110, 0};
constexpr int king_safety_scale[8] = {0, 1, 7, 12, 16, 18, 20, 22};

extern uint64_t king_zone[64];
extern uint8_t distance[64][64];
extern uint64_t passed_mask[2][64];
extern uint64_t front_span[2][64];
extern uint64_t pawn_neighbours[2][64];
extern uint64_t adjacent_files[8];

// Display arrays of the evaluation report, filled by pst_init (per piece code).
extern int32_t pst_display_mg[16];
extern int32_t pst_display_eg[16];

void pawn_masks_init(); // passed_mask, front_span, pawn_neighbours, distance, king_zone
void adjacent_files_init();
// Recomputes mg and eg from scratch and fills the evaluation report's display arrays.
void pst_init(Position& p);
