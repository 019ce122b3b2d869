#pragma once
// The game driver: legal moves of the game position, received moves, the engine's move, pondering
// and the analysis rules.

#include "search/thread.h"

void generate_legal_moves(SearchThread& game, bool clear_stop);
