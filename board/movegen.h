#pragma once
// The four pseudo-legal generators, each writing entries from `first` in a fixed order and storing
// how many it wrote in `*count`. Callers test every move with legal() before making it.

#include <cstdint>

#include "board/types.h"

void gen_captures(const Position& p, Move* first, uint32_t* count, int underpromotions);
void gen_quiets(const Position& p, Move* first, uint32_t* count);
void gen_evasions(const Position& p, Move* first, uint32_t* count, int underpromotions);
void gen_checks(const Position& p, Move* first, uint32_t* count);
// What gen_captures (with under-promotions) and gen_quiets write, entry for entry, into two lists
// at once: one pass over the pieces looks each attack set up only once.
void gen_captures_quiets(const Position& p, Move* caps, uint32_t* ncaps, Move* quiets, uint32_t* nquiets);
// The pseudo-legal moves of the position (evasions in check, else captures with under-promotions,
// then quiet moves), in generation order; returns how many were written to out, which must have
// room for whatever the position holds (a set-up position may have more than MAX_MOVES).
uint32_t pseudo_legal_moves(const Position& p, Move* out);
// The legal moves of the position (evasions in check, else captures with under-promotions, then
// quiet moves), in generation order; returns how many were written to out (room for MAX_MOVES).
uint32_t legal_moves(const Position& p, Move* out);
