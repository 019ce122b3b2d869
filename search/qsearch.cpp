#include <algorithm>

#include "board/makemove.h"
#include "eval/evaluate.h"
#include "search/movepick.h"
#include "search/search.h"
#include "search/tt.h"

// Only the part of the line since the last capture or pawn move can repeat.
static constexpr int RULE50_LIMIT   = 99;
static constexpr int REPETITION_MIN = 3;

bool is_draw(const SearchThread& t) {
    const Position& p = *t.pos;
    const int r       = p.rule50;
    if (r > RULE50_LIMIT) return true;
    if (r > REPETITION_MIN) {
        // A position set up with a high move counter has fewer keys behind it than rule50 says.
        const int back = std::min(r, static_cast<int>(t.histidx));
        for (int d = 2; d <= back; d += 2)
            if (t.keyhist[t.histidx - d] == t.key) return true;
    }
    if ((p.type_bb[PAWN] | p.type_bb[ROOK] | p.type_bb[QUEEN]) == 0) {
        const int men = popcount(occupancy(p));
        if (men == 4) return popcount(p.type_bb[KNIGHT]) == 2;
        if (men <= 3) return true;
    }
    return false;
}

int qsearch(SearchThread& t, int pv, int alpha, int beta, int depth, int ply) {
    note_ply(t, ply);
    alpha = std::max(alpha, ply - MATE);
    beta  = std::min(beta, MATE + 1 - ply);
    if (alpha >= beta) return alpha;
    const Position& p = *t.pos;
    if (ply >= MAX_PLY) return evaluate(p);
    if (is_draw(t)) return 0;

    const int hash_depth = (depth == 0 || p.incheck) ? 0 : -1;
    // Evaluated before the probe, even where a hit will bring its own stored value: the entry the
    // parent started loading is usually still on its way from memory, and this work hides the wait.
    const int fresh_eval = p.incheck ? 0 : evaluate(p);
    HashHit hit{};
    const bool found = hash_probe(t.key, ply, hit);
    if (found && !pv && hit.depth >= hash_depth &&
        ((hit.bound == BOUND_LOWER && hit.score >= beta) ||
         (hit.bound == BOUND_UPPER && hit.score <= alpha) || hit.bound == BOUND_EXACT))
        return hit.score;

    // What the moves have to beat: the stand-pat score, or being mated when in check.
    int to_beat, node_eval;
    if (p.incheck) {
        to_beat = node_eval = ply - MATE;
    } else {
        node_eval = found ? hit.eval : fresh_eval;
        to_beat   = node_eval;
        if (found) {
            if (hit.bound == BOUND_LOWER)
                to_beat = std::max(node_eval, hit.score);
            else if (hit.bound == BOUND_UPPER)
                to_beat = std::min(node_eval, hit.score);
            else if (hit.bound == BOUND_EXACT)
                to_beat = hit.score;
        }
        if (to_beat >= beta) return to_beat;
        alpha = std::max(alpha, to_beat);
    }

    const Move hash_move = found ? hit.move : 0;
    NodeBest best{to_beat, hash_move, BOUND_UPPER};
    MovePicker mp;
    picker_init(mp, t, hash_move, depth == 0 ? PICK_CHECKS_FIRST_PLY : PICK_ONE_STAGE, ply);
    while (Move m = next_move(mp, t)) {
        hash_prefetch(key_after(p, t.key, m));
        if (!legal(p, m)) continue;
        make_searched_move(t, m);
        const int score = -qsearch(t, 0, -beta, -alpha, depth - 1, ply + 1);
        unmake_move(t);
        if (raise_best(best, alpha, beta, m, score) == Raise::Cutoff) break;
    }
    hash_store(t, best.move, best.score, node_eval, hash_depth, ply, best.bound);
    return best.score;
}
