#pragma once
// The per-thread search record: position stack for copy-make, key history, node counter and the
// move-ordering memory (killers, counter moves, histories). One record per search thread, plus
// the driver's game record of the same shape. Only its own thread touches a record during a search;
// `nodes` is read by others for statistics, so it is accessed through relaxed atomic_ref.

#include <atomic>
#include <cstdint>

#include "board/types.h"

struct SearchThread {
    uint32_t id;       // 0 = main search thread
    uint32_t histidx;  // index of the current key in keyhist
    uint64_t nodes;    // moves made since this thread's search began
    uint32_t seldepth; // the deepest ply this thread reached in its current iteration
    uint64_t key;      // full key of the current slot, == keyhist[histidx]
    Position* pos;     // current slot of stack
    Position stack[STACK_SIZE];
    uint32_t killers[2][STACK_SIZE];
    uint32_t counter[16][64];
    int16_t history[2][64][64];
    int16_t cmhist[16][64][16][64];
    uint64_t keyhist[KEY_HISTORY];
};

// Written only by the owning thread (plain load + store, no read-modify-write on the hot path);
// read by any thread for the node totals of the output lines.
inline uint64_t thread_nodes(const SearchThread& t) {
    return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(t.nodes)).load(std::memory_order_relaxed);
}
inline void set_thread_nodes(SearchThread& t, uint64_t n) {
    std::atomic_ref<uint64_t>(t.nodes).store(n, std::memory_order_relaxed);
}

// Unmake: the caller steps back; no undo record is needed with copy-make.
inline void unmake_move(SearchThread& t) {
    --t.pos;
    --t.histidx;
    t.key = t.keyhist[t.histidx];
}
