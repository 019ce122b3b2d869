#include <algorithm>
#include <cassert>

#include "board/keys.h"
#include "board/makemove.h"
#include "eval/evaluate.h"
#include "search/movepick.h"
#include "search/search.h"
#include "search/tablebase.h"
#include "search/threads.h"
#include "search/tt.h"

// clang-format off
const int lmp_table[2][11] = {
    {0, 3, 4, 6, 10, 15, 21, 28, 36, 45, 55},
    {0, 5, 6, 9, 15, 23, 32, 42, 54, 68, 83},
};
// clang-format on

static constexpr int LMP_DEPTH   = 11;
static constexpr int RAZOR_DEPTH = 3, RAZOR_MARGIN = 200;
static constexpr int FUTILITY_DEPTH = 6, FUTILITY_MARGIN = 80;
// Null move: reduction 3 + depth / 4, plus one per 80 of eval above beta up to 3 more.
static constexpr int NULL_MIN_DEPTH = 2, NULL_MOVE_MAX_EVAL = 1999;
static constexpr int NULL_BASE_REDUCTION = 3, NULL_MARGIN_UNIT = 80, NULL_MARGIN_CAP = 239,
                     NULL_MAX_EXTRA = 3;
// Capture trial: captures searched 4 plies shallower against a bound raised by 80.
static constexpr int TRIAL_DEPTH = 5, TRIAL_MARGIN = 80, TRIAL_REDUCTION = 4;
static constexpr int IID_DEPTH = 5, IID_REDUCTION = 2;
// Singular extension: deep enough, with a lower bound at most 3 plies shallower than the node.
static constexpr int SINGULAR_DEPTH = 8, SINGULAR_ENTRY_SLACK = 3;
static constexpr int BAD_CAPTURE_UNIT = 100;
// Under-promotions are generated near the root (and everywhere in analysis).
static constexpr int UNDERPROMOTION_PLY = 3;
// A table result is as good as a search this much deeper than the node's.
static constexpr int TB_DEPTH_BONUS = 6;

// Passing: the other side moves in the same position. No move is counted.
static void make_null_move(SearchThread& t) {
    Position* next = t.pos + 1;
    *next          = *t.pos;
    next->lastmove = 0;
    next->side ^= 1;
    t.pos = next;
    ++t.histidx;
    t.key ^= turn_key;
    t.keyhist[t.histidx] = t.key;
    hash_prefetch(t.key);
    set_pins(*next);
}

static bool has_pieces(const Position& p) {
    return (p.colour_bb[p.side] &
            (p.type_bb[KNIGHT] | p.type_bb[BISHOP] | p.type_bb[ROOK] | p.type_bb[QUEEN])) != 0;
}

void update_pv(int ply, Move m) {
    uint32_t* row        = sc.pv_table[ply];
    const uint32_t* next = sc.pv_table[ply + 1];
    row[0]               = m;
    for (int i = 0; i + 1 < STACK_SIZE; ++i) {
        row[i + 1] = next[i];
        if (next[i] == 0) break;
    }
}

