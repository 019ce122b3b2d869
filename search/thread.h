#pragma once
// The per-thread search record: the position stack (board/stack.h) with the move-ordering memory
// (killers, counter moves, histories). One record per search thread, plus the driver's game
// record of the same shape. Only its own thread touches a record during a search.

#include <cstdint>

#include "board/stack.h"
#include "board/types.h"

struct SearchThread : PositionStack {
    uint32_t id;       // 0 = main search thread
    uint32_t seldepth; // the deepest ply this thread reached in its current iteration
    uint64_t tbhits;   // endgame-table probes answered in this search (read by others, relaxed)
    uint32_t killers[2][STACK_SIZE];
    uint32_t counter[16][64];
    int16_t history[2][64][64];
    int16_t cmhist[16][64][16][64];
};
