#include "board/makemove.h"

#include <algorithm>
#include <cassert>

#include "board/attacks.h"
#include "board/castling.h"
#include "board/keys.h"
#include "board/material.h"

std::atomic<uint64_t> nodes_searched{0};

static uint64_t diagonal_sliders(const Position& p, int colour) {
    return p.colour_bb[colour] & (p.type_bb[BISHOP] | p.type_bb[QUEEN]);
}
static uint64_t straight_sliders(const Position& p, int colour) {
    return p.colour_bb[colour] & (p.type_bb[ROOK] | p.type_bb[QUEEN]);
}

// Chess960-form castling: the king and its rook leave their squares and take g/c and f/d. As in
// standard castling the bonus stands in for the rook's own square values.
static Position* make_castle960(PositionStack& t, Move m) {
    set_thread_nodes(t, t.nodes + 1);
    const Position* old = t.pos;
    Position* p         = t.pos + 1;
    *p                  = *old;
    t.pos               = p;
    p->lastmove         = m;
    const int side = old->side, k = move_from(m), r = move_to(m);
    const bool king_side = r > k;
    const int kto = castle_king_to(side, king_side), rto = castle_rook_to(side, king_side);
    const int king = piece_code(side, KING), rook = piece_code(side, ROOK);

    const uint64_t king_keys = piece_key(king, k) ^ piece_key(king, kto);

    uint64_t key = t.key ^ turn_key ^ king_keys ^ piece_key(rook, r) ^ piece_key(rook, rto);
    p->pawnkey ^= king_keys;
    if (old->epsq != NO_SQUARE) {
        key ^= ep_key(old->epsq);
        p->epsq = NO_SQUARE;
    }
    p->board[k]        = EMPTY;
    p->board[r]        = EMPTY;
    p->board[kto]      = static_cast<uint8_t>(king);
    p->board[rto]      = static_cast<uint8_t>(rook);
    p->colour_bb[side] = (old->colour_bb[side] & ~(bit(k) | bit(r))) | bit(kto) | bit(rto);
    p->type_bb[ROOK]   = (old->type_bb[ROOK] & ~bit(r)) | bit(rto);
    p->rule50          = static_cast<uint8_t>(old->rule50 + 1);
    p->cflag           = static_cast<uint8_t>(old->cflag & king_castle_mask[side]);

    (side == WHITE ? p->wking : p->bking) = static_cast<uint8_t>(kto);
    key ^= castle_keys[p->cflag ^ old->cflag];

    const int dm = pst_mg[king][kto] - pst_mg[king][k] + CASTLE_BONUS;
    const int de = pst_eg[king][kto] - pst_eg[king][k];
    p->mg        = static_cast<int16_t>(side == WHITE ? p->mg + dm : p->mg - dm);
    p->eg        = static_cast<int16_t>(side == WHITE ? p->eg + de : p->eg - de);

    t.key = key;
    ++t.histidx;
    t.keyhist[t.histidx] = key;
    p->side              = static_cast<uint8_t>(side ^ 1);
    set_pins(*p);
    return p;
}