// Razoring, reverse futility, null move and the capture trial of a node that is not on the
// principal variation. Returns true with the node's result in score when one of them answers.
static bool prune_node(SearchThread& t, int alpha, int beta, int depth, int ply, int e, Move hash_move,
                       int& score) {
    Position& p = *t.pos;
    if (depth <= RAZOR_DEPTH && e + RAZOR_MARGIN < beta) {
        const int v = qsearch(t, 0, alpha, beta, 0, ply);
        if (v < beta) {
            score = v;
            return true;
        }
    }
    if (has_pieces(p)) {
        if (depth <= FUTILITY_DEPTH && beta + FUTILITY_MARGIN * depth <= e) {
            score = e;
            return true;
        }
        if (depth >= NULL_MIN_DEPTH && e <= NULL_MOVE_MAX_EVAL && p.epsq == NO_SQUARE && e >= beta) {
            const int margin = e - beta;
            const int r      = NULL_BASE_REDUCTION + depth / 4 +
                          (margin <= NULL_MARGIN_CAP ? margin / NULL_MARGIN_UNIT : NULL_MAX_EXTRA);
            make_null_move(t);
            const int v = -search(t, 0, -beta, -beta + 1, depth - r, ply + 1, 0, 0);
            unmake_move(t);
            if (search_stopped()) {
                score = 0;
                return true;
            }
            if (v >= beta) {
                // A mate found only after passing proves nothing beyond beta.
                score = outside_mate_range(v) ? v : beta;
                return true;
            }
        }
    }
    if (depth >= TRIAL_DEPTH) {
        const int rb          = beta + TRIAL_MARGIN;
        const bool hash_first = (hash_move & SQUARE_BITS) && !(hash_move & QUIET_MARK) &&
                                stored_move_pseudo_legal(p, hash_move) && see(p, hash_move) >= 0;
        MovePicker mp;
        picker_init(mp, t, hash_first ? hash_move : 0, PICK_ONE_STAGE, ply);
        // A hash move that did not qualify is a quiet move or a losing capture, which the capture
        // stage skips anyway.
        while (Move m = next_move(mp, t)) {
            hash_prefetch(key_after(p, t.key, m));
            if (!legal(p, m)) continue;
            make_searched_move(t, m);
            const int v = -search(t, 0, -rb, -rb + 1, depth - TRIAL_REDUCTION, ply + 1, 1, 0);
            unmake_move(t);
            if (v >= rb) {
                score = v;
                return true;
            }
        }
    }
    return false;
}

