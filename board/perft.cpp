#include "board/perft.h"

#include "board/castling.h"
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
            if (p.colour_bb[p.side] & bit(to)) {
                if (!castle960_legal(p, m)) return 0;
                ++perft_totals.castles;
                return 1;
            }
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

// The squares a piece pinned on sq may move to: its pin line up to the pinner, without the king.
// Two squares on one line have no other square of their rays of that kind in common.
static uint64_t pin_line(int k, int sq) {
    return (rook_empty[k] & bit(sq)) ? rook_empty[k] & rook_empty[sq] : bishop_empty[k] & bishop_empty[sq];
}

// The knights, bishops, rooks and queens of the side to move at the last ply, with each one's
// attack set and move counts as they stand before the move that leads there. The level above the
// last fills it once for all its moves: a move changes the count of only those pieces whose sets
// hold one of the squares it empties or fills (or whose colour it changes), and of pinned pieces.
// Perft runs only on playable positions, where a side has at most 15 such pieces.
namespace {
struct PieceSets {
    struct Piece {
        uint64_t attacks;
        int32_t moves, captures;
        uint8_t sq, type;
    };
    int count        = 0;
    int64_t moves    = 0;
    int64_t captures = 0;
    Piece piece[16];
};
} // namespace

static uint64_t piece_attacks(int type, int sq, uint64_t occ) {
    switch (type) {
    case KNIGHT:
        return knight_attacks[sq];
    case BISHOP:
        return bishop_attacks(sq, occ);
    case ROOK:
        return rook_attacks(sq, occ);
    default:
        return queen_attacks(sq, occ);
    }
}

// The pieces of colour c in p, counted as if none were pinned.
static void collect_piece_sets(const Position& p, int c, PieceSets& s) {
    const uint64_t own = p.colour_bb[c], them = p.colour_bb[c ^ 1], occ = own | them;
    s = PieceSets{};
    for (uint64_t b = own & (p.type_bb[KNIGHT] | p.type_bb[BISHOP] | p.type_bb[ROOK] | p.type_bb[QUEEN]);
         b;) {
        const int sq           = pop_lsb(b);
        const int type         = piece_type(p.board[sq]);
        const uint64_t attacks = piece_attacks(type, sq, occ);
        PieceSets::Piece& e    = s.piece[s.count++];
        e = {attacks, popcount(attacks & ~own), popcount(attacks & them), static_cast<uint8_t>(sq),
             static_cast<uint8_t>(type)};
        s.moves += e.moves;
        s.captures += e.captures;
    }
}

