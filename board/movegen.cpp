#include "board/movegen.h"

#include "board/attacks.h"
#include "board/castling.h"
#include "board/makemove.h"

// Every generator is instantiated once per colour so that shifts, ranks and promotion squares are
// constants; the entry points only dispatch on the side to move.

namespace {

template <int Us> struct Side {
    static constexpr int them           = Us ^ 1;
    static constexpr int forward        = Us == WHITE ? 8 : -8;
    static constexpr uint64_t last_rank = relative_rank_mask(Us, 7);
    // A single push landing here may go on to the double-push rank.
    static constexpr uint64_t push_rank = relative_rank_mask(Us, 2);
};

// A cursor over the caller's entries; the count is stored once at the end.
struct Out {
    Move* m;
    void add(int from, int to) { *m++ = make_move_word(from, to); }
    void add_all(int from, uint64_t targets) {
        const Move base = static_cast<Move>(from << 6);
        while (targets)
            *m++ = base | static_cast<Move>(pop_lsb(targets));
    }
    void promotions(int from, int to, int under) {
        const Move w = make_move_word(from, to);
        *m++         = PROMO_QUEEN | w;
        if (under) {
            *m++ = PROMO_ROOK | w;
            *m++ = PROMO_BISHOP | w;
            *m++ = PROMO_KNIGHT | w;
        }
    }
};

} // namespace

template <int Us> static uint64_t their_pawn_attacks(const Position& p) {
    return pawn_attack_set<Us ^ 1>(pieces(p, Us ^ 1, PAWN));
}

// Pawn captures of the given targets, target-major: for each target, the pawns that reach it.
template <int Us> static void pawn_captures(Out& out, uint64_t pawns, uint64_t targets) {
    while (targets) {
        const int to  = pop_lsb(targets);
        uint64_t from = pawns & pawn_attacks[Us ^ 1][to];
        while (from)
            out.add(pop_lsb(from), to);
    }
}

template <int Us> static void pawn_promo_captures(Out& out, uint64_t pawns, uint64_t targets, int under) {
    while (targets) {
        const int to  = pop_lsb(targets);
        uint64_t from = pawns & pawn_attacks[Us ^ 1][to];
        while (from)
            out.promotions(pop_lsb(from), to, under);
    }
}

template <int Us> static void push_promotions(Out& out, uint64_t dests, int under) {
    while (dests) {
        const int to = pop_lsb(dests);
        out.promotions(to - Side<Us>::forward, to, under);
    }
}

static void pushes(Out& out, uint64_t dests, int distance) {
    while (dests) {
        const int to = pop_lsb(dests);
        out.add(to - distance, to);
    }
}

// Castling needs only the right and empty squares here; attacks are legal()'s business.
template <int Us>
[[gnu::always_inline]] static inline void castles(Out& out, const Position& p, uint64_t occ) {
    if (!p.cflag) return;
    if (p.chess960) {
        out.m = gen_castles960(p, out.m);
        return;
    }
    if (Us == WHITE) {
        if ((p.cflag & CASTLE_WK) && !(occ & (bit(F1) | bit(G1)))) out.add(E1, G1);
        if ((p.cflag & CASTLE_WQ) && !(occ & (bit(B1) | bit(C1) | bit(D1)))) out.add(E1, C1);
    } else {
        if ((p.cflag & CASTLE_BK) && !(occ & (bit(F8) | bit(G8)))) out.add(E8, G8);
        if ((p.cflag & CASTLE_BQ) && !(occ & (bit(B8) | bit(C8) | bit(D8)))) out.add(E8, C8);
    }
}

// Moves of each piece of a set onto `targets`, lowest piece first.
template <typename Attacks>
[[gnu::always_inline]] static inline void piece_moves(Out& out, uint64_t set, uint64_t targets,
                                                      Attacks attacks) {
    while (set) {
        const int from = pop_lsb(set);
        out.add_all(from, attacks(from) & targets);
    }
}

namespace {

struct KnightAttacks {
    uint64_t operator()(int s) const { return knight_attacks[s]; }
};
struct BishopAttacks {
    uint64_t occ;
    uint64_t operator()(int s) const { return bishop_attacks(s, occ); }
};
struct RookAttacks {
    uint64_t occ;
    uint64_t operator()(int s) const { return rook_attacks(s, occ); }
};
struct QueenAttacks {
    uint64_t occ;
    uint64_t operator()(int s) const { return queen_attacks(s, occ); }
};

} // namespace

