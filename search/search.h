#pragma once
// Quiescence search, principal variation search with its pruning step, and the root and
// iterative-deepening bodies each search thread runs. Everything a search writes lives in its
// thread's record, except the table (lock-free) and what thread 0 publishes in sc.

#include <atomic>
#include <cstdint>

#include "search/thread.h"
#include "search/threads.h"
#include "search/tt.h"

// Cut-off bookkeeping: a fail high this far above beta counts one ply deeper, and the depth
// behind a history bonus is capped.
constexpr int BONUS_MARGIN    = 80;
constexpr int MAX_BONUS_DEPTH = 16;
// Quiet moves remembered per node for the history malus.
constexpr int MAX_QUIETS = 384;
// Late-move reductions start at this depth; every 4096 of history takes one ply off them.
constexpr int LMR_DEPTH        = 3;
constexpr int LMR_HISTORY_UNIT = 4096;
// Depth of a table entry that carries only the static evaluation.
constexpr int EVAL_ONLY_DEPTH = -2;

inline bool search_stopped() {
    return sc.stop.load(std::memory_order_relaxed) != 0;
}
// The selective depth: the deepest ply of the iteration.
inline void note_ply(SearchThread& t, int ply) {
    if (static_cast<uint32_t>(ply) > t.seldepth) t.seldepth = static_cast<uint32_t>(ply);
}
// Scores the table stores without a mate-distance conversion.
inline bool outside_mate_range(int s) {
    return MATE_STORE_LOW <= s && s <= MATE_STORE_HIGH;
}
// Thread 0 at a principal-variation node: row ply becomes m followed by row ply + 1.
void update_pv(int ply, Move m);

// Reductions by depth and number of moves searched; filled once by lmr_init at start-up.
constexpr int LMR_DEPTHS = MAX_DEPTH + 1, LMR_MOVES = 384;
extern int lmr_table[LMR_DEPTHS][LMR_MOVES];
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
