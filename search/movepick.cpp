#include "search/movepick.h"

#include <cstdlib>

#include "board/attacks.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "eval/tables.h"
#include "search/tt.h"

// Quiet keys of score_moves sit below every capture and promotion key.
static constexpr int QUIET_OFFSET  = 16384;
static constexpr int HISTORY_SCALE = 8192;
// A promotion counts as winning a queen for the exchange (queen value less the pawn's).
static constexpr int PROMOTION_GAIN = 900;

static Move with_key(Move m, int key) {
    return (static_cast<uint32_t>(key) << 16) | (m & MOVE_WORD_BITS);
}

CmRow cm_row_of(SearchThread& t) {
    const Position& p = *t.pos;
    if ((p.lastmove & SQUARE_BITS) == 0) return nullptr;
    const int lt = move_to(p.lastmove);
    return t.cmhist[p.board[lt]][lt];
}

void picker_init(MovePicker& mp, SearchThread& t, Move hash_move, unsigned flags, int ply) {
    const Position& p   = *t.pos;
    mp.stage            = p.incheck ? STAGE_EVASIONS : STAGE_CAPTURES;
    mp.index            = 0;
    mp.count            = 0;
    mp.deferred_count   = 0;
    mp.generated        = false;
    mp.hash_move        = (hash_move & SQUARE_BITS) ? hash_move & MOVE_WORD_BITS : 0;
    mp.hash_pending     = mp.hash_move != 0;
    mp.full_mode        = (flags & PICK_ALL_STAGES) != 0;
    mp.checks_first_ply = (flags & PICK_CHECKS_FIRST_PLY) != 0;
    mp.underpromotions  = (flags & PICK_UNDERPROMOTIONS) != 0 ? 1 : 0;
    mp.ply              = ply;
    mp.cm_row           = cm_row_of(t);
    mp.killer1          = t.killers[0][ply];
    mp.killer2          = t.killers[1][ply];
    mp.counter_move     = 0;
    if (mp.cm_row) {
        const int lt    = move_to(p.lastmove);
        mp.counter_move = t.counter[p.board[lt]][lt];
    }
}

void score_moves(SearchThread& t, Move* list, uint32_t count) {
    const Position& p = *t.pos;
    const CmRow cmh   = cm_row_of(t);
    for (uint32_t i = 0; i < count; ++i) {
        const Move m   = list[i];
        const int from = move_from(m), to = move_to(m);
        const int mover = p.board[from];
        int key;
        if (p.board[to] != EMPTY && move_promo(m) == 0) {
            key = p.board[to] * 32 + 16 - mover;
        } else if (move_promo(m) != 0) {
            key = 1;
        } else if (piece_type(mover) == PAWN && to == p.epsq) {
            key = 16 - mover;
        } else {
            key     = t.history[p.side][from][to] + (cmh ? cmh[mover][to] : 0) - QUIET_OFFSET;
            list[i] = with_key(m, key) | QUIET_MARK;
            continue;
        }
        list[i] = with_key(m, key);
    }
}

// Starts loading the table entries of every move of a short list at once: most of them are
// searched soon, and by then the entries have had the whole list's time to arrive.
static void prefetch_entries(const SearchThread& t, const Move* list, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        hash_prefetch(key_after(*t.pos, t.key, list[i]));
}

// Fills the list of the picker's current stage (0, 1 or 5) with its keyed entries.
static void generate_stage(MovePicker& mp, SearchThread& t) {
    const Position& p = *t.pos;
    mp.index          = 0;
    mp.generated      = true;
    switch (mp.stage) {
    case STAGE_EVASIONS:
        gen_evasions(p, mp.list, &mp.count, mp.underpromotions);
        prefetch_entries(t, mp.list, mp.count);
        score_moves(t, mp.list, mp.count);
        break;
    case STAGE_CAPTURES:
        if (mp.checks_first_ply) {
            gen_checks(p, mp.list, &mp.count);
            prefetch_entries(t, mp.list, mp.count);
            score_moves(t, mp.list, mp.count);
        } else {
            gen_captures(p, mp.list, &mp.count, mp.underpromotions);
            prefetch_entries(t, mp.list, mp.count);
            for (uint32_t i = 0; i < mp.count; ++i)
                if (move_promo(mp.list[i]) == 0)
                    mp.list[i] = with_key(mp.list[i], p.board[move_to(mp.list[i])]);
        }
        break;
    case STAGE_QUIETS: {
        uint32_t n = 0;
        gen_quiets(p, mp.list, &n);
        uint32_t kept = 0;
        for (uint32_t i = 0; i < n; ++i) {
            const Move m      = mp.list[i];
            const uint32_t sq = m & SQUARE_BITS;
            if (sq == (mp.killer1 & SQUARE_BITS) || sq == (mp.killer2 & SQUARE_BITS) ||
                sq == (mp.counter_move & SQUARE_BITS))
                continue;
            const int from = move_from(m), to = move_to(m);
            const int key   = t.history[p.side][from][to] + (mp.cm_row ? mp.cm_row[p.board[from]][to] : 0);
            mp.list[kept++] = with_key(m, key) | QUIET_MARK;
        }
        mp.count = kept;
        break;
    }
    default:
        mp.count = 0;
        break;
    }
}