template <int Us> static Move* captures(const Position& p, Move* first, int under) {
    using S = Side<Us>;
    Out out{first};
    const uint64_t them  = p.colour_bb[S::them];
    const uint64_t occ   = them | p.colour_bb[Us];
    const int k          = king_square(p, Us);
    const uint64_t pawns = pieces(p, Us, PAWN);

    out.add_all(k,
                king_attacks[k] & them & ~their_pawn_attacks<Us>(p) & ~king_attacks[king_square(p, S::them)]);

    uint64_t targets = them;
    if (p.epsq != NO_SQUARE) targets |= bit(p.epsq);
    targets &= pawn_attack_set<Us>(pawns);
    pawn_captures<Us>(out, pawns, targets & ~S::last_rank);
    pawn_promo_captures<Us>(out, pawns, targets & S::last_rank, under);

    piece_moves(out, pieces(p, Us, KNIGHT), them, KnightAttacks{});
    piece_moves(out, pieces(p, Us, BISHOP), them, BishopAttacks{occ});
    piece_moves(out, pieces(p, Us, ROOK), them, RookAttacks{occ});
    piece_moves(out, pieces(p, Us, QUEEN), them, QueenAttacks{occ});

    push_promotions<Us>(out, pawn_push<Us>(pawns) & ~occ & S::last_rank, under);
    return out.m;
}

template <int Us> static Move* quiets(const Position& p, Move* first) {
    using S = Side<Us>;
    Out out{first};
    const uint64_t occ   = occupancy(p);
    const uint64_t empty = ~occ;
    const int k          = king_square(p, Us);

    castles<Us>(out, p, occ);

    out.add_all(k, king_attacks[k] & empty & ~their_pawn_attacks<Us>(p) &
                       ~king_attacks[king_square(p, S::them)]);

    const uint64_t single = pawn_push<Us>(pieces(p, Us, PAWN)) & empty;
    pushes(out, single & ~S::last_rank, S::forward);
    pushes(out, double_pushes<Us>(single, empty), 2 * S::forward);

    piece_moves(out, pieces(p, Us, KNIGHT), empty, KnightAttacks{});
    piece_moves(out, pieces(p, Us, BISHOP), empty, BishopAttacks{occ});
    piece_moves(out, pieces(p, Us, ROOK), empty, RookAttacks{occ});
    piece_moves(out, pieces(p, Us, QUEEN), empty, QueenAttacks{occ});
    return out.m;
}

template <int Us> static Move* evasions(const Position& p, Move* first, int under) {
    using S = Side<Us>;
    Out out{first};
    const uint64_t ours = p.colour_bb[Us];
    const uint64_t them = p.colour_bb[S::them];
    const uint64_t occ  = ours | them;
    const int k         = king_square(p, Us);

    out.add_all(k, king_attacks[k] & ~ours & ~their_pawn_attacks<Us>(p) &
                       ~king_attacks[king_square(p, S::them)]);

    const uint64_t checkers = them & attackers_to(p, k, occ);
    if (popcount(checkers) != 1) return out.m;

    const int checker     = lsb(checkers);
    const uint64_t block  = between[k][checker];
    const uint64_t target = block | checkers;
    const uint64_t pawns  = pieces(p, Us, PAWN);

    // The en-passant square joins the targets whoever gives check; legal() drops useless ones.
    uint64_t capture_targets = checkers;
    if (p.epsq != NO_SQUARE) capture_targets |= bit(p.epsq);
    pawn_captures<Us>(out, pawns, capture_targets & ~S::last_rank);
    pawn_promo_captures<Us>(out, pawns, checkers & S::last_rank, under);

    const uint64_t single = pawn_push<Us>(pawns) & ~occ;
    push_promotions<Us>(out, single & block & S::last_rank, under);
    pushes(out, single & target & ~S::last_rank, S::forward);
    pushes(out, double_pushes<Us>(single, ~occ) & target, 2 * S::forward);

    piece_moves(out, pieces(p, Us, KNIGHT), target, KnightAttacks{});
    piece_moves(out, pieces(p, Us, BISHOP), target, BishopAttacks{occ});
    piece_moves(out, pieces(p, Us, ROOK), target, RookAttacks{occ});
    piece_moves(out, pieces(p, Us, QUEEN), target, QueenAttacks{occ});
    return out.m;
}

