#include "board/perft.h"

#include "board/makemove.h"
#include "board/movegen.h"

PerftTotals perft_totals;

// The last ply classifies each legal move without making it. Only capture-list entries can be
// captures, en passant or promotions. Quiet entries need a legality test only when the king or a
// pinned piece moves, or when the side to move is in check; king steps are all answered from one
// map of the squares the other side attacks (equivalent to legal() for them, and cheaper once the
// king has more than one step to test).
namespace {
struct Leaves {
    const Position& p;
    const int k;
    uint64_t danger  = 0;
    bool have_danger = false;

    bool king_step_ok(int to) {
        if (!have_danger) {
            danger      = king_danger(p);
            have_danger = true;
        }
        return !(danger & bit(to));
    }
    // A move that needs more than the fast test: 1 when legal (castles counted), else 0. Out of
    // check a castling move needs both squares it crosses free of attack (an attack through the
    // king's own square would be a check), and a pinned piece must keep to its pin line.
    int careful(Move m) {
        const int from = move_from(m), to = move_to(m);
        if (from == k && piece_type(p.board[from]) == KING) {
            if (to - from != 2 && from - to != 2) return king_step_ok(to);
            if (p.incheck || !king_step_ok((from + to) / 2) || !king_step_ok(to)) return 0;
            ++perft_totals.castles;
            return 1;
        }
        if (p.incheck || (to == p.epsq && piece_type(p.board[from]) == PAWN)) return legal_slow(p, m);
        return !(p.pinned & bit(from)) || along_pin(k, from, to);
    }
};
} // namespace

static void count_leaves(const Position& p, const MoveList& caps, const MoveList& quiets) {
    PerftTotals& tot = perft_totals;
    const int k      = king_square(p, p.side);
    Leaves leaves{p, k};
    int64_t legal_moves = 0;
    for (uint32_t i = 0; i < caps.count; ++i) {
        const Move m = caps.moves[i];
        if (move_from(m) == k ? !leaves.careful(m) : !legal(p, m)) continue;
        ++legal_moves;
        const int to = move_to(m);
        if (p.board[to] != EMPTY)
            ++tot.captures;
        else if (to == p.epsq && piece_type(p.board[move_from(m)]) == PAWN)
            ++tot.en_passant;
        if (move_promo(m)) ++tot.promotes;
    }
    uint32_t i = 0;
    if (!p.incheck && !p.pinned) {
        // Castling and king moves lead the quiet list; every entry after them is legal.
        for (; i < quiets.count; ++i) {
            const Move m   = quiets.moves[i];
            const int from = move_from(m);
            if (from != k && from != E1 && from != E8) break;
            legal_moves += leaves.careful(m);
        }
        legal_moves += quiets.count - i;
    } else {
        const uint64_t careful = p.incheck ? ~0ULL : p.pinned | bit(k);
        for (; i < quiets.count; ++i) {
            const Move m = quiets.moves[i];
            legal_moves += (careful & bit(move_from(m))) ? leaves.careful(m) : 1;
        }
    }
    tot.moves += legal_moves;
    if (legal_moves == 0) ++tot.checkmates;
}

// Each level holds its captures (all promotions) and its quiet moves, made in that order.
static void perft_from(PositionStack& t, int depth) {
    MoveList caps, quiets;
    gen_captures_quiets(*t.pos, caps.moves, &caps.count, quiets.moves, &quiets.count);

    if (depth <= 1) {
        count_leaves(*t.pos, caps, quiets);
        return;
    }
    for (const MoveList* list : {&caps, &quiets}) {
        for (uint32_t i = 0; i < list->count; ++i) {
            if (!legal(*t.pos, list->moves[i])) continue;
            make_move(t, list->moves[i]);
            perft_from(t, depth - 1);
            unmake_move(t);
        }
    }
}

void perft(PositionStack& t, int depth) {
    const uint64_t before = t.nodes;
    perft_from(t, depth);
    add_nodes_searched(t.nodes - before);
}
