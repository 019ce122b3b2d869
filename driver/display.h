#pragma once
// The board diagram and the six bench positions.

#include "board/types.h"
#include "search/thread.h"

extern const char* const bench_positions[6];
void show_board(const uint8_t board[64]);
void bench(SearchThread& game);
