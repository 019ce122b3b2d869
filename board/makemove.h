#pragma once
// Copy-make on a record's position stack with incremental keys and material sums, the pin/check
// fields, and the legality tests. Unmake is the caller's step back (unmake_move in board/stack.h).

#include <atomic>
#include <cstdint>

#include "board/attacks.h"
#include "board/keys.h"
#include "board/stack.h"
#include "board/types.h"

// Moves made on all stacks since the count was last cleared, for the statistics lines. Make-move
// itself counts only into its own stack (a shared word written per node would be one cache line
// fought over by every search thread): a search thread adds its count when it ends, perft when it
// returns, and a game move its one.
extern std::atomic<uint64_t> nodes_searched;
inline void add_nodes_searched(uint64_t n) {
    nodes_searched.fetch_add(n, std::memory_order_relaxed);
}

// Checked after every move in the builds with assertions (Debug, sanitizers, fuzzing).
Position* make_move(PositionStack& t, Move m);
// The stack's current position agrees with itself: board and bitboards, king squares, and the key
// (also in the key history).
bool position_ok(const PositionStack& t);
// The key make_move will give the position after m, found before the move is made so that its
// table entry can be on its way while legality is tested and the move made. Castling's rook, an
// en passant pawn, a promotion and a new en passant square are left out: for those few moves the
// guess is wrong, which costs one useless prefetch and never a wrong result.
inline uint64_t key_after(const Position& p, uint64_t key, Move m) {
    const int from = move_from(m), to = move_to(m);
    const int mover = p.board[from], captured = p.board[to];
    key ^= turn_key ^ piece_key(mover, from) ^ piece_key(mover, to);
    if (captured != EMPTY) key ^= piece_key(captured, to);
    if (p.epsq != NO_SQUARE) key ^= ep_key(p.epsq);
    if (p.cflag) key ^= castle_keys[p.cflag & ~(castle_mask[from] & castle_mask[to])];
    return key;
}
// Makes a game move and keeps the game position in slot 0 (the key history grows by one).
void commit_move(PositionStack& game, Move m);
void set_pins(Position& p);
// A piece pinned to its king on square k may move only along the pin line: away from the king
// (the pinner's square included) or towards it.
inline bool along_pin(int k, int from, int to) {
    return (between[k][to] & bit(from)) || (between[k][from] & bit(to));
}
// The full test behind legal(): king moves, moves in check, en passant and pinned pieces.
bool legal_slow(const Position& p, Move m);
// Most moves (no check, not the king, not pinned, not en passant) are answered here at once.
inline bool legal(const Position& p, Move m) {
    const int from = move_from(m);
    const int type = piece_type(p.board[from]);
    if (type != KING && !p.incheck && !(p.pinned & bit(from)) && !(type == PAWN && move_to(m) == p.epsq))
        return true;
    return legal_slow(p, m);
}
// The squares the side not to move attacks with the mover's king lifted off the board: a king
// step (not castling) passes legal() exactly when its destination is not among them.
uint64_t king_danger(const Position& p);
// The two tests of a move remembered from another position, both with the same castling rule:
// a quiet, non-promoting move (a killer or counter move) that could be played here, the king's
// steps taken as the attack table gives them;
bool quiet_pseudo_legal(const Position& p, Move m);
// any stored move word (a hash move), captures, promotions, en passant and castling included, that
// the generators could have made here.
bool stored_move_pseudo_legal(const Position& p, Move m);