template <int Us> static Move* checks(const Position& p, Move* first) {
    using S = Side<Us>;
    Out out{first};
    const uint64_t ours  = p.colour_bb[Us];
    const uint64_t them  = p.colour_bb[S::them];
    const uint64_t occ   = ours | them;
    const uint64_t empty = ~occ;
    const int k          = king_square(p, Us);
    const int ek         = king_square(p, S::them);
    const uint64_t ba    = bishop_attacks(ek, occ);
    const uint64_t ra    = rook_attacks(ek, occ);

    // Our pieces standing between their king and one of our sliders: moving them uncovers a check.
    const uint64_t diagonal = pieces(p, Us, BISHOP) | pieces(p, Us, QUEEN);
    const uint64_t straight = pieces(p, Us, ROOK) | pieces(p, Us, QUEEN);
    uint64_t sliders        = (straight & (rook_attacks(ek, occ & ~(ours & ra)) & ~ra)) |
                       (diagonal & (bishop_attacks(ek, occ & ~(ours & ba)) & ~ba));
    uint64_t discover = 0;
    while (sliders)
        discover |= between[ek][pop_lsb(sliders)];
    discover &= ours;

    uint64_t queens = pieces(p, Us, QUEEN);
    while (queens) {
        const int from = pop_lsb(queens);
        out.add_all(from, queen_attacks(from, occ) & ((empty & (ba | ra)) | them));
    }

    const uint64_t pawns = pieces(p, Us, PAWN);
    uint64_t ep          = p.epsq != NO_SQUARE ? bit(p.epsq) : 0;
    if (discover) {
        piece_moves(out, pieces(p, Us, KNIGHT) & discover, ~ours, KnightAttacks{});

        uint64_t dpawns = pawns & discover;
        while (dpawns) {
            const int from          = pop_lsb(dpawns);
            const uint64_t off_line = empty & ~between[ek][from];
            if (!off_line) continue;
            const uint64_t caps = pawn_attacks[Us][from] & (them | ep);
            out.add_all(from, caps & ~S::last_rank);
            uint64_t promo_caps = caps & S::last_rank;
            while (promo_caps)
                out.promotions(from, pop_lsb(promo_caps), 0);
            const int to = from + S::forward;
            if (!(bit(to) & off_line)) continue;
            if (bit(to) & S::last_rank) {
                out.promotions(from, to, 0);
            } else {
                out.add(from, to);
                const int to2 = to + S::forward;
                if ((bit(to) & S::push_rank) && (bit(to2) & off_line)) out.add(from, to2);
            }
        }

        if (discover & bit(k)) out.add_all(k, king_attacks[k] & ~ours & ~between[ek][k]);

        uint64_t dsliders = pieces(p, Us, BISHOP) & discover;
        while (dsliders) {
            const int from = pop_lsb(dsliders);
            out.add_all(from, bishop_attacks(from, occ) & ~ours & ~between[ek][from]);
        }
        dsliders = pieces(p, Us, ROOK) & discover;
        while (dsliders) {
            const int from = pop_lsb(dsliders);
            out.add_all(from, rook_attacks(from, occ) & ~ours & ~between[ek][from]);
        }
        dsliders = pieces(p, Us, QUEEN) & discover;
        while (dsliders) {
            const int from = pop_lsb(dsliders);
            out.add_all(from, queen_attacks(from, occ) & ~ours & ~between[ek][from]);
        }
    }

    out.add_all(k, king_attacks[k] & them & ~their_pawn_attacks<Us>(p) & ~king_attacks[ek]);

    const uint64_t free_pawns = pawns & ~discover;
    const uint64_t targets    = (them | ep) & pawn_attack_set<Us>(free_pawns);
    pawn_captures<Us>(out, free_pawns, targets & ~S::last_rank);
    pawn_promo_captures<Us>(out, free_pawns, targets & S::last_rank, 0);

    const uint64_t single   = pawn_push<Us>(free_pawns) & empty;
    const uint64_t checking = pawn_attacks[S::them][ek];
    pushes(out, single & checking & ~S::last_rank, S::forward);
    pushes(out, double_pushes<Us>(single, empty) & checking, 2 * S::forward);
    push_promotions<Us>(out, single & S::last_rank, 0);

    piece_moves(out, pieces(p, Us, KNIGHT) & ~discover, (empty & knight_attacks[ek]) | them, KnightAttacks{});
    piece_moves(out, pieces(p, Us, BISHOP) & ~discover, (empty & ba) | them, BishopAttacks{occ});
    piece_moves(out, pieces(p, Us, ROOK) & ~discover, (empty & ra) | them, RookAttacks{occ});
    return out.m;
}

