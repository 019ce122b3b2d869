#pragma once
// FEN in and out.

#include "board/stack.h"
#include "board/types.h"

inline constexpr const char* START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -";

// Rebuilds the whole game record (zeroed) with slot 0 holding the position the text describes.
// In a Chess960 game castling is written as the king taking its own rook even from the standard
// start; elsewhere only where the kings or castling rooks start off e1/e8 and the corners.
void setboard(PositionStack& game, const char* fen, bool chess960_game = false);
// Prints the FEN of the position and a newline.
void savepos(const Position& p);
// Builds the FEN text without printing it (buffer of at least 100 bytes).
void fen_text(const Position& p, char* out);
// 156 minus the phase weights of the pieces on the board, limited below at 0.
uint8_t compute_phase(const Position& p);
