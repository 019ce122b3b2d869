// Search control: the depth, move-time and clock modes turned into limits, and the positions a
// search may run on.

#include <gtest/gtest.h>

#include "board/playable.h"

#include <array>
#include <cstdint>

#include "bench/search_harness.h"
#include "driver/control.h"

namespace {

struct ClockRow {
    const char* name;
    int time_left, increment, moves_to_go;
    std::array<uint64_t, 10> soft;
    uint64_t hard;
};

TEST(TimeAllotment, ClockMode) {
    // clang-format off
    const ClockRow rows[] = {
        {"sudden death 60 s", 60000, 0, 0,
         {1177, 1373, 1569, 1765, 1961, 2157, 2354, 2550, 2746, 2942}, 19616},
        {"40 moves in 5 min, 300 s left", 300000, 0, 40,
         {7172, 8102, 9031, 9961, 10891, 11821, 12750, 13680, 14610, 15540}, 99616},
        {"sudden death 10 s keeps a twentieth back", 10000, 0, 0,
         {187, 218, 249, 280, 311, 342, 374, 405, 436, 467}, 3116},
        {"no time left", 0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
        {"no time left but an increment", 0, 500, 0, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 1},
        {"flag already fallen", -5000, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
        // Target 100 ms: only the double just above 0.7 gives 130 (0.7 itself gives 129).
        {"spread just above 0.7", 2790, 0, 25, {60, 67, 75, 83, 91, 98, 106, 114, 122, 130}, 833},
        {"last move before the control: capped at the usable time", 100000, 0, 1,
         {59310, 66998, 74686, 82374, 90063, 97751, 98850, 98850, 98850, 98850}, 98850},
        {"two moves to go divide by two", 60000, 0, 2,
         {17655, 19943, 22232, 24520, 26809, 29098, 31386, 33675, 35963, 38252}, 29425},
        {"more than 25 moves to go count as 25", 300000, 0, 60,
         {7172, 8102, 9031, 9961, 10891, 11821, 12750, 13680, 14610, 15540}, 99616},
        {"increment added to target and hard limit", 60000, 1000, 0,
         {1677, 1956, 2236, 2515, 2794, 3074, 3354, 3633, 3912, 4192}, 20616},
        {"just below 20 s", 19999, 0, 0, {377, 439, 502, 565, 628, 691, 754, 816, 879, 942}, 6283},
        {"at 20 s the reserve is 1150 ms", 20000, 0, 0,
         {377, 439, 502, 565, 628, 691, 754, 816, 879, 942}, 6283},
        {"negative moves to go read as none", 60000, 0, -3,
         {1177, 1373, 1569, 1765, 1961, 2157, 2354, 2550, 2746, 2942}, 19616},
        {"negative increment leaves no time", 60000, -100000, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const TimeAllotment ta = compute_limits(0, 0, r.time_left, r.increment, r.moves_to_go);
        EXPECT_TRUE(ta.set_time_limits);
        EXPECT_EQ(ta.max_depth, 99);
        EXPECT_EQ(ta.hard_limit, r.hard);
        for (int k = 0; k < 10; ++k) {
            SCOPED_TRACE(k);
            EXPECT_EQ(ta.time_limits[k], r.soft[k]);
        }
    }
}

struct ModeRow {
    const char* name;
    int depth_limit, move_time, time_left;
    int max_depth;
    uint64_t hard;
};

// Depth and move-time modes leave the soft limits of an earlier search untouched.
TEST(TimeAllotment, DepthAndMoveTimeModes) {
    // clang-format off
    const ModeRow rows[] = {
        {"depth 5", 5, 0, 60000, 5, 1ULL << 30},
        {"depth above 99 is cut to 99", 120, 0, 0, 99, 1ULL << 30},
        {"depth wins over move time", 3, 1000, 0, 3, 1ULL << 30},
        {"move time 100 ms", 0, 100, 60000, 99, 1},
        {"move time 1000 ms", 0, 1000, 0, 99, 850},
        {"move time 1 ms", 0, 1, 0, 99, 1},
        {"move time 151 ms", 0, 151, 0, 99, 1},
        {"move time 152 ms", 0, 152, 0, 99, 2},
        {"negative depth falls to move time", -4, 500, 0, 99, 350},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const TimeAllotment ta = compute_limits(r.depth_limit, r.move_time, r.time_left, 0, 0);
        EXPECT_FALSE(ta.set_time_limits);
        EXPECT_EQ(ta.max_depth, r.max_depth);
        EXPECT_EQ(ta.hard_limit, r.hard);
    }
}

struct SearchableRow {
    const char* name;
    const char* fen;
    bool searchable;
};

// Broken set-ups the search must not run on (it would take a king or castle with an empty square);
// castling rights without their king at home are dropped by set-up instead.
TEST(SearchControl, PositionSearchable) {
    harness_tables_init();
    // clang-format off
    const SearchableRow rows[] = {
        {"start position", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", true},
        {"castling rights without rooks", "4k3/8/8/8/8/8/8/4K3 w KQkq -", true},
        {"side to move in check", "4k3/8/8/8/8/8/4q3/4K3 w - -", true},
        {"side not to move in check", "4k3/8/8/8/8/8/4q3/4K3 b - -", false},
        {"kings side by side", "8/8/8/8/8/8/8/kK6 w - -", false},
        {"no black king", "K7/8/8/8/8/8/8/8 w - -", false},
        {"empty board", "8/8/8/8/8/8/8/8 w - -", false},
        {"two white kings", "4k3/8/8/8/8/8/8/3KK3 w - -", false},
        {"white rights with the king off e1 are dropped", "4k3/8/8/8/8/8/8/3K3R w K -", true},
        {"black rights with the king off e8 are dropped", "r2k3r/8/8/8/8/8/8/4K3 w q -", true},
        {"white king off e1 without rights", "4k3/8/8/8/8/8/8/3K3R w kq -", true},
    };
    // clang-format on
    SearchThread* game = new SearchThread{};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        setboard(*game, r.fen);
        EXPECT_EQ(position_playable(game->stack[0]), r.searchable);
    }
    delete game;
}

} // namespace
