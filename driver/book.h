#pragma once
// The book as the driver uses it: the file named in the settings, opened and closed with its
// messages, and the book move of the game position, checked against its legal moves and the
// book depth.

#include "search/thread.h"

// Opens book_settings.name into book_settings.file; false when it cannot be opened.
bool book_open();
void book_close();
// Yields an engine move, or 0.
Move book_probe(SearchThread& game);
// The "bk" listing text of the game position (empty when no book is open).
void book_listing(SearchThread& game, char* out, int size);
// The "bk" answer: the listing, tab-indented, and an empty line.
void print_book_listing(SearchThread& game);
