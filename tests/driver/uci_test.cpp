// The UCI front end's parsing: prefix matching of command words and the clock tokens of "go".

#include <gtest/gtest.h>

#include <cstring>

#include "driver/engine_state.h"
#include "driver/uci.h"
#include "search/threads.h"

namespace {

struct PrefixRow {
    const char* name;
    const char* line;
    const char* word;
    bool matches;
    const char* rest; // where the cursor stands afterwards
};

TEST(Uci, MatchPrefix) {
    // clang-format off
    const PrefixRow rows[] = {
        {"exact word and newline", "isready\n", "isready", true, ""},
        {"a prefix is enough", "gofast\n", "go", true, "ast\n"},
        {"quitting is quit", "quitting\n", "quit", true, "ing\n"},
        {"separator of any kind is stepped over", "go\tdepth 3\n", "go", true, "depth 3\n"},
        {"multi-word command", "position startpos moves e2e4\n", "position startpos", true, "moves e2e4\n"},
        {"leading blank defeats the match", " isready\n", "isready", false, " isready\n"},
        {"case matters", "IsReady\n", "isready", false, "IsReady\n"},
        {"shorter line", "go", "goo", false, "go"},
        {"word at the very end is not stepped past", "quit", "quit", true, ""},
        {"fen before startpos", "position fen 8/8 w - -\n", "position startpos", false,
         "position fen 8/8 w - -\n"},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const char* cursor = r.line;
        EXPECT_EQ(match_prefix(&cursor, r.word), r.matches);
        EXPECT_STREQ(cursor, r.rest);
    }
}

struct GoRow {
    const char* name;
    const char* text;
    int side;
    int time_left, increment, moves_to_go, depth_limit, move_time;
};

TEST(Uci, GoTokens) {
    // clang-format off
    const GoRow rows[] = {
        {"black reads the black clock", "wtime 60000 btime 30000 winc 1000 binc 500\n", BLACK, 30000, 500, 0, 0, 0},
        {"white reads the white clock", "wtime 60000 btime 30000 winc 1000 binc 500\n", WHITE, 60000, 1000, 0, 0, 0},
        {"depth alone", "depth 6\n", WHITE, 0, 0, 0, 6, 0},
        {"moves to go and move time", "movestogo 12 movetime 2500\n", BLACK, 0, 0, 12, 0, 2500},
        {"infinite and ponder change nothing", "infinite ponder\n", WHITE, 0, 0, 0, 0, 0},
        {"empty go", "", WHITE, 0, 0, 0, 0, 0},
        {"a skipped keyword's value is skipped", "nodes 500 depth 3\n", WHITE, 0, 0, 0, 3, 0},
        {"opponent's keyword takes no value", "btime 7 wtime 9\n", WHITE, 9, 0, 0, 0, 0},
        {"missing value reads 0", "depth\n", WHITE, 0, 0, 0, 0, 0},
        {"keyword at the end of the line", "depth", WHITE, 0, 0, 0, 0, 0},
        {"non-number reads 0 and is consumed", "wtime depth 5\n", WHITE, 0, 0, 0, 0, 0},
        {"leading digits rule", "movetime 250ms\n", WHITE, 0, 0, 0, 0, 250},
        {"repeated blanks", "depth   4  movetime  9\n", BLACK, 0, 0, 0, 4, 9},
        {"searchmoves list skipped", "searchmoves e2e4 d2d4 depth 2\n", WHITE, 0, 0, 0, 2, 0},
        {"negative numbers pass through", "wtime -50 winc -5\n", WHITE, -50, -5, 0, 0, 0},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        // Leftovers of an earlier search must not survive a new "go".
        engine.time_left = engine.increment = engine.moves_to_go = 77;
        engine.depth_limit = engine.move_time = 77;
        sc.time_limits[3]                     = 77;
        sc.best_depth                         = 77;
        sc.stop                               = 1;
        parse_go(r.text, r.side);
        EXPECT_EQ(engine.time_left, r.time_left);
        EXPECT_EQ(engine.increment, r.increment);
        EXPECT_EQ(engine.moves_to_go, r.moves_to_go);
        EXPECT_EQ(engine.depth_limit, r.depth_limit);
        EXPECT_EQ(engine.move_time, r.move_time);
        EXPECT_EQ(sc.time_limits[3], 0u);
        EXPECT_EQ(sc.best_depth, 0);
        EXPECT_EQ(sc.stop, 0);
    }
}

} // namespace
