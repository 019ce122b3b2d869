#pragma once
// The engine's vocabulary: squares, colours, piece codes, the Position record copied whole by
// make-move, the 32-bit Move entry (move word + sort key) and the MoveList the generators fill.
// Nothing here computes; the board folder's other files fill and change these records.

#include <bit>
#include <cstdint>
#include <type_traits>

// Squares 0..63 (a1 = 0, h1 = 7, a8 = 56); 64 is "no square".
constexpr int NO_SQUARE = 64;
constexpr int A1 = 0, B1 = 1, C1 = 2, D1 = 3, E1 = 4, F1 = 5, G1 = 6, H1 = 7;
constexpr int A8 = 56, B8 = 57, C8 = 58, D8 = 59, E8 = 60, F8 = 61, G8 = 62, H8 = 63;

constexpr int WHITE = 0, BLACK = 1;
constexpr int PAWN = 0, KNIGHT = 1, BISHOP = 2, ROOK = 3, QUEEN = 4, KING = 5;

// Piece code = colour * 8 + type; 15 marks an empty square; 6, 7 and 14 never stand on the board.
constexpr uint8_t EMPTY = 15;
constexpr int piece_code(int colour, int type) {
    return colour * 8 + type;
}
constexpr int piece_type(int code) {
    return code & 7;
}
constexpr int piece_colour(int code) {
    return code >> 3;
}

constexpr int file_of(int sq) {
    return sq & 7;
}
constexpr int rank_of(int sq) {
    return sq >> 3;
}
constexpr uint64_t bit(int sq) {
    return 1ULL << sq;
}

// A table computed at compile time. A constexpr function cannot return a plain array, so it fills
// and returns this record; readers index the plain array inside through a reference named like the
// table, which compiles to the same loads as any other plain table (std::array indexing does not
// always: it cost make-move and the perft leaves a few instructions).
template <typename Array> struct Table { Array at; };

// The search never goes deeper than ply 120 nor iterates beyond depth 99.
constexpr int MAX_PLY     = 120;
constexpr int STACK_SIZE  = 128;
constexpr int MAX_DEPTH   = 99;
constexpr int KEY_HISTORY = 1024;
constexpr int MAX_MOVES   = 256;

// Scores: mate given at ply p is MATE - p, mate suffered p - MATE.
constexpr int MATE = 32767;

// Game phase weights by type; the full initial set of pieces weighs 156.
constexpr int phase_weight[6] = {0, 6, 6, 13, 28, 0};
constexpr int PHASE_TOTAL     = 156;

// Castling rights, the bits of Position::cflag: right i = 2 * colour + (1 on the king's side).
constexpr int castle_index(int colour, bool king_side) {
    return 2 * colour + (king_side ? 1 : 0);
}
constexpr uint8_t castle_right(int colour, bool king_side) {
    return static_cast<uint8_t>(1u << castle_index(colour, king_side));
}
constexpr uint8_t CASTLE_WQ = castle_right(WHITE, false), CASTLE_WK = castle_right(WHITE, true);
constexpr uint8_t CASTLE_BQ = castle_right(BLACK, false), CASTLE_BK = castle_right(BLACK, true);
constexpr uint8_t CASTLE_WHITE = CASTLE_WQ | CASTLE_WK, CASTLE_BLACK = CASTLE_BQ | CASTLE_BK;
constexpr uint8_t CASTLE_ALL = CASTLE_WHITE | CASTLE_BLACK;

struct Position {
    uint8_t side;    // colour to move
    uint8_t epsq;    // en-passant square, 64 when none (set only when a capture is possible)
    uint8_t cflag;   // castling rights: 1 = Q, 2 = K, 4 = q, 8 = k
    uint8_t incheck; // side to move is in check
    uint8_t rule50;  // plies since the last capture or pawn move
    uint8_t phase;   // 156 minus the phase weights on the board; read as a signed byte
    uint8_t wking, bking;
    int16_t mg, eg; // material + square values, white minus black, kept by make-move
    int16_t eval;   // static evaluation the search stored for this slot
    // Castling is written as the king taking its own rook (the Chess960 form): set when a right's
    // king or rook does not start on e1/e8 and a1/h1/a8/h8, or the game is a Chess960 game.
    uint8_t chess960;
    uint64_t pawnkey;
    uint64_t colour_bb[2];
    uint64_t type_bb[5];    // pawns .. queens of both colours; kings live in wking/bking
    uint64_t pinned;        // pieces of the side to move pinned to their king
    uint32_t lastmove;      // the move entry that produced this position (0 after FEN set-up)
    uint8_t board[64];      // piece code per square, EMPTY when empty
    uint8_t castle_rook[4]; // start square of each right's rook, by cflag bit index (Q, K, q, k)
};
static_assert(std::is_trivially_copyable_v<Position>);
// The castling fields fill what was padding: the record copied per move stays 160 bytes.
static_assert(sizeof(Position) == 160);

inline int king_square(const Position& p, int colour) {
    return colour == WHITE ? p.wking : p.bking;
}
inline uint64_t occupancy(const Position& p) {
    return p.colour_bb[0] | p.colour_bb[1];
}
inline uint64_t pieces(const Position& p, int colour, int type) {
    return p.colour_bb[colour] & p.type_bb[type];
}

// Move entry: bits 0..5 destination, 6..11 origin, 12 quiet mark, 13..15 promotion type,
// 16..31 sort key. A move whose twelve square bits are 0 is no move.
using Move = uint32_t;
static_assert(sizeof(Move) == 4);

constexpr uint32_t QUIET_MARK  = 1u << 12;
constexpr uint32_t SQUARE_BITS = 0xFFF;
// The move word of an entry: squares, quiet mark and promotion, without the sort key. Moves from
// different lists (generated, stored in the table, typed in) compare by it.
constexpr uint32_t MOVE_WORD_BITS = 0xFFFF;
constexpr int move_to(Move m) {
    return m & 63;
}
constexpr int move_from(Move m) {
    return (m >> 6) & 63;
}
constexpr int move_promo(Move m) {
    return (m >> 13) & 7;
}
constexpr int move_key(Move m) {
    return static_cast<int16_t>(m >> 16);
}
constexpr Move make_move_word(int from, int to) {
    return static_cast<Move>(from * 64 + to);
}

// Generated promotion entries: sort key in bits 16..31, promotion type in bits 13..15.
constexpr Move PROMO_QUEEN = 0xFFF48000u, PROMO_ROOK = 0xFFF36000u;
constexpr Move PROMO_BISHOP = 0xFFF24000u, PROMO_KNIGHT = 0xFFF12000u;

struct MoveList {
    uint32_t count;
    Move moves[MAX_MOVES];
};

// Bitboard walking: lowest set bit first.
inline int lsb(uint64_t b) {
    return std::countr_zero(b);
}
inline int popcount(uint64_t b) {
    return std::popcount(b);
}
inline int pop_lsb(uint64_t& b) {
    int s = std::countr_zero(b);
    b &= b - 1;
    return s;
}
