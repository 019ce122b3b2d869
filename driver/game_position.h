#pragma once
// The game position: a new game on it, and its legal moves as game_history keeps them.

#include <cstdint>

#include "board/types.h"
#include "search/thread.h"

// Clears the transposition table and its age and restarts the key history.
uint64_t new_game(PositionStack& game);
// Generates the pseudo-legal moves of the position into game_history.legal_moves and zeroes the
// entries that fail the legality test in place. Returns how many passed (the only one in `only`
// when one did); the generated count is in game_history.legal_count.
uint32_t fill_legal_moves(const Position& p, Move& only);
// The game has ended: no legal moves, no single reply.
void no_legal_move();
// Fills the legal moves of the game position; sets game_over when nothing legal remains, and
// single_reply. regeneration: the loop's own step, after which a ponder search may start again.
void generate_legal_moves(SearchThread& game, bool regeneration);
// The legal move of the game position with these from, to and promotion bits, or 0.
Move find_legal_move(Move word);
// The text of the engine's move m in the game position p for a "move" line: castling in a Chess960
// game as O-O / O-O-O, the form xboard uses for this variant; otherwise move_text's.
const char* xboard_move_text(const Position& p, Move m);
// The legal move of the game position p that a move text names: coordinates as the position
// writes them, else castling in one of the other forms (text_to_castle). 0 when none is.
Move find_legal_text(const Position& p, const char* text);