// The last ply of a position not in check is counted from attack sets alone, with no move list:
// the pieces from their sets (changed: the squares whose occupant differs from when they were
// collected), a pinned piece within its pin line, the king's steps and castling against the
// squares the other side attacks; only the one or two en-passant captures get the full test.
template <int Us> static void count_leaves_bulk(const Position& p, const PieceSets& s, uint64_t changed) {
    constexpr int PROMOTION_PIECES = 4;
    constexpr uint64_t LAST_RANK   = relative_rank_mask(Us, 7);
    const uint64_t own = p.colour_bb[Us], them = p.colour_bb[Us ^ 1];
    const uint64_t occ = own | them, empty = ~occ, to_ok = ~own;
    const uint64_t pinned = p.pinned;
    const int k           = king_square(p, Us);
    int64_t moves = 0, captures = 0, promotes = 0, castles = 0, en_passant = 0;

    const auto add = [&](uint64_t targets) {
        moves += popcount(targets);
        captures += popcount(targets & them);
    };
    moves += s.moves;
    captures += s.captures;
    uint64_t redo = 0;
    for (int i = 0; i < s.count; ++i) {
        const PieceSets::Piece& e = s.piece[i];
        redo |= static_cast<uint64_t>(((e.attacks & changed) | (bit(e.sq) & (changed | pinned))) != 0) << i;
    }
    while (redo) {
        const PieceSets::Piece& e = s.piece[pop_lsb(redo)];
        moves -= e.moves;
        captures -= e.captures;
        if (!(own & bit(e.sq))) continue; // taken by the move that led here
        // A pinned piece moves only along its pin line (a knight never can).
        const uint64_t line = (pinned & bit(e.sq)) ? pin_line(k, e.sq) : ~0ULL;
        add(piece_attacks(e.type, e.sq, occ) & to_ok & line);
    }

    // Pawn destinations, each set reached by distinct pawns; a promotion counts once for each of
    // the four pieces.
    const auto add_pawns = [&](uint64_t pushes, uint64_t takes) __attribute__((always_inline)) {
        moves += popcount(pushes) + popcount(takes);
        captures += popcount(takes);
        if ((pushes | takes) & LAST_RANK) {
            const int promoting = popcount(pushes & LAST_RANK) + popcount(takes & LAST_RANK);
            moves += (PROMOTION_PIECES - 1) * promoting;
            captures += (PROMOTION_PIECES - 1) * popcount(takes & LAST_RANK);
            promotes += PROMOTION_PIECES * promoting;
        }
    };
    const uint64_t pawns      = pieces(p, Us, PAWN);
    const uint64_t free_pawns = pawns & ~pinned;
    const uint64_t step       = pawn_push<Us>(free_pawns) & empty;
    add_pawns(step | double_pushes<Us>(step, empty), pawn_attacks_west<Us>(free_pawns) & them);
    add_pawns(0, pawn_attacks_east<Us>(free_pawns) & them);
    for (uint64_t b = pawns & pinned; b;) {
        const int sq        = pop_lsb(b);
        const uint64_t line = pin_line(k, sq);
        const uint64_t one  = pawn_push<Us>(bit(sq)) & empty;
        add_pawns((one | double_pushes<Us>(one, empty)) & line, pawn_attacks[Us][sq] & them & line);
    }
    if (p.epsq != NO_SQUARE)
        for (uint64_t b = pawns & pawn_attacks[Us ^ 1][p.epsq]; b;)
            en_passant += legal_slow(p, make_move_word(pop_lsb(b), p.epsq));
    moves += en_passant;

    // The king's steps and castling, tested against the squares the other side attacks: a few
    // squares are cheaper asked one by one than a map of every attack of theirs.
    constexpr int ASK_ONE_BY_ONE = 3;
    const uint64_t steps         = king_attacks[k] & to_ok;
    constexpr int HOME           = Us == WHITE ? E1 : E8;
    constexpr int SHORT = castle_right(Us, true), LONG = castle_right(Us, false);
    constexpr int F = HOME + 1, G = HOME + 2, D = HOME - 1, C = HOME - 2, B = HOME - 3;
    const bool short_ok = (p.cflag & SHORT) && !(occ & (bit(F) | bit(G)));
    const bool long_ok  = (p.cflag & LONG) && !(occ & (bit(B) | bit(C) | bit(D)));
    if (popcount(steps) + 2 * (short_ok + long_ok) > ASK_ONE_BY_ONE) {
        const uint64_t danger = king_danger(p);
        add(steps & ~danger);
        castles += short_ok && !(danger & (bit(F) | bit(G)));
        castles += long_ok && !(danger & (bit(D) | bit(C)));
    } else {
        const uint64_t occ_past_king = occ ^ bit(k);
        const auto safe = [&](int sq) { return !attacked_by(p, sq, Us ^ 1, them, occ_past_king); };
        for (uint64_t b = steps; b;) {
            const int sq = pop_lsb(b);
            if (safe(sq)) add(bit(sq));
        }
        castles += short_ok && safe(F) && safe(G);
        castles += long_ok && safe(D) && safe(C);
    }
    moves += castles;

    PerftTotals& tot = perft_totals;
    tot.moves += moves;
    tot.captures += captures;
    tot.en_passant += en_passant;
    tot.promotes += promotes;
    tot.castles += castles;
    if (moves == 0) ++tot.checkmates;
}

// The last ply from the current position: from attack sets where they answer every question,
// otherwise from the move list. Castling rights are taken at their word only with the king on its
// home square and the rooks in the corners.
static void count_last_ply(const Position& p, const PieceSets& s, uint64_t changed) {
    if (!p.incheck && (!p.chess960 || !p.cflag) && (!(p.cflag & CASTLE_WHITE) || p.wking == E1) &&
        (!(p.cflag & CASTLE_BLACK) || p.bking == E8)) {
        if (p.side == WHITE)
            count_leaves_bulk<WHITE>(p, s, changed);
        else
            count_leaves_bulk<BLACK>(p, s, changed);
        return;
    }
    MoveList caps, quiets;
    gen_captures_quiets(p, caps.moves, &caps.count, quiets.moves, &quiets.count);
    count_leaves(p, caps, quiets);
}

// Each level holds its captures (all promotions) and its quiet moves, made in that order. The
// level above the last counts each child's moves in place rather than through another call.
static void perft_from(PositionStack& t, int depth) {
    const Position& p = *t.pos;
    MoveList caps, quiets;
    gen_captures_quiets(p, caps.moves, &caps.count, quiets.moves, &quiets.count);
    PieceSets theirs;
    if (depth == 2) collect_piece_sets(p, p.side ^ 1, theirs);
    for (const MoveList* list : {&caps, &quiets}) {
        for (uint32_t i = 0; i < list->count; ++i) {
            if (!legal(p, list->moves[i])) continue;
            const Position& child = *make_move(t, list->moves[i]);
            if (depth == 2)
                count_last_ply(child, theirs,
                               (occupancy(p) ^ occupancy(child)) |
                                   (p.colour_bb[WHITE] ^ child.colour_bb[WHITE]));
            else
                perft_from(t, depth - 1);
            unmake_move(t);
        }
    }
}

void perft(PositionStack& t, int depth) {
    const uint64_t before = t.nodes;
    if (depth <= 1) {
        PieceSets own;
        collect_piece_sets(*t.pos, t.pos->side, own);
        count_last_ply(*t.pos, own, 0);
    } else
        perft_from(t, depth);
    add_nodes_searched(t.nodes - before);
}