// Swaps the greatest remaining entry (the first of equals) into the next position and takes it.
// The runner-up found on the way is almost always the next pick, so its table entry starts loading
// now and has the whole search of this move to arrive. Lists prefetched whole when generated gain
// from it too (measured): the searches in between push their lines out of the nearest cache.
static Move pick_best(MovePicker& mp, const SearchThread& t) {
    uint32_t best = mp.index, second = mp.index;
    for (uint32_t i = mp.index + 1; i < mp.count; ++i) {
        if (static_cast<int32_t>(mp.list[i]) > static_cast<int32_t>(mp.list[best])) {
            second = best;
            best   = i;
        } else if (second == best ||
                   static_cast<int32_t>(mp.list[i]) > static_cast<int32_t>(mp.list[second])) {
            second = i;
        }
    }
    if (second != best) hash_prefetch(key_after(*t.pos, t.key, mp.list[second]));
    const Move m        = mp.list[best];
    mp.list[best]       = mp.list[mp.index];
    mp.list[mp.index++] = m;
    return m;
}

// A killer or counter move to try: present, possible here, and not the hash move again.
static Move stored_quiet(const MovePicker& mp, const Position& p, Move stored) {
    if ((stored & SQUARE_BITS) == 0 || !quiet_pseudo_legal(p, stored)) return 0;
    const Move m = (stored & MOVE_WORD_BITS) | QUIET_MARK;
    return m == mp.hash_move ? 0 : m;
}

static void advance(MovePicker& mp) {
    ++mp.stage;
    mp.index     = 0;
    mp.count     = 0;
    mp.generated = false;
}

Move next_move(MovePicker& mp, SearchThread& t) {
    const Position& p = *t.pos;
    if (mp.hash_pending) {
        mp.hash_pending = false;
        // A stored word may belong to another position under the same index; only a move that
        // could have been generated here goes on to the legality test.
        if (stored_move_pseudo_legal(p, mp.hash_move)) return mp.hash_move;
    }
    for (;;) {
        switch (mp.stage) {
        case STAGE_EVASIONS:
        case STAGE_CAPTURES:
        case STAGE_QUIETS:
            if (!mp.generated) generate_stage(mp, t);
            while (mp.index < mp.count) {
                const Move m = pick_best(mp, t);
                if ((m & MOVE_WORD_BITS) == mp.hash_move) continue;
                if (mp.stage == STAGE_CAPTURES) {
                    const int value = see(p, m);
                    if (value < 0) {
                        if (mp.full_mode) mp.deferred[mp.deferred_count++] = with_key(m, value);
                        continue;
                    }
                }
                return m;
            }
            if (!mp.full_mode || mp.stage == STAGE_EVASIONS) {
                mp.stage = STAGE_END;
                return 0;
            }
            advance(mp);
            break;
        case STAGE_KILLER1:
        case STAGE_KILLER2:
        case STAGE_COUNTER: {
            // One candidate per stage; index marks it as taken so the stage reports itself.
            if (mp.index == 0) {
                mp.index = 1;
                // The counter move is not compared with the killers: equal to one, it is tried again.
                const Move stored = mp.stage == STAGE_KILLER1   ? mp.killer1
                                    : mp.stage == STAGE_KILLER2 ? mp.killer2
                                                                : mp.counter_move;
                if (Move m = stored_quiet(mp, p, stored)) return m;
            }
            advance(mp);
            break;
        }
        case STAGE_BAD_CAPTURES:
            if (mp.index < mp.deferred_count) return mp.deferred[mp.index++];
            mp.stage = STAGE_END;
            return 0;
        default:
            return 0;
        }
    }
}

