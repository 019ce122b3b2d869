#pragma once
// Polyglot opening book: binary search on the file at every probe, nothing cached.

#include "board/types.h"
#include "search/thread.h"

bool book_open();
void book_close();
// Yields an engine move, or 0.
Move book_probe(SearchThread& game);
// The "bk" listing text of the game position (empty when no book is open).
void book_listing(SearchThread& game, char* out, int size);
