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
// The castling move of the side to move that a text names in one of the other forms GUIs use:
// O-O / O-O-O (or with zeros), the king taking its own rook where the position writes castling
// as e1g1, and the king's move to g/c where it writes the king taking its rook. 0 when the text
// names no castling right of the position; the caller still tests the move for legality, and
// takes the text at its word first when it is a legal move as it stands.
Move text_to_castle(const Position& p, const char* s);
