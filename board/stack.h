#pragma once
// The position stack a copy-make walks: the positions from the root (slot 0) to the current one,
// the key history behind them (game moves and searched moves alike, for repetitions) and the count
// of moves made. Make-move, FEN set-up and perft work on it alone; a search thread's record is one
// with the move-ordering memory added. Only its own thread writes a stack; `nodes` is read by
// others for statistics, so it is accessed through relaxed atomic_ref.

#include <atomic>
#include <cstdint>

#include "board/types.h"

struct PositionStack {
    uint32_t histidx; // index of the current key in keyhist
    uint64_t nodes;   // moves made since this stack's search began
    uint64_t key;     // full key of the current slot, == keyhist[histidx]
    Position* pos;    // current slot of stack
    Position stack[STACK_SIZE];
    uint64_t keyhist[KEY_HISTORY];
};

// Written only by the owning thread (plain load + store, no read-modify-write on the hot path);
// read by any thread for the node totals of the output lines.
inline uint64_t thread_nodes(const PositionStack& t) {
    return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(t.nodes)).load(std::memory_order_relaxed);
}
inline void set_thread_nodes(PositionStack& t, uint64_t n) {
    std::atomic_ref<uint64_t>(t.nodes).store(n, std::memory_order_relaxed);
}

// Unmake: the caller steps back; no undo record is needed with copy-make.
inline void unmake_move(PositionStack& t) {
    --t.pos;
    --t.histidx;
    t.key = t.keyhist[t.histidx];
}
