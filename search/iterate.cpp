#include <algorithm>
#include <cstring>

#include "board/makemove.h"
#include "board/movegen.h"
#include "eval/evaluate.h"
#include "platform/platform.h"
#include "search/movepick.h"
#include "search/output.h"
#include "search/search.h"
#include "search/threads.h"
#include "search/tt.h"

// The reduction grows with the whole square root of an eighth of depth times moves searched. The
// radicand grows with the move count, so along a row the root only ever steps up.
static constexpr LmrTable make_lmr_table() {
    LmrTable t{};
    for (int d = 0; d < LMR_DEPTHS; ++d) {
        int root = 0;
        for (int k = 1; k < LMR_MOVES; ++k) {
            const int n = (k * d) >> 3;
            while ((root + 1) * (root + 1) <= n)
                ++root;
            t.at[d][k] = root;
        }
    }
    return t;
}

constexpr LmrTable lmr_table_data = make_lmr_table();

static constexpr int LAST_TIME_SLOT = TIME_SLOTS - 1;
// Aspiration: full window for the first depths, then a narrow one around the last score.
static constexpr int FULL_WINDOW_DEPTH = 4;
static constexpr int DELTA_PONDER = 80, DELTA_NORMAL = 10;
// Analysis reports a widened window from this depth on, once it is wider than 100.
static constexpr int WIDEN_REPORT_DEPTH = 9, WIDEN_REPORT_DELTA = 100;

// MultiPV, thread 0 only: the line being searched, and the moves that head the lines before it
// in this iteration (the root leaves them out).
static int current_line = 0;
static Move line_moves[MAX_MULTIPV];

// The bits that name a move: its squares and its promotion piece.
static constexpr Move PROMO_BITS = 7u << 13;
static bool same_move(Move a, Move b) {
    return ((a ^ b) & (SQUARE_BITS | PROMO_BITS)) == 0;
}

// A root move this thread leaves out: one not among the moves the search was given, or for thread
// 0 one that heads an earlier line of this iteration (the helpers search every line's move).
static bool root_skipped(bool main, Move m) {
    if (sc.root_move_count > 0) {
        bool given = false;
        for (int i = 0; i < sc.root_move_count && !given; ++i)
            given = same_move(sc.root_moves[i], m);
        if (!given) return true;
    }
    for (int i = 0; main && i < current_line; ++i)
        if (same_move(line_moves[i], m)) return true;
    return false;
}

// Thread 0's best-move record: a new best move resets the time slot to the most generous limit,
// a confirmed one tightens it by one. The lines after the best one only write their variation.
static void record_best(int depth, int score, Move m) {
    if (current_line > 0) {
        update_pv(0, m);
        return;
    }
    const int slot = sc.time_slot.load(std::memory_order_relaxed);
    if ((m & SQUARE_BITS) == (sc.pv_table[0][0] & SQUARE_BITS)) {
        if (slot > 0) sc.time_slot.store(slot - 1, std::memory_order_relaxed);
    } else {
        sc.time_slot.store(LAST_TIME_SLOT, std::memory_order_relaxed);
    }
    sc.best_score.store(score, std::memory_order_relaxed);
    sc.best_depth.store(depth, std::memory_order_relaxed);
    update_pv(0, m);
}

int search_root(SearchThread& t, int alpha, int beta, int depth) {
    if (depth < 1) return qsearch(t, 1, alpha, beta, 0, 0);
    alpha = std::max(alpha, -MATE);
    beta  = std::min(beta, MATE + 1);
    if (alpha >= beta) return alpha;
    if (search_stopped()) return 0;

    Position& p        = *t.pos;
    const bool incheck = p.incheck != 0;
    HashHit hit{};
    const bool found = hash_probe(t.key, 0, hit);
    Move hash_move   = found ? hit.move : 0;
    int eval;
    if (incheck) {
        eval = -MATE;
    } else if (found) {
        eval = hit.eval;
    } else {
        eval = evaluate(p);
        hash_store(t, 0, 0, eval, EVAL_ONLY_DEPTH, 0, BOUND_NONE);
    }
    p.eval = static_cast<int16_t>(eval);

    const CmRow cmh      = cm_row_of(t);
    const bool main      = t.id == 0;
    const bool show_move = main && sc.show_root;
    const bool filtered  = sc.root_move_count > 0 || (main && current_line > 0);
    MovePicker mp;
    picker_init(mp, t, hash_move, PICK_ALL_STAGES | PICK_UNDERPROMOTIONS, 0);
    NodeBest best{-MATE, hash_move, BOUND_UPPER};
    int count = 0;
    TriedQuiets quiets;
    while (Move m = next_move(mp, t)) {
        if (!legal(p, m) || (filtered && root_skipped(main, m))) continue;
        make_searched_move(t, m);
        ++count;
        if (main) {
            sc.pv_table[1][0] = 0;
            if (show_move) {
                sc.root_move.store(m, std::memory_order_relaxed);
                sc.root_move_index.store(count, std::memory_order_relaxed);
            }
        }
        int r = 0;
        if (count > 1 && mp.stage == STAGE_QUIETS && depth >= LMR_DEPTH)
            r = lmr_table[depth][count] - move_key(m) / LMR_HISTORY_UNIT;
        const int score = search_move(t, count == 1, 1, alpha, beta, depth - 1, 1, r, incheck);
        unmake_move(t);
        if (search_stopped()) return 0;
        const Raise raise = raise_best(best, alpha, beta, m, score);
        if (raise != Raise::None && main) record_best(depth, score, m);
        if (raise == Raise::Cutoff) {
            reward_cutoff(t, 0, cmh, m, score, beta, depth, incheck, quiets);
            hash_store(t, m, score, eval, depth, 0, BOUND_LOWER);
            return score;
        }
        quiets.add(m);
    }
    if (count == 0) return incheck ? -MATE : 0;
    // A line searched without the root's best moves does not speak for the root.
    if (!main || current_line == 0) hash_store(t, best.move, best.score, eval, depth, 0, best.bound);
    return best.score;
}

