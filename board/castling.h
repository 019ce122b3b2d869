#pragma once
// Castling with the king and rooks on any start files (Chess960): each right remembers its rook's
// start square in Position::castle_rook; the king always ends on g/c and the rook on f/d. Standard
// positions write castling as the king's two-file move (e1g1); positions with `chess960` set write
// it as the king taking its own rook (e1h1), the one form that no other move can share.

#include <cstdint>

#include "board/types.h"

inline constexpr uint8_t standard_castle_rook[4] = {A1, H1, A8, H8};

constexpr int castle_king_to(int colour, bool king_side) {
    return (king_side ? G1 : C1) + 56 * colour;
}
constexpr int castle_rook_to(int colour, bool king_side) {
    return (king_side ? F1 : D1) + 56 * colour;
}
// The squares from a to b on one rank, both included.
constexpr uint64_t rank_span(int a, int b) {
    const int lo = a < b ? a : b, hi = a < b ? b : a;
    return (bit(hi) << 1) - bit(lo);
}
// The squares that must be empty to castle with the king on k and the rook on r (those two apart).
constexpr uint64_t castle_path(int k, int r, int colour, bool king_side) {
    return (rank_span(k, castle_king_to(colour, king_side)) |
            rank_span(r, castle_rook_to(colour, king_side))) &
           ~(bit(k) | bit(r));
}

// A Chess960-form castling: the move's destination holds a man of the side to move.
inline bool is_castle960(const Position& p, Move m) {
    const int target = p.board[move_to(m)];
    return target != EMPTY && piece_colour(target) == p.side;
}

// The castling moves of the side to move in the Chess960 form whose squares are empty; whether the
// king passes an attacked square is left to castle960_legal.
Move* gen_castles960(const Position& p, Move* out);
// Whether the Chess960-form castling m could have been generated here (a stored move word).
bool castle960_possible(const Position& p, Move m);
// Out of check, and no square the king stands on, crosses or reaches attacked (with the king and
// its rook lifted off the board).
bool castle960_legal(const Position& p, Move m);
// The rights left after a move from `from` to `to` in a Chess960 position (a king move drops both
// of its side's).
uint8_t castle960_rights_after(const Position& p, int from, int to);

// Reads a FEN castling field (up to a blank or its end): file letters A-H / a-h name the rook on
// that file (Shredder-FEN, X-FEN); KQkq name the outermost rook on that wing in a Chess960 game
// (X-FEN) and the corner rook of a king on e1/e8 in a standard one. Rights whose king is off its
// first rank or whose rook is missing are dropped. Sets cflag, castle_rook and chess960 (also
// when the caller's game is a Chess960 game). Returns the end of the field.
const char* read_castling(Position& p, const char* field, bool chess960_game);
// Sets chess960: in a Chess960 game, or where a right's king or rook starts off the standard
// squares. Only for a game position whose move lists are made again afterwards.
void set_castling_form(Position& p, bool chess960_game);
// The rights whose king is on its first rank and whose rook stands on its square on the right
// side of the king: the ones make-move and the generators can honour.
uint8_t supported_castling(const Position& p);
// Writes the X-FEN castling field (KQkq whenever the position is standard, "-" when no right is
// left) and returns the end of what it wrote.
char* write_castling(const Position& p, char* out);
