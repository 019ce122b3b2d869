#pragma once
// Quiescence search, principal variation search with its pruning step, and the root and
// iterative-deepening bodies each search thread runs. Everything a search writes lives in its
// thread's record, except the table (lock-free) and what thread 0 publishes in sc.

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "board/makemove.h"
#include "eval/pawns.h"
#include "search/movepick.h"
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

// Reductions by depth and number of moves searched; computed at compile time.
constexpr int LMR_DEPTHS = MAX_DEPTH + 1, LMR_MOVES = 384;
using LmrTable = Table<int[LMR_DEPTHS][LMR_MOVES]>;
extern const LmrTable lmr_table_data;
inline constexpr auto& lmr_table = lmr_table_data.at;
// Quiet moves searched before the rest are dropped, by improving and depth.
extern const int lmp_table[2][11];

// Makes a move of the search and starts loading what the new node reads first: its table entry
// and its pawn-structure entry.
inline void make_searched_move(SearchThread& t, Move m) {
    make_move(t, m);
    hash_prefetch(t.key);
    pawn_prefetch(t.pos->pawnkey);
}

int qsearch(SearchThread& t, int pv, int alpha, int beta, int depth, int ply);
int search(SearchThread& t, int pv, int alpha, int beta, int depth, int ply, int prune, Move excluded);
int search_root(SearchThread& t, int alpha, int beta, int depth);
// Thread body: iterative deepening with aspiration windows; thread 0 ends the search for all.
void search_thread(SearchThread& t);
// Draw by the fifty-move rule, a repetition in the reversible part, or insufficient material.
bool is_draw(const SearchThread& t);
// ---- What the move loops of the root, the interior nodes and the quiescence search share ----

// The best a move loop has found so far.
struct NodeBest {
    int score;
    Move move; // the hash move until a move raises alpha
    int bound; // BOUND_UPPER; BOUND_EXACT once a move raised alpha; BOUND_LOWER after a cut-off
};

enum class Raise { None, Alpha, Cutoff };

// Takes the score of a searched move. Raise::Alpha: it raised alpha; Raise::Cutoff: it reached
// beta, and the move with a lower bound is the node's result. Either way the caller writes the
// move's variation.
inline Raise raise_best(NodeBest& b, int& alpha, int beta, Move m, int score) {
    if (score <= b.score) return Raise::None;
    b.score = score;
    if (score <= alpha) return Raise::None;
    b.move = m;
    if (score >= beta) {
        b.bound = BOUND_LOWER;
        return Raise::Cutoff;
    }
    alpha   = score;
    b.bound = BOUND_EXACT;
    return Raise::Alpha;
}

// Quiet moves a node searched without a cut-off: each gets a history malus when a later quiet
// move cuts off.
struct TriedQuiets {
    int count = 0;
    Move moves[MAX_QUIETS];
    void add(Move m) {
        if ((m & QUIET_MARK) && count < MAX_QUIETS) moves[count++] = m;
    }
};

// A quiet move's cut-off outside check feeds the killers, the counter move and the history.
inline void reward_cutoff(SearchThread& t, int ply, CmRow cmh, Move m, int score, int beta, int depth,
                          bool incheck, const TriedQuiets& quiets) {
    if (incheck || !(m & QUIET_MARK)) return;
    const int d = std::min(depth + (score > beta + BONUS_MARGIN ? 1 : 0), MAX_BONUS_DEPTH);
    cutoff_update(t, ply, cmh, m, quiets.moves, quiets.count, d);
}

// The score of a move just made, searched at ply with n plies left. The first move of a node gets
// the full window (its child is not pruned when the node is in check). Any other move gets a zero
// window, first r plies shallower when r > 0 (leaving at least one ply) and again at full depth if
// it beats alpha, and then the full window when its score lands inside it.
inline int search_move(SearchThread& t, bool first, int pv, int alpha, int beta, int n, int ply, int r,
                       bool incheck) {
    if (first) return -search(t, pv, -beta, -alpha, n, ply, incheck ? 0 : 1, 0);
    const int reduced = r > 0 ? std::max(n - r, 1) : n;
    int score         = -search(t, 0, -alpha - 1, -alpha, reduced, ply, 1, 0);
    if (reduced != n && score > alpha) score = -search(t, 0, -alpha - 1, -alpha, n, ply, 1, 0);
    if (alpha < score && score < beta) score = -search(t, 1, -beta, -alpha, n, ply, 1, 0);
    return score;
}

// One failed try of the aspiration loop: doubles delta and widens the failing side. Returns false
// (nothing changed) when the score lies inside the window.
bool widen_window(int score, int& alpha, int& beta, int& delta);
