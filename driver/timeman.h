#pragma once
// The time manager: turns a search's clock inputs into a depth limit, a hard limit and the soft
// limits of the time slots, applies them to the search record, and keeps the lag each timed move
// loses on its way to the GUI. Pure but for the lag record (ClockInputs::measured) it updates.

#include <cstdint>

#include "search/threads.h"

// Without a clock limit the hard limit sits far beyond any real search.
constexpr uint64_t NO_HARD_LIMIT = 1ULL << 30;
// A depth no iteration reaches: as TimeAllotment::limit_depth, no time limit ever applies (a
// ponder search, which runs until the opponent's move arrives).
constexpr int NO_TIME_LIMIT_DEPTH = MAX_DEPTH + 1;

struct TimeAllotment {
    int max_depth;
    uint64_t hard_limit;
    uint64_t time_limits[TIME_SLOTS];
    bool set_time_limits; // clock mode computed new soft limits
    int limit_depth;      // the depth from which the time limits apply
};
// The limits for the given clock inputs (pure; think applies them). The overhead is the time, in
// ms, that the answer may take to reach the GUI's clock.
// The lag is the time each move was measured to lose beyond its search.
TimeAllotment compute_limits(int depth_limit, int move_time, int time_left, int increment, int moves_to_go,
                             int overhead, int lag);
// The limits take effect now, counted from start: thread 0 reads the soft limits and the depth
// they apply from while it searches, so they are written one by one as atomics.
void apply_limits(const TimeAllotment& ta, int64_t start);

// Before a timed move: the time the last one lost beyond its search, from the clock the GUI
// reports now (time_left, increment), goes into the lag record.
void measure_lag(int32_t time_left, int32_t increment);
// After a timed move: what it was planned on and what it took, for the next measure_lag.
void note_timed_move(int32_t time_left, int32_t moves_to_go, int32_t spent);
