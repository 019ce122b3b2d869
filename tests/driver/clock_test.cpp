// The clock allotment over whole games: even when every move runs to its hard limit and then loses
// the lag on its way to the GUI, the clock never runs out within a game's length, and the last move
// of a control still gets a good part of what is left.

#include <gtest/gtest.h>

#include "driver/engine_state.h"
#include "driver/timeman.h"

namespace {

TEST(Clock, GamesOnTheirHardLimitsNeverFlag) {
    const struct {
        const char* name;
        int moves, base_ms, inc_ms, lag_ms, game_moves;
    } rows[] = {
        {"40 moves in 8 s", 40, 8000, 0, 8, 150},
        {"40 moves in 8 s on a loaded machine", 40, 8000, 0, 75, 150},
        {"40 moves in 20 s", 40, 20000, 0, 8, 150},
        {"40 moves in 1 s", 40, 1000, 0, 8, 150},
        {"5 moves in 2 s", 5, 2000, 0, 8, 150},
        {"1 move in 1 s", 1, 1000, 0, 8, 150},
        {"sudden death 8 s + 0.08 s", 0, 8000, 80, 8, 150},
        {"sudden death 8 s + 0.08 s, lag beyond the increment", 0, 8000, 80, 100, 60},
        {"sudden death 0.1 s + 1 s", 0, 100, 1000, 8, 150},
        // Without an increment each move's lag eats the clock at last; a game is shorter.
        {"sudden death 1 s", 0, 1000, 0, 8, 40},
        {"sudden death 8 s", 0, 8000, 0, 8, 70},
        {"sudden death 60 s", 0, 60000, 0, 8, 90},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        int64_t clock = r.base_ms;
        for (int move = 0; move < r.game_moves; ++move) {
            const int to_go        = r.moves ? r.moves - move % r.moves : 0;
            const TimeAllotment ta = compute_limits(0, 0, static_cast<int>(clock), r.inc_ms, to_go,
                                                    DEFAULT_MOVE_OVERHEAD, r.lag_ms);
            ASSERT_EQ(ta.limit_depth, 0) << "move " << move;
            for (uint64_t soft : ta.time_limits) {
                ASSERT_GT(soft, 0u);
            }
            if (to_go == 1) {
                EXPECT_GE(ta.hard_limit * 2,
                          static_cast<uint64_t>(clock - std::max(r.lag_ms, DEFAULT_MOVE_OVERHEAD)));
            }
            clock -= static_cast<int64_t>(ta.hard_limit) + r.lag_ms;
            ASSERT_GT(clock, 0) << "flagged at move " << move + 1;
            clock += r.inc_ms + (to_go == 1 ? r.base_ms : 0);
        }
    }
}

// Without a running clock (a console "go", a GUI's clock at zero) the search goes to depth 14; a
// depth limit and a fixed time per move ("movetime", "st") end it whichever comes first, the move
// time less the overhead or the lag measured, never below half of it.
TEST(Clock, UntimedDepthAndMoveTimeModes) {
    constexpr uint64_t NONE = 1u << 30;
    const struct {
        const char* name;
        int depth, move_time, time_left, inc, lag;
        int max_depth, limit_depth;
        uint64_t hard;
    } rows[] = {
        {"no clock", 0, 0, 0, 0, 0, 14, 14, NONE},
        {"negative clock", 0, 0, -500, -5, 0, 14, 14, NONE},
        {"a depth and a running clock: whichever comes first", 7, 0, 5000, 0, 0, 7, 0, 327},
        {"depth above the deepest", 300, 0, 0, 0, 0, MAX_DEPTH, 14, NONE},
        {"move time keeps the overhead back", 0, 1000, 5000, 0, 0, MAX_DEPTH, 0, 950},
        {"move time with a depth", 5, 300, 0, 0, 0, 5, 0, 250},
        {"move time keeps the lag back when it is more", 0, 1000, 0, 0, 200, MAX_DEPTH, 0, 800},
        {"short move time keeps half", 0, 60, 0, 0, 0, MAX_DEPTH, 0, 30},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const TimeAllotment ta = compute_limits(r.depth, r.move_time, r.time_left, r.inc, 0, 50, r.lag);
        EXPECT_EQ(ta.max_depth, r.max_depth);
        EXPECT_EQ(ta.limit_depth, r.limit_depth);
        EXPECT_EQ(ta.hard_limit, r.hard);
    }
}

} // namespace
