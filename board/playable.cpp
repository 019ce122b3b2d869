#include "board/playable.h"

#include "board/attacks.h"
#include "board/castling.h"

static constexpr int PAWNS_PER_SIDE = 8;

// The square a pawn of the side not to move has just passed over with a double push: on the
// third rank of that side, empty, the pawn one step beyond it and its starting square empty.
static bool usable_ep_square(const Position& p) {
    const int e = p.epsq;
    if (e == NO_SQUARE) return true;
    const int pusher  = p.side ^ 1;
    const int passed  = pusher == WHITE ? 2 : 5; // rank index of the square passed over
    const int forward = pusher == WHITE ? 8 : -8;
    if (e > 63 || rank_of(e) != passed || p.board[e] != EMPTY) return false;
    return p.board[e + forward] == piece_code(pusher, PAWN) && p.board[e - forward] == EMPTY;
}

void drop_unusable_rights(Position& p) {
    p.cflag = supported_castling(p);
    if (!usable_ep_square(p)) p.epsq = NO_SQUARE;
}

static bool one_king_each(const Position& p) {
    int kings[2] = {0, 0};
    for (int sq = 0; sq < 64; ++sq)
        if (p.board[sq] != EMPTY && piece_type(p.board[sq]) == KING) ++kings[piece_colour(p.board[sq])];
    return kings[WHITE] == 1 && kings[BLACK] == 1 && p.wking < 64 && p.bking < 64 &&
           p.board[p.wking] == piece_code(WHITE, KING) && p.board[p.bking] == piece_code(BLACK, KING);
}

// Promotions are the only source of extra pieces, and each one costs a pawn.
static bool material_reachable(const Position& p, int colour) {
    auto count = [&](int type) { return popcount(pieces(p, colour, type)); };
    auto extra = [&](int type, int initial) { return count(type) > initial ? count(type) - initial : 0; };
    const int pawns    = count(PAWN);
    const int promoted = extra(KNIGHT, 2) + extra(BISHOP, 2) + extra(ROOK, 2) + extra(QUEEN, 1);
    return pawns <= PAWNS_PER_SIDE && promoted <= PAWNS_PER_SIDE - pawns;
}

// Whether the king of the side not to move stands attacked: the side to move could take it.
static bool king_capturable(const Position& p) {
    const int us = p.side, them = us ^ 1;
    return attacked_by(p, king_square(p, them), us, p.colour_bb[us], occupancy(p));
}

bool position_playable(const Position& p) {
    if (!one_king_each(p)) return false;
    if (p.type_bb[PAWN] & (RANK_1 | RANK_8)) return false;
    if (!material_reachable(p, WHITE) || !material_reachable(p, BLACK)) return false;
    if (supported_castling(p) != p.cflag || !usable_ep_square(p)) return false;
    return !king_capturable(p);
}
