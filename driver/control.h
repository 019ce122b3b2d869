#pragma once
// Search control: turns the clock inputs into limits, runs the threads, polls time and input every
// 2 ms, and prints the move. Every search goes through think().

#include <cstdint>

#include "search/thread.h"

struct TimeAllotment {
    int max_depth;
    uint64_t hard_limit;
    uint64_t time_limits[10];
    bool set_time_limits; // clock mode computed new soft limits
    int limit_depth;      // the depth from which the time limits apply
};
// The limits for the given clock inputs (pure; think applies them). The overhead is the time, in
// ms, that the answer may take to reach the GUI's clock.
// The lag is the time each move was measured to lose beyond its search.
TimeAllotment compute_limits(int depth_limit, int move_time, int time_left, int increment, int moves_to_go,
                             int overhead, int lag);

void think(SearchThread& game);