// Gravity: the closer a value already is to the bound, the less a bonus of the same sign moves it,
// which keeps every entry within -8192..8192.
static void apply_bonus(int16_t& h, int bonus) {
    h = static_cast<int16_t>(h + bonus - h * std::abs(bonus) / HISTORY_SCALE);
}

void update_history(SearchThread& t, CmRow cmh, Move m, int bonus) {
    const Position& p = *t.pos;
    const int from = move_from(m), to = move_to(m);
    apply_bonus(t.history[p.side][from][to], bonus);
    if (cmh) apply_bonus(cmh[p.board[from]][to], bonus);
}

void store_counter(SearchThread& t, Move m) {
    const Position& p = *t.pos;
    if ((p.lastmove & SQUARE_BITS) == 0) return;
    const int lt               = move_to(p.lastmove);
    t.counter[p.board[lt]][lt] = m;
}

void update_killers(SearchThread& t, int ply, Move m) {
    if (((m ^ t.killers[0][ply]) & SQUARE_BITS) == 0) return;
    t.killers[1][ply] = t.killers[0][ply];
    t.killers[0][ply] = m;
}

void cutoff_update(SearchThread& t, int ply, CmRow cmh, Move m, const Move* quiets, int quiet_count, int d) {
    const int bonus = history_bonus(d);
    update_killers(t, ply, m);
    store_counter(t, m);
    update_history(t, cmh, m, bonus);
    for (int i = 0; i < quiet_count; ++i)
        update_history(t, cmh, quiets[i], -bonus);
}

// The least valuable piece of the set (kings last); its type is left in type.
static int least_valuable(const Position& p, uint64_t set, int& type) {
    for (type = PAWN; type <= QUEEN; ++type)
        if (uint64_t b = set & p.type_bb[type]) return lsb(b);
    type = KING;
    return lsb(set);
}

int see(const Position& p, Move m) {
    const int from = move_from(m), to = move_to(m);
    const int mover_type = piece_type(p.board[from]);
    int a                = piece_value[mover_type];
    int v                = 0;
    if (p.board[to] != EMPTY) {
        v = piece_value[piece_type(p.board[to])];
        if (a <= v) return 0;
    }
    uint64_t occ         = occupancy(p) & ~bit(from);
    const bool promotion = move_promo(m) != 0 && mover_type == PAWN;
    if (promotion) {
        v += PROMOTION_GAIN;
        a += PROMOTION_GAIN;
    } else if (mover_type == PAWN && to == p.epsq) {
        v = piece_value[PAWN];
        occ &= ~bit(to ^ 8);
    }
    uint64_t attackers = attackers_to(p, to, occ) & occ;
    int side           = piece_colour(p.board[from]) ^ 1;
    if ((attackers & p.colour_bb[side]) == 0) return v;

    const uint64_t bq = p.type_bb[BISHOP] | p.type_bb[QUEEN];
    const uint64_t rq = p.type_bb[ROOK] | p.type_bb[QUEEN];
    // At most 32 men can take part, one capture each.
    int gain[34];
    int d         = 0;
    gain[0]       = v;
    int on_square = a;
    uint64_t mine;
    while ((mine = attackers & p.colour_bb[side]) != 0) {
        int type;
        const int sq = least_valuable(p, mine, type);
        ++d;
        gain[d] = on_square - gain[d - 1];
        occ &= ~bit(sq);
        if (type == PAWN || type == BISHOP || type == QUEEN) attackers |= bishop_attacks(to, occ) & bq;
        if (type == ROOK || type == QUEEN) attackers |= rook_attacks(to, occ) & rq;
        attackers &= occ;
        on_square = piece_value[type];
        if (promotion && type == PAWN) {
            gain[d] += PROMOTION_GAIN;
            on_square = piece_value[QUEEN];
        }
        side ^= 1;
    }
    for (int i = d - 1; i >= 0; --i)
        if (-gain[i + 1] < gain[i]) gain[i] = -gain[i + 1];
    return gain[0];
}
