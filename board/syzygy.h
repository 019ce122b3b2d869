#pragma once
// The endgame tables the engine has found, and what they say about a position: its result
// (win/draw/loss, with the 50-move rule's cursed wins and blessed losses) and its distance to
// the next capture or pawn move. Tables are loaded (and released) only while no search runs;
// probing then only reads them, from any number of threads.

#include <cstdint>
#include <string>
#include <vector>

#include "board/stack.h"
#include "board/syzygy_file.h"
#include "board/types.h"

// Results from the side to move's view.
constexpr int TB_LOSS = -2, TB_BLESSED_LOSS = -1, TB_DRAW = 0, TB_CURSED_WIN = 1, TB_WIN = 2;

// What a load found: tables by kind, the most men in a table with both files or its WDL file, and
// one line per file or folder that could not be used.
struct TbLoadReport {
    int wdl_tables;
    int dtz_tables;
    int max_men;
    std::vector<std::string> problems;
};

// Releases the tables loaded so far and loads those in the folders of `folders`, separated by
// `separator`; an empty text or "<empty>" loads none.
TbLoadReport tb_load(const std::string& folders, char separator);
// The most men in a loaded WDL table; 0 when none is loaded.
int tb_max_men();

// Probes need the position stack's slots above the current one: at most this many.
constexpr int TB_PROBE_PLIES = 8;

// The result of the stack's current position (no castling rights, at most tb_max_men() men),
// en passant and captures resolved; false when a table it needs is missing or unreadable.
bool tb_probe_wdl(PositionStack& t, int& wdl);
// Plies to the next capture or pawn move on the best line, signed by the result: 1..100 for a
// win within the 50-move rule, above 100 for a cursed win, negative alike for losses, 0 for a
// draw. A value may exceed the true distance by one (the tables store moves, not plies).
bool tb_probe_dtz(PositionStack& t, int& dtz);
// The same, counted from the current position, for the move m of it.
bool tb_probe_move_dtz(PositionStack& t, Move m, int& dtz);