bool widen_window(int score, int& alpha, int& beta, int& delta) {
    if (score > alpha && score < beta) return false;
    delta *= 2;
    if (score <= alpha)
        alpha = std::max(score - delta, -MATE);
    else
        beta = std::min(score + delta, MATE);
    return true;
}

// Thread 0's progress line: UCI always, XBoard and console once the depth is worth showing.
static void report() {
    if (sc.uci_output)
        print_info();
    else if (sc.best_depth.load(std::memory_order_relaxed) >= sc.display_depth)
        print_thinking();
}

// MultiPV, after the best line of a depth: each further line is the best of the root moves that
// head no line yet, searched with a full window. The best line goes back into the principal
// variation whatever happens, so that the answer is always its move. False when the search was
// stopped before the lines were complete.
static bool search_other_lines(SearchThread& t, int depth) {
    Move best_pv[STACK_SIZE];
    std::memcpy(best_pv, sc.pv_table[0], sizeof best_pv);
    line_moves[0] = best_pv[0];
    int lines     = 1;
    bool complete = true;
    for (; lines < sc.multipv; ++lines) {
        current_line      = lines;
        sc.pv_table[0][0] = 0;
        const int score   = search_root(t, -MATE, MATE, depth);
        if (search_stopped()) {
            complete = false;
            break;
        }
        // No root move left to head a line.
        if ((sc.pv_table[0][0] & SQUARE_BITS) == 0) break;
        line_moves[lines]          = sc.pv_table[0][0];
        sc.extra_scores[lines - 1] = score;
        std::memcpy(sc.extra_pvs[lines - 1], sc.pv_table[0], sizeof sc.extra_pvs[0]);
    }
    current_line = 0;
    std::memcpy(sc.pv_table[0], best_pv, sizeof best_pv);
    if (complete) sc.extra_lines = lines - 1;
    return complete;
}

// Iterative deepening of one thread; returns when its search is over.
static void deepen(SearchThread& t) {
    const bool main = t.id == 0;
    int score = 0, depth = 1, delta = MATE;
    if (sc.max_depth < 1) return;
    // A root without a legal move (mate or stalemate) reads the same at every depth: its first
    // depth is reported once and the search ends there.
    Move root_moves[MAX_MOVES];
    const bool no_root_move = main && legal_moves(*t.pos, root_moves) == 0;
    for (;;) {
        t.seldepth = 0;
        int alpha  = std::max(score - delta, -MATE);
        int beta   = std::min(score + delta, MATE);
        for (;;) {
            score = search_root(t, alpha, beta, depth);
            if (search_stopped()) return;
            if (!widen_window(score, alpha, beta, delta)) break;
            if (main && delta > WIDEN_REPORT_DELTA && sc.analysis && depth >= WIDEN_REPORT_DEPTH) report();
            // Widened past any score: the depth ends with the last one.
            if (delta > MATE) break;
        }
        if (main) {
            if (sc.multipv > 1 && !search_other_lines(t, depth)) return;
            sc.completed_depth.store(depth, std::memory_order_relaxed);
            report();
            if (no_root_move) return;
            // A mate within the moves asked for is proven.
            if (sc.mate_limit > 0 && score >= MATE - (2 * sc.mate_limit - 1)) return;
            const int slot       = sc.time_slot.load(std::memory_order_relaxed);
            const uint64_t limit = sc.time_limits[slot].load(std::memory_order_relaxed);
            if (limit != 0 && depth >= sc.limit_depth.load(std::memory_order_relaxed) &&
                static_cast<uint64_t>(get_ms() - sc.clock_start.load(std::memory_order_relaxed)) >= limit)
                return;
        }
        if (++depth > sc.max_depth) return;
        delta = depth < FULL_WINDOW_DEPTH ? MATE : (sc.pondering ? DELTA_PONDER : DELTA_NORMAL);
    }
}

void search_thread(SearchThread& t) {
    deepen(t);
    add_nodes_searched(t.nodes);
    // Thread 0 ends the search for all; the others just end.
    if (t.id == 0) stop_search_locked();
}