// Made once for standard positions and once for those that write castling in the Chess960 form,
// so that standard chess pays one test per move for the other.
template <bool Chess960> static Position* make_move_in(PositionStack& t, Move m) {
    // Only Chess960 castling moves onto a man of the mover's own colour.
    if (Chess960 && (t.pos->colour_bb[t.pos->side] & bit(move_to(m)))) return make_castle960(t, m);
    set_thread_nodes(t, t.nodes + 1);

    // Everything is read from the old slot so that no read waits on the block copy.
    const Position* old = t.pos;
    Position* p         = t.pos + 1;
    const int from = move_from(m), to = move_to(m);
    const int side = old->side, them = side ^ 1;
    const int mover = old->board[from], captured = old->board[to];
    *p                     = *old;
    t.pos                  = p;
    p->lastmove            = m;
    const int type         = piece_type(mover);
    const uint64_t from_to = bit(from) | bit(to);

    uint64_t key = t.key ^ turn_key;
    int dm       = pst_mg[mover][to] - pst_mg[mover][from];
    int de       = pst_eg[mover][to] - pst_eg[mover][from];
    p->rule50    = static_cast<uint8_t>(old->rule50 + 1);

    const uint64_t mover_keys = piece_key(mover, from) ^ piece_key(mover, to);
    key ^= mover_keys;
    if (type == PAWN || type == KING) p->pawnkey = old->pawnkey ^ mover_keys;

    if (old->epsq != NO_SQUARE) {
        key ^= ep_key(old->epsq);
        p->epsq = NO_SQUARE;
    }

    p->board[from]     = EMPTY;
    p->board[to]       = static_cast<uint8_t>(mover);
    p->cflag           = static_cast<uint8_t>(old->cflag & castle_mask[from]);
    p->colour_bb[side] = old->colour_bb[side] ^ from_to;

    if (captured != EMPTY) {
        const int ctype     = piece_type(captured);
        const uint64_t ckey = piece_key(captured, to);
        p->rule50           = 0;
        p->colour_bb[them] ^= bit(to);
        p->type_bb[ctype] ^= bit(to);
        dm += pst_mg[captured][to];
        de += pst_eg[captured][to];
        // Saturates: a board with more than the initial set (odd set-ups) must not wrap back to the opening.
        p->phase = static_cast<uint8_t>(std::min(p->phase + phase_weight[ctype], 255));
        key ^= ckey;
        if (ctype == PAWN) p->pawnkey ^= ckey;
        p->cflag &= castle_mask[to];
    }

    if (type == KING) {
        (side == WHITE ? p->wking : p->bking) = static_cast<uint8_t>(to);
        p->cflag &= king_castle_mask[side];
        if (to - from == 2 || from - to == 2) {
            const int corner = side == WHITE ? (to < from ? A1 : H1) : (to < from ? A8 : H8);
            const int r      = (from + to) / 2;
            const int rook   = piece_code(side, ROOK);
            if (p->board[corner] != EMPTY) {
                const int pc = p->board[corner];
                key ^= piece_key(pc, corner);
                p->board[corner] = EMPTY;
                p->colour_bb[piece_colour(pc)] &= ~bit(corner);
                p->type_bb[piece_type(pc)] &= ~bit(corner);
            }
            if (p->board[r] != EMPTY) {
                key ^= piece_key(p->board[r], r);
                p->type_bb[piece_type(p->board[r])] &= ~bit(r);
            }
            p->board[r] = static_cast<uint8_t>(rook);
            key ^= piece_key(rook, r);
            p->colour_bb[side] |= bit(r);
            p->colour_bb[them] &= ~bit(r);
            p->type_bb[ROOK] |= bit(r);
            // The castling bonus stands in for the rook's own square values.
            dm += CASTLE_BONUS;
        }
    } else {
        p->type_bb[type] ^= from_to;
        if (type == PAWN) {
            p->rule50       = 0;
            const int promo = move_promo(m);
            if (promo) {
                const int q            = piece_code(side, promo);
                const uint64_t pawn_to = piece_key(mover, to);
                key ^= pawn_to ^ piece_key(q, to);
                p->pawnkey ^= pawn_to;
                p->board[to] = static_cast<uint8_t>(q);
                p->type_bb[promo] |= bit(to);
                p->type_bb[PAWN] &= ~bit(to);
                dm += pst_mg[q][to] - pst_mg[mover][to];
                de += pst_eg[q][to] - pst_eg[mover][to];
            } else if (to - from == 16 || from - to == 16) {
                // The square passed over is kept only when one of their pawns could take on it.
                const int s = to ^ 8;
                if (pieces(*p, them, PAWN) & pawn_attacks[side][s]) {
                    p->epsq = static_cast<uint8_t>(s);
                    key ^= ep_key(s);
                }
            } else if (captured == EMPTY && to - from != 8 && from - to != 8) {
                const int s         = to ^ 8;
                const int pawn      = piece_code(them, PAWN);
                const uint64_t pkey = piece_key(pawn, s);
                dm += pst_mg[pawn][s];
                de += pst_eg[pawn][s];
                key ^= pkey;
                p->pawnkey ^= pkey;
                p->board[s] = EMPTY;
                p->colour_bb[them] &= ~bit(s);
                p->type_bb[PAWN] &= ~bit(s);
            }
        }
    }

    if (side == WHITE) {
        p->mg = static_cast<int16_t>(p->mg + dm);
        p->eg = static_cast<int16_t>(p->eg + de);
    } else {
        p->mg = static_cast<int16_t>(p->mg - dm);
        p->eg = static_cast<int16_t>(p->eg - de);
    }

    // The corner table knows only the standard rooks' squares.
    if (Chess960 && old->cflag) p->cflag = castle960_rights_after(*old, from, to);
    // The castling keys combine by exclusive or, so the rights lost cost one lookup.
    if (p->cflag != old->cflag) key ^= castle_keys[p->cflag ^ old->cflag];
    t.key = key;
    ++t.histidx;
    t.keyhist[t.histidx] = key;

    p->side = static_cast<uint8_t>(them);
    set_pins(*p);
    return p;
}

