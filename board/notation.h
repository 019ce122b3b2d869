#pragma once
// Coordinate move text: e2e4, e1g1 for castling, e7e8q for a promotion; "(none)" for no move.

#include "board/types.h"

// Returns the text in one process-wide buffer, valid until the next call (not thread-safe:
// only thread 0 and the driver print moves).
const char* move_text(Move m);
// Reads the first four or five characters; no validation against any position.
Move text_to_move(const char* s);
