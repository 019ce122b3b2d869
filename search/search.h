#pragma once
// Quiescence search, principal variation search with its pruning step, and the root and
// iterative-deepening bodies each search thread runs.

#include <cstdint>

#include "search/thread.h"

extern int lmr_table[100][384];
extern const int lmp_table[2][11];
void lmr_init();

int qsearch(SearchThread& t, int pv, int alpha, int beta, int depth, int ply);
int search(SearchThread& t, int pv, int alpha, int beta, int depth, int ply, int prune, Move excluded);
int search_root(SearchThread& t, int alpha, int beta, int depth);
// Thread body: iterative deepening with aspiration windows.
void search_thread(SearchThread& t);
// Draw by fifty-move rule, repetition in the reversible part, or insufficient material.
bool is_draw(const SearchThread& t);
