#pragma once
// Polyglot opening book: binary search on the file at every probe, nothing cached. The file and
// the book settings live in EngineState; only the main thread probes, between searches.

#include <cstdint>

#include "board/types.h"
#include "search/thread.h"

// The book's 15-bit generator: starts at 1 and is never reseeded, so every run draws the same
// sequence. Each draw: state = state * 214013 + 2531011 (mod 2^32), value (state >> 16) & 0x7FFF.
extern uint32_t book_rand_state;

bool book_open();
void book_close();
// Yields an engine move, or 0.
Move book_probe(SearchThread& game);
// The "bk" listing text of the game position (empty when no book is open).
void book_listing(SearchThread& game, char* out, int size);
