#pragma once
// The board diagram and the six bench positions that "bench" loads into the game.

#include <cstdint>

extern const char* const bench_positions[6];
// Rank 8 at the top; white pieces as " P ", black ones as "<P>", empty squares as " * ".
void show_board(const uint8_t board[64]);