int search(SearchThread& t, int pv, int alpha, int beta, int depth, int ply, int prune, Move excluded) {
    if (depth < 1) return qsearch(t, pv, alpha, beta, 0, ply);
    note_ply(t, ply);
    alpha = std::max(alpha, ply - MATE);
    beta  = std::min(beta, MATE + 1 - ply);
    if (alpha >= beta) return alpha;
    Position& p = *t.pos;
    if (ply >= MAX_PLY) return evaluate(p);
    if (search_stopped()) return 0;
    if (t.nodes >= sc.node_limit) {
        sc.stop.store(1, std::memory_order_relaxed);
        return 0;
    }
    if (is_draw(t)) return 0;

    const CmRow cmh = cm_row_of(t);
    // The singular test searches the node again and has no entry of its own. Without a hit every
    // field reads as zero (the singular test below still reads the score).
    HashHit hit{};
    const bool found = excluded == 0 && hash_probe(t.key, ply, hit);
    if (!found) hit = HashHit{};
    const int hash_score = hit.score;
    if (found && !pv && hit.depth >= depth) {
        const int b = hit.bound;
        if ((b == BOUND_LOWER && hash_score >= beta) || (b == BOUND_UPPER && hash_score <= alpha) ||
            b == BOUND_EXACT) {
            if (hit.move & QUIET_MARK) {
                const int bonus = history_bonus(std::min(depth, MAX_BONUS_DEPTH));
                if (b == BOUND_LOWER) {
                    update_killers(t, ply, hit.move);
                    store_counter(t, hit.move);
                    update_history(t, cmh, hit.move, bonus);
                } else if (b == BOUND_UPPER) {
                    update_history(t, cmh, hit.move, -bonus);
                }
            }
            return hash_score;
        }
    }

    // Just after a capture or pawn move the tables may know the result.
    if (tb_search_men > 0 && excluded == 0) {
        int tb, bound;
        if (tb_probe_node(t, ply, depth, tb, bound) &&
            (bound == BOUND_EXACT || (bound == BOUND_LOWER ? tb >= beta : tb <= alpha))) {
            hash_store(t, 0, tb, found ? hit.eval : evaluate(p), std::min(depth + TB_DEPTH_BONUS, MAX_DEPTH),
                       ply, bound);
            return tb;
        }
    }

    const bool incheck = p.incheck != 0;
    int eval;
    if (incheck) {
        eval = ply - MATE;
    } else if (found) {
        eval = hit.eval;
    } else {
        eval = evaluate(p);
        if (excluded == 0) hash_store(t, 0, 0, eval, EVAL_ONLY_DEPTH, ply, BOUND_NONE);
    }
    p.eval              = static_cast<int16_t>(eval);
    const int improving = (ply > 1 && !incheck && (t.pos - 2)->eval <= eval) ? 1 : 0;
    int e               = eval;
    if (found && ((hit.bound == BOUND_LOWER && eval < hash_score) ||
                  (hit.bound == BOUND_UPPER && eval > hash_score) || hit.bound == BOUND_EXACT))
        e = hash_score;

    Move hash_move = found ? hit.move : 0;
    int hash_bound = hit.bound, hash_depth = hit.depth;
    if (prune && !incheck && outside_mate_range(beta)) {
        if (pv) {
            // Internal iterative deepening finds a move to try first; its entry's bound and depth
            // (not its score) then stand for the node's in the singular test.
            if (depth >= IID_DEPTH && (hash_move & SQUARE_BITS) == 0) {
                search(t, 1, alpha, beta, depth - IID_REDUCTION, ply, 0, 0);
                HashHit again{};
                if (hash_probe(t.key, ply, again)) {
                    hash_move  = again.move;
                    hash_bound = again.bound;
                    hash_depth = again.depth;
                }
            }
        } else {
            int score;
            if (prune_node(t, alpha, beta, depth, ply, e, hash_move, score)) return score;
        }
    }

    const unsigned underpromotions =
        (ply <= UNDERPROMOTION_PLY || sc.analysis) ? PICK_UNDERPROMOTIONS : PICK_ONE_STAGE;
    MovePicker mp;
    picker_init(mp, t, hash_move, PICK_ALL_STAGES | underpromotions, ply);
    const bool singular_candidate = depth >= SINGULAR_DEPTH && excluded == 0 &&
                                    outside_mate_range(hash_score) && hash_bound == BOUND_LOWER &&
                                    hash_depth >= depth - SINGULAR_ENTRY_SLACK;
    const bool writes_pv = pv && t.id == 0;
    NodeBest best{ply - MATE, hash_move, BOUND_UPPER};
    int searched = 0;
    TriedQuiets quiets;
    while (Move m = next_move(mp, t)) {
        // No stage hands out the hash move's word again, so the word identifies it.
        const bool from_hash = mp.hash_move != 0 && (m & MOVE_WORD_BITS) == mp.hash_move;
        if ((m & SQUARE_BITS) == (excluded & SQUARE_BITS)) continue;
        // Moves are left out only once one has shown that the side is not mated: a node whose
        // every searched move lost to a mate would otherwise report that mate, as if the moves
        // left out lost to it as well.
        const bool may_prune = best.score >= MATE_STORE_LOW;
        if (may_prune && mp.stage == STAGE_QUIETS && depth < LMP_DEPTH &&
            lmp_table[improving][depth] <= searched) {
            skip_quiets(mp);
            continue;
        }
        if (may_prune && mp.stage == STAGE_BAD_CAPTURES && move_key(m) < -BAD_CAPTURE_UNIT * depth) continue;
        hash_prefetch(key_after(p, t.key, m));
        if (!legal(p, m)) continue;
        int n = depth - 1;
        if (from_hash && singular_candidate) {
            const int sb = hash_score - depth;
            const int v  = search(t, 0, sb - 1, sb, depth / 2, ply, 0, m);
            if (v < sb) n = depth;
        }
        make_searched_move(t, m);
        ++searched;
        if (writes_pv) sc.pv_table[ply + 1][0] = 0;
        int r = 0;
        if (searched > 1 && mp.stage == STAGE_QUIETS && depth >= LMR_DEPTH) {
            assert(depth < LMR_DEPTHS && searched < LMR_MOVES);
            r = lmr_table[depth][searched] + (improving ? 0 : 1);
            if (r != 0) r = r - 1 + (pv ? 0 : 1);
            r -= move_key(m) / LMR_HISTORY_UNIT;
        }
        const int score = search_move(t, searched == 1, pv, alpha, beta, n, ply + 1, r, incheck);
        unmake_move(t);
        if (search_stopped()) return 0;
        const Raise raise = raise_best(best, alpha, beta, m, score);
        if (raise != Raise::None && writes_pv) update_pv(ply, m);
        if (raise == Raise::Cutoff) {
            reward_cutoff(t, ply, cmh, m, score, beta, depth, incheck, quiets);
            break;
        }
        quiets.add(m);
    }

    if (searched == 0) return (incheck || excluded) ? ply - MATE : 0;
    if (excluded) return best.score;
    hash_store(t, best.move, best.score, eval, depth, ply, best.bound);
    return best.score;
}
