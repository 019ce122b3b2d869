#pragma once
// Coordinate move text: e2e4, e1g1 for castling, e7e8q for a promotion; "(none)" for no move.

#include "board/types.h"

// Room for the longest text, "(none)", and its terminating zero.
constexpr int MOVE_TEXT_SIZE = 8;

// Writes the text and a terminating zero at out (at most MOVE_TEXT_SIZE bytes) and returns the
// position of the zero, where a line may go on. Safe from any thread: the buffer is the caller's.
char* write_move(char* out, Move m);
// Returns the text in one process-wide buffer, valid until the next call (not thread-safe:
// only thread 0 and the driver print moves).
const char* move_text(Move m);
// Reads the first four or five characters; no validation against any position.
Move text_to_move(const char* s);