bool position_ok(const PositionStack& t) {
    const Position& p  = *t.pos;
    const uint64_t occ = occupancy(p);
    if (p.colour_bb[WHITE] & p.colour_bb[BLACK]) return false;
    if (p.board[p.wking] != piece_code(WHITE, KING) || p.board[p.bking] != piece_code(BLACK, KING))
        return false;
    for (int sq = 0; sq < 64; ++sq) {
        const int code = p.board[sq];
        if (code == EMPTY) {
            if (occ & bit(sq)) return false;
            continue;
        }
        const int type = piece_type(code);
        if (!(p.colour_bb[piece_colour(code)] & bit(sq))) return false;
        if (type == KING ? sq != (piece_colour(code) == WHITE ? p.wking : p.bking)
                         : !(p.type_bb[type] & bit(sq)))
            return false;
    }
    Position copy = p;
    return t.key == full_key(copy) && t.keyhist[t.histidx] == t.key;
}

Position* make_move(PositionStack& t, Move m) {
    // The move word names a man of the side to move.
    assert((m & SQUARE_BITS) != 0 && t.pos->board[move_from(m)] != EMPTY &&
           piece_colour(t.pos->board[move_from(m)]) == t.pos->side);
    Position* const p = t.pos->chess960 ? make_move_in<true>(t, m) : make_move_in<false>(t, m);
    assert(position_ok(t));
    return p;
}

void commit_move(PositionStack& game, Move m) {
    make_move(game, m);
    add_nodes_searched(1);
    *(game.pos - 1) = *game.pos;
    --game.pos;
}

void set_pins(Position& p) {
    const int us = p.side, them = us ^ 1;
    const int k             = king_square(p, us);
    const uint64_t ours     = p.colour_bb[us];
    const uint64_t theirs   = p.colour_bb[them];
    const uint64_t occ      = ours | theirs;
    const uint64_t diagonal = diagonal_sliders(p, them);
    const uint64_t straight = straight_sliders(p, them);

    // A slider on one of the king's empty-board lines checks when nothing stands between them,
    // and pins the one piece of ours between them when there is exactly one.
    bool check =
        (theirs & p.type_bb[PAWN] & pawn_attacks[us][k]) || (theirs & p.type_bb[KNIGHT] & knight_attacks[k]);
    uint64_t pinned = 0;
    for (uint64_t snipers = (diagonal & bishop_empty[k]) | (straight & rook_empty[k]); snipers;) {
        const uint64_t inside = between[k][pop_lsb(snipers)] & occ;
        if (!inside)
            check = true;
        else if (!(inside & (inside - 1)))
            pinned |= inside;
    }
    p.pinned  = pinned & ours;
    p.incheck = check;
}

bool legal_slow(const Position& p, Move m) {
    const int from = move_from(m), to = move_to(m);
    const int type      = piece_type(p.board[from]);
    const int us        = p.side;
    const int k         = king_square(p, us);
    const uint64_t ours = p.colour_bb[us];
    uint64_t theirs     = p.colour_bb[us ^ 1];

    if (type != KING) {
        const bool en_passant = type == PAWN && to == p.epsq;
        if (!p.incheck && !en_passant) {
            if (!(p.pinned & bit(from))) return true;
            return along_pin(k, from, to);
        }
        if (p.board[to] != EMPTY)
            theirs &= ~bit(to);
        else if (en_passant)
            theirs &= ~bit(to ^ 8);
        return !attacked_by(p, k, us ^ 1, theirs, (ours & ~bit(from)) | bit(to) | theirs);
    }

    if (ours & bit(to)) return castle960_legal(p, m);
    if (to - from == 2 || from - to == 2) {
        if (p.incheck) return false;
        if (attacked_by(p, (from + to) / 2, us ^ 1, theirs, ours | theirs)) return false;
    }
    // The rook of a castling move still counts on its corner here.
    theirs &= ~bit(to);
    return !attacked_by(p, to, us ^ 1, theirs, (ours & ~bit(from)) | bit(to) | theirs);
}

