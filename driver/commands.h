#pragma once
// The XBoard/console command interpreter: folds and splits the shared input line and dispatches
// its first word through one table, in a fixed order. Returns a CMD_* result code.

#include "search/thread.h"

int parse_command(SearchThread& game);
// A line with more than six slashes is a position, whatever its first word.
bool is_fen_line(const char* line);

// Takes back up to n plies of the game (stops at the game's first move).
void take_back(SearchThread& game, int n);
