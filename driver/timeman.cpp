#include "driver/timeman.h"

#include <algorithm>

#include "driver/engine_state.h"

// Without a running clock (a console "go", a GUI's clock at zero) the search goes to this depth.
constexpr int UNTIMED_DEPTH = 14;
// In depth mode, soft limits left by an earlier clock search only apply from this depth on.
constexpr int UNTIMED_LIMIT_DEPTH = 14;
// Sudden death: the clock is spread as if this many moves were left.
constexpr int64_t SUDDEN_DEATH_MOVES = 40;
// A control of more moves than this is planned as this many.
constexpr int64_t MOST_PLANNED_MOVES = 50;

// Each move costs some time beside its search (the answer's way to the GUI, the GUI's own work):
// at least this much, or the lag measured in the game when that is more.
constexpr int64_t LAG_PER_MOVE = 10;
// The largest lag one move is believed to show: more is a clock the GUI set anew.
constexpr int64_t MOST_LAG = 1000;
// Every move still to come in the control keeps at least this much to think.
constexpr int64_t LEAST_THINK = 5;

// Clock mode: the usable time (what the clock shows less the overhead, and for each move still to
// come its lag, as far as its increment does not pay for it, and a little time to think) spread
// over the moves to the next control, with a soft limit per stability slot and a hard cap that
// keeps enough for the moves after this one even if each of them used its own cap. The limits
// apply from the first iteration on, so a search never flags.
// 64-bit arithmetic throughout: the inputs come straight from the GUI and may be anything.
static void clock_limits(TimeAllotment& ta, int64_t time_left, int64_t inc, int moves_to_go, int64_t overhead,
                         int64_t lag) {
    inc = std::max<int64_t>(inc, 0);
    lag = std::clamp<int64_t>(lag, LAG_PER_MOVE, MOST_LAG);
    const int64_t moves =
        moves_to_go > 0 ? std::min<int64_t>(moves_to_go, MOST_PLANNED_MOVES) : SUDDEN_DEATH_MOVES;
    const int64_t reserve = (std::max<int64_t>(lag - inc, 0) + LEAST_THINK) * (moves - 1);
    const int64_t usable  = std::max<int64_t>(time_left - std::max<int64_t>(overhead, lag) - reserve, 1);
    // The increment comes back after the move; three quarters of it is spent at once.
    int64_t target = usable / moves + inc * 3 / 4;
    // The last move of a control may take most of what is left; any other at most four tenths of
    // it, and three times its share.
    const int64_t hard = moves == 1 ? usable * 8 / 10 : std::min(usable * 4 / 10, target * 3);
    target             = std::min(target, hard);
    // A best move that keeps changing earns up to 1.4 times the target, a settled one half of it.
    for (int k = 0; k < TIME_SLOTS; ++k)
        ta.time_limits[k] = static_cast<uint64_t>(std::max<int64_t>(target * (5 + k) / 10, 1));
    ta.hard_limit      = static_cast<uint64_t>(std::max<int64_t>(hard, 1));
    ta.set_time_limits = true;
    ta.limit_depth     = 0;
}

// A fixed time per move (UCI "movetime", XBoard "st"): the search ends that time less the overhead,
// or the lag measured when that is more, but is never cut below half of it. No soft limit ends it
// sooner; only its depth limit (or a search that has nothing left to find) does.
static void move_time_limits(TimeAllotment& ta, int64_t move_time, int64_t overhead, int64_t lag) {
    const int64_t reserve = std::max<int64_t>(overhead, std::clamp<int64_t>(lag, 0, MOST_LAG));
    const int64_t hard    = std::max(move_time - reserve, move_time / 2);
    ta.hard_limit         = static_cast<uint64_t>(std::max<int64_t>(hard, 1));
    ta.set_time_limits    = true;
    ta.limit_depth        = 0;
}

TimeAllotment compute_limits(int depth_limit, int move_time, int time_left, int increment, int moves_to_go,
                             int overhead, int lag) {
    TimeAllotment ta{};
    ta.max_depth   = MAX_DEPTH;
    ta.hard_limit  = NO_HARD_LIMIT;
    ta.limit_depth = UNTIMED_LIMIT_DEPTH;
    // A depth and a move time together: whichever comes first ends the search.
    if (depth_limit > 0) ta.max_depth = std::min(depth_limit, MAX_DEPTH);
    if (move_time > 0) {
        move_time_limits(ta, move_time, overhead, lag);
        return ta;
    }
    // A running clock is planned, also under a depth limit (whichever comes first: a depth left
    // by an analysis must not make a game ignore its clock); without one (no time left, no
    // increment) the search goes to its depth limit, or to depth 14, and ends there, whatever soft
    // limits an earlier search left.
    if (time_left > 0 || increment > 0) {
        clock_limits(ta, time_left, increment, moves_to_go, overhead, lag);
    } else if (depth_limit == 0) {
        ta.max_depth       = UNTIMED_DEPTH;
        ta.set_time_limits = true;
    }
    return ta;
}

void apply_limits(const TimeAllotment& ta, int64_t start) {
    sc.hard_limit = ta.hard_limit;
    if (ta.set_time_limits)
        for (int k = 0; k < TIME_SLOTS; ++k)
            sc.time_limits[k].store(ta.time_limits[k], std::memory_order_relaxed);
    sc.clock_start.store(start, std::memory_order_relaxed);
    sc.limit_depth.store(ta.limit_depth, std::memory_order_relaxed);
}

// The record keeps the largest lag seen, slowly forgotten. The move before a new control is not
// measured: the clock is refilled after it.
void measure_lag(int32_t time_left, int32_t increment) {
    ClockRecord& c = clock_inputs.measured;
    if (!c.fresh || c.time_left <= 0 || c.moves_to_go == 1) return;
    const int64_t lost = static_cast<int64_t>(c.time_left) + std::max(increment, 0) - c.spent - time_left;
    if (lost > MOST_LAG) return;
    c.lag = static_cast<int32_t>(std::max<int64_t>(lost, c.lag * 7 / 8));
}

void note_timed_move(int32_t time_left, int32_t moves_to_go, int32_t spent) {
    ClockRecord& c = clock_inputs.measured;
    c.time_left    = time_left;
    c.spent        = spent;
    c.moves_to_go  = moves_to_go;
    c.fresh        = false;
}
