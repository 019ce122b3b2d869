#pragma once
// The UCI front end: a self-contained loop that runs until "quit".

#include "search/thread.h"

// True when the text at the cursor begins with the word; the cursor then moves past the word and
// the one separator character after it.
bool match_prefix(const char** cursor, const char* word);
// The words after "go": clears the search control, then sets the clock inputs from the
// side to move's time and increment, movestogo, depth, movetime, nodes, mate, infinite, ponder and
// the legal moves after searchmoves; anything else is skipped.
void parse_go(SearchThread& game, const char* text);
// One line of the dialect, its line end included: the first command word it begins with is carried
// out. False for "quit", which ends the loop.
bool uci_command(SearchThread& game, const char* line);
void uci_loop(SearchThread& game);