// Captures and quiets from one pass over the pieces: each piece's attack set is looked up once and
// split into the two lists.
template <typename Attacks>
[[gnu::always_inline]] static inline void split_moves(Out& caps, Out& quiet, uint64_t set, uint64_t them,
                                                      uint64_t empty, Attacks attacks) {
    while (set) {
        const int from         = pop_lsb(set);
        const uint64_t targets = attacks(from);
        caps.add_all(from, targets & them);
        quiet.add_all(from, targets & empty);
    }
}

template <int Us>
static void captures_quiets(const Position& p, Move* cap_list, uint32_t* ncaps, Move* quiet_list,
                            uint32_t* nquiets) {
    using S = Side<Us>;
    Out caps{cap_list}, quiet{quiet_list};
    const uint64_t them  = p.colour_bb[S::them];
    const uint64_t occ   = them | p.colour_bb[Us];
    const uint64_t empty = ~occ;
    const int k          = king_square(p, Us);
    const uint64_t pawns = pieces(p, Us, PAWN);

    castles<Us>(quiet, p, occ);
    const uint64_t king =
        king_attacks[k] & ~their_pawn_attacks<Us>(p) & ~king_attacks[king_square(p, S::them)];
    caps.add_all(k, king & them);
    quiet.add_all(k, king & empty);

    uint64_t targets = them;
    if (p.epsq != NO_SQUARE) targets |= bit(p.epsq);
    targets &= pawn_attack_set<Us>(pawns);
    pawn_captures<Us>(caps, pawns, targets & ~S::last_rank);
    pawn_promo_captures<Us>(caps, pawns, targets & S::last_rank, 1);
    const uint64_t single = pawn_push<Us>(pawns) & empty;
    pushes(quiet, single & ~S::last_rank, S::forward);
    pushes(quiet, double_pushes<Us>(single, empty), 2 * S::forward);

    split_moves(caps, quiet, pieces(p, Us, KNIGHT), them, empty, KnightAttacks{});
    split_moves(caps, quiet, pieces(p, Us, BISHOP), them, empty, BishopAttacks{occ});
    split_moves(caps, quiet, pieces(p, Us, ROOK), them, empty, RookAttacks{occ});
    split_moves(caps, quiet, pieces(p, Us, QUEEN), them, empty, QueenAttacks{occ});

    push_promotions<Us>(caps, single & S::last_rank, 1);
    *ncaps   = static_cast<uint32_t>(caps.m - cap_list);
    *nquiets = static_cast<uint32_t>(quiet.m - quiet_list);
}

void gen_captures(const Position& p, Move* first, uint32_t* count, int underpromotions) {
    Move* end = p.side == WHITE ? captures<WHITE>(p, first, underpromotions)
                                : captures<BLACK>(p, first, underpromotions);
    *count    = static_cast<uint32_t>(end - first);
}

void gen_quiets(const Position& p, Move* first, uint32_t* count) {
    Move* end = p.side == WHITE ? quiets<WHITE>(p, first) : quiets<BLACK>(p, first);
    *count    = static_cast<uint32_t>(end - first);
}

void gen_evasions(const Position& p, Move* first, uint32_t* count, int underpromotions) {
    Move* end = p.side == WHITE ? evasions<WHITE>(p, first, underpromotions)
                                : evasions<BLACK>(p, first, underpromotions);
    *count    = static_cast<uint32_t>(end - first);
}

void gen_checks(const Position& p, Move* first, uint32_t* count) {
    if (p.incheck) return;
    Move* end = p.side == WHITE ? checks<WHITE>(p, first) : checks<BLACK>(p, first);
    *count    = static_cast<uint32_t>(end - first);
}

void gen_captures_quiets(const Position& p, Move* caps, uint32_t* ncaps, Move* quiets, uint32_t* nquiets) {
    if (p.side == WHITE)
        captures_quiets<WHITE>(p, caps, ncaps, quiets, nquiets);
    else
        captures_quiets<BLACK>(p, caps, ncaps, quiets, nquiets);
}

uint32_t pseudo_legal_moves(const Position& p, Move* out) {
    uint32_t n = 0, quiets = 0;
    if (p.incheck) {
        gen_evasions(p, out, &n, 1);
    } else {
        gen_captures(p, out, &n, 1);
        gen_quiets(p, out + n, &quiets);
        n += quiets;
    }
    return n;
}

uint32_t legal_moves(const Position& p, Move* out) {
    Move list[MAX_MOVES];
    const uint32_t n = pseudo_legal_moves(p, list);
    uint32_t k       = 0;
    for (uint32_t i = 0; i < n && k < MAX_MOVES; ++i)
        if (legal(p, list[i])) out[k++] = list[i];
    return k;
}
