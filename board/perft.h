#pragma once
// Perft: counts move paths and classifies last-ply moves, on the game record's current slot.

#include <cstdint>

#include "board/stack.h"

struct PerftTotals {
    int64_t moves, captures, en_passant, castles, promotes, checkmates, checks;
};
extern PerftTotals perft_totals;

void perft(PositionStack& t, int depth);
