// The game position's setting-up and its legal moves, which the protocols, the book and the game
// driver all match their moves against.

#include "driver/game_position.h"

#include "board/castling.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "board/playable.h"
#include "driver/engine_state.h"
#include "search/threads.h"
#include "search/tt.h"

uint64_t new_game(PositionStack& game) {
    hash_clear(); // zeroes the table and its age
    game.key        = full_key(*game.pos);
    game.histidx    = 0;
    game.keyhist[0] = game.key;
    return game.key;
}

// Generators are unbounded; a set-up position with many extra pieces must not write past the
// game's list, so they fill this scratch list first.
static Move scratch[4096];

uint32_t fill_legal_moves(const Position& p, Move& only) {
    // A position set up by hand that no game can reach gets no moves at all: nothing is played,
    // searched or taken from the book there.
    uint32_t count = position_playable(p) ? pseudo_legal_moves(p, scratch) : 0;
    if (count > MAX_MOVES) count = MAX_MOVES;
    uint32_t passed = 0;
    only            = 0;
    for (uint32_t i = 0; i < count; ++i) {
        Move m = scratch[i];
        if (!legal(p, m)) {
            m = 0;
        } else {
            ++passed;
            only = m;
        }
        game_history.legal_moves.moves[i] = m;
    }
    game_history.legal_moves.count = count;
    game_history.legal_count       = count;
    return passed;
}

void no_legal_move() {
    game_history.game_over    = 1;
    game_history.legal_count  = 0;
    game_history.single_reply = 0;
}

void generate_legal_moves(SearchThread& game, bool regeneration) {
    Move only             = 0;
    const uint32_t passed = fill_legal_moves(*game.pos, only);
    if (passed == 0)
        no_legal_move();
    else
        game_history.single_reply = passed == 1 ? only : 0;
    if (regeneration) protocol.ponder_ready = true;
}

Move find_legal_move(Move word) {
    for (uint32_t i = 0; i < game_history.legal_count; ++i) {
        const Move m = game_history.legal_moves.moves[i];
        if (m != 0 && (m & MOVE_WORD_BITS) == (word & MOVE_WORD_BITS)) return m;
    }
    return 0;
}

const char* xboard_move_text(const Position& p, Move m) {
    const int from = move_from(m), to = move_to(m);
    const bool king    = (m & SQUARE_BITS) != 0 && from == king_square(p, p.side);
    const bool castles = king && (is_castle960(p, m) || to - from == 2 || from - to == 2);
    if (protocol.chess960 && castles) return to > from ? "O-O" : "O-O-O";
    return move_text(m);
}

Move find_legal_text(const Position& p, const char* text) {
    if (const Move m = find_legal_move(text_to_move(text) & MOVE_WORD_BITS)) return m;
    const Move castle = text_to_castle(p, text);
    return castle ? find_legal_move(castle) : 0;
}
