#pragma once
// The XBoard/console command interpreter: folds and splits the shared input line and dispatches
// its first word through one table, in a fixed order. Returns a CMD_* result code.

#include "search/thread.h"

constexpr int MAX_TOKENS = 511;
extern char* tokens[MAX_TOKENS + 1];
extern int token_count;

// Splits a copy of text at any of the delimiter characters (empty tokens skipped) into tokens,
// followed by a null end mark; returns token_count. The copy stays valid until the next call.
int split_line(const char* text, const char* delimiters);
int parse_command(SearchThread& game);

// Takes back up to n plies of the game (stops at the game's first move).
void take_back(SearchThread& game, int n);