uint64_t king_danger(const Position& p) {
    const int us = p.side, them = us ^ 1;
    const uint64_t theirs = p.colour_bb[them];
    const uint64_t occ    = (p.colour_bb[us] | theirs) & ~bit(king_square(p, us));
    const uint64_t pawns  = theirs & p.type_bb[PAWN];
    uint64_t danger       = pawn_attack_set(them, pawns) | king_attacks[king_square(p, them)];
    for (uint64_t b = theirs & p.type_bb[KNIGHT]; b;)
        danger |= knight_attacks[pop_lsb(b)];
    for (uint64_t b = diagonal_sliders(p, them); b;)
        danger |= bishop_attacks(pop_lsb(b), occ);
    for (uint64_t b = straight_sliders(p, them); b;)
        danger |= rook_attacks(pop_lsb(b), occ);
    return danger;
}

// Standard castling, the king's two-file move from its home square: the right held and the squares
// between king and rook empty. Whether the king passes an attacked square is legal()'s question;
// Chess960-form castling is castle960_possible's.
static bool castling_possible(const Position& p, int from, int to) {
    const int us = p.side, home = us == WHITE ? E1 : E8;
    if (from != home || p.chess960) return false;
    const uint64_t occ = occupancy(p);
    if (to == home + 2) return (p.cflag & castle_right(us, true)) && !(occ & (bit(home + 1) | bit(home + 2)));
    if (to == home - 2)
        return (p.cflag & castle_right(us, false)) &&
               !(occ & (bit(home - 1) | bit(home - 2) | bit(home - 3)));
    return false;
}

bool quiet_pseudo_legal(const Position& p, Move m) {
    const int from = move_from(m), to = move_to(m);
    const int d  = to - from;
    const int us = p.side;
    if (p.board[to] != EMPTY || p.board[from] == EMPTY || piece_colour(p.board[from]) != us) return false;
    const uint64_t occ = occupancy(p);
    const int type     = piece_type(p.board[from]);

    switch (type) {
    case KING:
        if (d != 2 && d != -2) return king_attacks[from] & bit(to);
        return castling_possible(p, from, to);
    case KNIGHT:
        return knight_attacks[from] & bit(to);
    case BISHOP:
    case ROOK:
    case QUEEN:
        return (pseudo_attacks[type][from] & bit(to)) && !(between[from][to] & occ);
    default:
        break;
    }

    // Pawns: pushes only, never onto the first or last rank.
    if ((us == WHITE ? d < 0 : d > 0) || rank_of(to) == 0 || rank_of(to) == 7) return false;
    if (d == 8 || d == -8) return true;
    if (d == -16) return rank_of(from) == 6 && p.board[from - 8] == EMPTY;
    if (d == 16) return rank_of(from) == 1 && p.board[from + 8] == EMPTY;
    return false;
}

bool stored_move_pseudo_legal(const Position& p, Move m) {
    const int from = move_from(m), to = move_to(m);
    const int promo = move_promo(m);
    const int us = p.side, them = us ^ 1;
    const int mover = p.board[from], target = p.board[to];
    if (mover == EMPTY || piece_colour(mover) != us) return false;
    if (target != EMPTY && piece_colour(target) == us) return castle960_possible(p, m);
    if (target != EMPTY && (piece_colour(target) == us || piece_type(target) == KING)) return false;
    const int type = piece_type(mover);
    if (promo && type != PAWN) return false;
    const uint64_t occ    = occupancy(p);
    const uint64_t to_bit = bit(to);

    switch (type) {
    case KING: {
        if (king_attacks[from] & to_bit) {
            // The generators never send the king next to theirs or onto a pawn-attacked square.
            return !(king_attacks[king_square(p, them)] & to_bit) &&
                   !(pawn_attacks[us][to] & pieces(p, them, PAWN));
        }
        return target == EMPTY && castling_possible(p, from, to);
    }
    case KNIGHT:
        return knight_attacks[from] & to_bit;
    case BISHOP:
    case ROOK:
    case QUEEN:
        return (pseudo_attacks[type][from] & to_bit) && !(between[from][to] & occ);
    case PAWN:
        break;
    default:
        return false;
    }

    const int forward = us == WHITE ? 8 : -8;
    const int last    = us == WHITE ? 7 : 0;
    if (rank_of(to) == last ? (promo < KNIGHT || promo > QUEEN) : promo != 0) return false;
    if (pawn_attacks[us][from] & to_bit) return target != EMPTY || to == p.epsq;
    if (target != EMPTY) return false;
    if (to == from + forward) return true;
    return to == from + 2 * forward && rank_of(from) == (us == WHITE ? 1 : 6) &&
           p.board[from + forward] == EMPTY;
}
