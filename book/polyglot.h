#pragma once
// Polyglot opening book: binary search on the file at every probe, nothing cached. It knows the
// file and the position only; which book is open, whether to use it and for how long is the
// driver's (driver/book.h).

#include <cstdint>
#include <cstdio>

#include "board/types.h"

// The book's 15-bit generator: starts at 1 and is never reseeded, so every run draws the same
// sequence. Each draw: state = state * 214013 + 2531011 (mod 2^32), value (state >> 16) & 0x7FFF.
extern uint32_t book_rand_state;

// A listing shows at most this many entries: "{ e2e4 66% d2d4 33% }".
constexpr int BOOK_LISTED       = 16;
constexpr int BOOK_LISTING_SIZE = BOOK_LISTED * 16 + 8;

// Opens a book for reading; nullptr when it cannot be opened or is a folder.
FILE* book_file_open(const char* name);
// The book's move for the position, or 0 when it holds none. Every entry of the position draws one
// number from the generator; the best rule takes the heaviest entry (ties to the later one), the
// random rule each entry in proportion to its weight. The entries' listing goes to `listing`
// unless it is null.
Move book_choose(FILE* f, const Position& p, bool use_best, char* listing, int size);
// The listing of the position's entries, empty when the book holds none; draws no number.
void book_listing(FILE* f, const Position& p, char* out, int size);
