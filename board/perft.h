#pragma once
// Perft: counts move paths and classifies last-ply moves, on the game record's current slot.

#include <cstdint>

#include "search/thread.h"

struct PerftTotals {
    int64_t moves, captures, en_passant, castles, promotes, checkmates, checks;
};
extern PerftTotals perft_totals;

void perft(SearchThread& t, int depth);
// The console command: resets the totals, times the run and prints the four total lines.
void perft_command(SearchThread& game, int depth);
