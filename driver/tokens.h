#pragma once
// The one tokenizer of the interpreter and the console words: the line is split once, and every
// handler reads its arguments from the same tokens.

constexpr int MAX_TOKENS = 511;
extern char* tokens[MAX_TOKENS + 1];
extern int token_count;

// Splits a copy of text at any of the delimiter characters (empty tokens skipped) into tokens,
// followed by a null end mark; returns token_count. The copy stays valid until the next call.
int split_line(const char* text, const char* delimiters);
// Whether the command word has an argument, and the first one read as a number (atoi's rule).
bool has_argument();
int int_argument();
// A number setting: the field takes the first argument, or the usage line is printed when there
// is none.
void set_from_argument(int& field, const char* usage);
