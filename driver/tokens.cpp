#include "driver/tokens.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

char* tokens[MAX_TOKENS + 1];
int token_count;

// Big enough for the longest line any reader hands over (the UCI reader's included).
static char token_copy[32768];

int split_line(const char* text, const char* delimiters) {
    std::strncpy(token_copy, text, sizeof token_copy - 1);
    token_copy[sizeof token_copy - 1] = '\0';
    token_count                       = 0;
    char* c                           = token_copy;
    while (*c != '\0' && token_count < MAX_TOKENS) {
        while (*c != '\0' && std::strchr(delimiters, *c) != nullptr)
            ++c;
        if (*c == '\0') break;
        tokens[token_count++] = c;
        while (*c != '\0' && std::strchr(delimiters, *c) == nullptr)
            ++c;
        if (*c != '\0') *c++ = '\0';
    }
    tokens[token_count] = nullptr;
    return token_count;
}

bool has_argument() {
    return token_count >= 2;
}

int int_argument() {
    return std::atoi(tokens[1]);
}

void set_from_argument(int& field, const char* usage) {
    if (has_argument())
        field = int_argument();
    else
        std::puts(usage);
}
