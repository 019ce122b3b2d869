#pragma once
// Static evaluation in centipawns from the side to move's view, tempo included. Re-entrant,
// allocation-free; shares only the pawn cache.

#include "board/types.h"

int evaluate(const Position& p);
