#pragma once
// The XBoard/console command interpreter: folds and splits the shared input line and dispatches
// its first word through one table, in a fixed order. Returns a CMD_* result code.

#include "search/thread.h"

constexpr int MAX_TOKENS = 511;
extern char* tokens[MAX_TOKENS + 1];
extern int token_count;

int split_line(const char* text, const char* delimiters);
int parse_command(SearchThread& game);
