#pragma once
// The UCI front end: a self-contained loop that runs until "quit".

#include "search/thread.h"

bool match_prefix(const char** cursor, const char* word);
void uci_loop(SearchThread& game);
