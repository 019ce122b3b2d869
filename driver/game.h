#pragma once
// The game driver: the legal moves of the game position, received moves, the engine's own move
// (book, single reply or search) with the steps after it, pondering, and analysis. It runs on the
// main thread between reads of the command loop and changes the game only while no search runs.

#include "board/types.h"
#include "search/thread.h"

// What the command loop does after the driver has handled a line.
enum class LoopStep {
    regenerate, // rebuild the legal moves, then read the next line
    read,       // read the next line as things stand
    redispatch, // hand the shared line to the interpreter again without reading (it ended an analysis)
    quit,       // the program ends (a line beginning with q, the end of UCI, a history overflow)
};

// A line the interpreter did not know: played when it matches a legal move, else rejected.
LoopStep received_move(SearchThread& game, const char* line);
// The engine handles a move request: book, single reply or search, then the steps after the move.
LoopStep engine_thinks(SearchThread& game);
// Runs a ponder search on the opponent's time when the state allows one; true when it ran.
bool ponder_check(SearchThread& game, int last_result);
