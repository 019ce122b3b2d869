#pragma once
// Guards for positions typed in by hand. Set-up builds whatever a FEN text describes, while the
// generators, make-move and the evaluation rely on a placement that a game can reach. The driver
// refuses to play, search or count on a position that fails position_playable; every position
// reached from a playable one by legal moves is playable again.

#include "board/types.h"

// Drops the castling rights whose king and rook are not both on their start squares, and an
// en-passant square that the side to move cannot use (wrong rank, occupied, or no enemy pawn just
// past it with the square it came from empty). A position from a real game loses nothing here.
void drop_unusable_rights(Position& p);

// One king of each colour on the squares the record names, no pawn on the first or last rank,
// the side not to move not in check (the two kings side by side included), for each colour no
// more men than a game can leave it (at most 8 pawns, and no more extra pieces than pawns
// missing), and castling rights and en-passant square that drop_unusable_rights would keep.
bool position_playable(const Position& p);
