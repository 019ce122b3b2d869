#pragma once
// Quiescence search, principal variation search with its pruning step, and the root and
// iterative-deepening bodies each search thread runs. Everything a search writes lives in its
// thread's record, except the table (lock-free) and what thread 0 publishes in sc.

#include <cstdint>

#include "search/thread.h"

// Reductions by depth and number of moves searched; filled once by lmr_init at start-up.
extern int lmr_table[100][384];
// Quiet moves searched before the rest are dropped, by improving and depth.
extern const int lmp_table[2][11];
void lmr_init();

int qsearch(SearchThread& t, int pv, int alpha, int beta, int depth, int ply);
int search(SearchThread& t, int pv, int alpha, int beta, int depth, int ply, int prune, Move excluded);
int search_root(SearchThread& t, int alpha, int beta, int depth);
// Thread body: iterative deepening with aspiration windows; thread 0 ends the search for all.
void search_thread(SearchThread& t);
// Draw by the fifty-move rule, a repetition in the reversible part, or insufficient material.
bool is_draw(const SearchThread& t);
// One failed try of the aspiration loop: doubles delta and widens the failing side. Returns false
// (nothing changed) when the score lies inside the window.
bool widen_window(int score, int& alpha, int& beta, int& delta);
