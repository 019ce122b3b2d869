#include "board/castling.h"

#include <initializer_list>

#include "board/attacks.h"

static constexpr int RIGHTS = 4;

static int back_rank_base(int colour) {
    return colour == WHITE ? A1 : A8;
}

Move* gen_castles960(const Position& p, Move* out) {
    const int us       = p.side;
    const int k        = king_square(p, us);
    const uint64_t occ = occupancy(p);
    for (const bool king_side : {true, false}) {
        const int i = castle_index(us, king_side);
        if (!(p.cflag & (1 << i))) continue;
        const int r = p.castle_rook[i];
        if (!(occ & castle_path(k, r, us, king_side))) *out++ = make_move_word(k, r);
    }
    return out;
}

bool castle960_possible(const Position& p, Move m) {
    const int us = p.side, k = move_from(m), r = move_to(m);
    if (!p.chess960 || move_promo(m) || k != king_square(p, us) || p.board[r] != piece_code(us, ROOK))
        return false;
    const bool king_side = r > k;
    const int i          = castle_index(us, king_side);
    return (p.cflag & (1 << i)) && p.castle_rook[i] == r &&
           !(occupancy(p) & castle_path(k, r, us, king_side));
}

bool castle960_legal(const Position& p, Move m) {
    if (p.incheck) return false;
    const int us = p.side, k = move_from(m), r = move_to(m);
    const uint64_t theirs = p.colour_bb[us ^ 1];
    const uint64_t occ    = occupancy(p) & ~(bit(k) | bit(r));
    for (uint64_t crossed = rank_span(k, castle_king_to(us, r > k)); crossed;)
        if (attacked_by(p, pop_lsb(crossed), us ^ 1, theirs, occ)) return false;
    return true;
}

uint8_t castle960_rights_after(const Position& p, int from, int to) {
    uint8_t left = p.cflag;
    for (int i = 0; i < RIGHTS; ++i)
        if (p.castle_rook[i] == from || p.castle_rook[i] == to) left &= static_cast<uint8_t>(~(1 << i));
    for (int c = WHITE; c <= BLACK; ++c)
        if (from == king_square(p, c)) left &= static_cast<uint8_t>(~(3 << (2 * c)));
    return left;
}

// The rook of colour c on its first rank furthest out on the wing (a file towards a for the queen
// side, h for the king side) beyond its king, or NO_SQUARE.
static int outermost_rook(const Position& p, int c, bool king_side) {
    const int k = king_square(p, c), base = back_rank_base(c);
    if (k < base || k > base + 7) return NO_SQUARE;
    const int step = king_side ? -1 : 1;
    for (int sq = king_side ? base + 7 : base; sq != k; sq += step)
        if (p.board[sq] == piece_code(c, ROOK)) return sq;
    return NO_SQUARE;
}

const char* read_castling(Position& p, const char* s, bool chess960_game) {
    p.cflag = 0;
    for (int i = 0; i < RIGHTS; ++i)
        p.castle_rook[i] = standard_castle_rook[i];
    for (; *s && *s != ' '; ++s) {
        const char c = *s;
        if (c == '-') {
            ++s;
            break;
        }
        int colour = -1, rook = NO_SQUARE;
        if (c == 'K' || c == 'Q' || c == 'k' || c == 'q') {
            // Outside a Chess960 game the letters keep their standard meaning: the king at home
            // and the rook in the corner, as a GUI playing standard chess means them.
            colour               = c == 'K' || c == 'Q' ? WHITE : BLACK;
            const bool king_side = c == 'K' || c == 'k';
            if (chess960_game)
                rook = outermost_rook(p, colour, king_side);
            else if (king_square(p, colour) == (colour == WHITE ? E1 : E8))
                rook = standard_castle_rook[castle_index(colour, king_side)];
        } else if (c >= 'A' && c <= 'H') {
            colour = WHITE;
            rook   = c - 'A';
        } else if (c >= 'a' && c <= 'h') {
            colour = BLACK;
            rook   = A8 + c - 'a';
        }
        if (rook == NO_SQUARE) continue;
        const int i      = castle_index(colour, rook > king_square(p, colour));
        p.cflag          = static_cast<uint8_t>(p.cflag | (1 << i));
        p.castle_rook[i] = static_cast<uint8_t>(rook);
    }
    p.cflag = supported_castling(p);
    for (int i = 0; i < RIGHTS; ++i)
        if (!(p.cflag & (1 << i))) p.castle_rook[i] = standard_castle_rook[i];
    set_castling_form(p, chess960_game);
    return s;
}

void set_castling_form(Position& p, bool chess960_game) {
    p.chess960 = chess960_game;
    for (int i = 0; i < RIGHTS; ++i) {
        const int home = i < 2 ? E1 : E8;
        if ((p.cflag & (1 << i)) &&
            (p.castle_rook[i] != standard_castle_rook[i] || king_square(p, i / 2) != home))
            p.chess960 = 1;
    }
}

uint8_t supported_castling(const Position& p) {
    uint8_t kept = 0;
    for (int i = 0; i < RIGHTS; ++i) {
        const int c = i / 2, k = king_square(p, c), r = p.castle_rook[i], base = back_rank_base(c);
        if (!(p.cflag & (1 << i)) || k < base || k > base + 7 || p.board[k] != piece_code(c, KING)) continue;
        if (r < base || r > base + 7 || p.board[r] != piece_code(c, ROOK) || (r > k) != (i % 2 == 1))
            continue;
        kept = static_cast<uint8_t>(kept | (1 << i));
    }
    return kept;
}

char* write_castling(const Position& p, char* out) {
    if (!p.cflag) {
        *out++ = '-';
        return out;
    }
    // Rights in the order K, Q, k, q.
    static constexpr int order[RIGHTS] = {1, 0, 3, 2};
    for (const int i : order) {
        if (!(p.cflag & (1 << i))) continue;
        const int c = i / 2, r = p.castle_rook[i];
        const bool king_side = i % 2 == 1;
        if (r == outermost_rook(p, c, king_side))
            *out++ = "QKqk"[i];
        else
            *out++ = static_cast<char>((c == WHITE ? 'A' : 'a') + file_of(r));
    }
    return out;
}
