// Searches run through think(): several threads on one shared table, and the move output of each
// dialect. The ThreadedSearch cases are the ones the ThreadSanitizer build runs.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "bench/search_harness.h"
#include "board/board_helpers.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "driver/piped_stdin.h"

namespace {

constexpr const char* KIWIPETE = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
// White mates in two: 1.Ra6 bxa6 2.b7#.
constexpr const char* MATE_IN_TWO = "kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1";

class ThreadedSearch : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        harness_tables_init();
        testing::internal::CaptureStdout();
        hash_alloc(16);
        testing::internal::GetCapturedStdout();
    }
    void SetUp() override { game = new SearchThread{}; }
    void TearDown() override { delete game; }
    SearchThread* game = nullptr;
};

struct ThreadRow {
    const char* name;
    int threads;
    const char* fen;
    int depth;
    int mate_score; // 0 when the position has no forced mate at this depth
};

TEST_F(ThreadedSearch, SharedTableSearchesAgree) {
    const ThreadRow rows[] = {
        {"2 threads, bench 1", 2, bench_positions[0], 10, 0},
        {"4 threads, kiwipete", 4, KIWIPETE, 9, 0},
        {"16 threads, bench 6", 16, bench_positions[5], 9, 0},
        {"4 threads find the mate in two", 4, MATE_IN_TWO, 6, MATE - 3},
        {"16 threads find the mate in two", 16, MATE_IN_TWO, 6, MATE - 3},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        testing::internal::CaptureStdout();
        free_threads();
        set_threads(r.threads);
        const FixedSearch s   = fixed_depth_search(*game, r.fen, r.depth);
        const std::string out = testing::internal::GetCapturedStdout();

        ASSERT_EQ(thread_count(), r.threads);
        EXPECT_TRUE(is_legal_move(game->stack[0], s.best));
        EXPECT_EQ(s.depth, r.depth);
        if (r.mate_score) {
            EXPECT_EQ(s.score, r.mate_score);
        }
        EXPECT_NE(out.find(std::string("move ") + move_text(s.best) + "\n"), std::string::npos) << out;

        // Every record was prepared from the game position, and the reported total is their sum.
        uint64_t sum = 0;
        for (int i = 0; i < r.threads; ++i) {
            const SearchThread& t = search_record(i);
            EXPECT_EQ(t.id, static_cast<uint32_t>(i));
            EXPECT_EQ(std::memcmp(&t.stack[0].board, &game->stack[0].board, sizeof t.stack[0].board), 0);
            EXPECT_EQ(t.keyhist[t.histidx], game->key);
            sum += thread_nodes(t);
        }
        EXPECT_EQ(s.nodes, sum);
        EXPECT_GT(thread_nodes(search_record(0)), 0u);
    }
}

// Raising the thread count keeps what the first records learnt; the new ones start empty.
TEST_F(ThreadedSearch, MoreThreadsKeepEarlierHistory) {
    testing::internal::CaptureStdout();
    free_threads();
    set_threads(2);
    fixed_depth_search(*game, bench_positions[1], 7);
    int16_t learnt[2][64][64];
    std::memcpy(learnt, search_record(0).history, sizeof learnt);
    set_threads(4);
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(std::memcmp(learnt, search_record(0).history, sizeof learnt), 0);
    int16_t zero[2][64][64] = {};
    EXPECT_NE(std::memcmp(learnt, zero, sizeof learnt), 0);
    EXPECT_EQ(std::memcmp(search_record(3).history, zero, sizeof zero), 0);
}

struct OutputRow {
    const char* name;
    int xboard, uci, analyze, pondering;
    const char* last_lines; // the end of the output, with the best move written as %s
};

// Which dialect prints what once the search is over.
TEST(Think, FinalOutputByDialect) {
    harness_tables_init();
    // clang-format off
    const OutputRow rows[] = {
        {"console", 0, 0, 0, 0, "move %s\n"},
        {"xboard", 1, 0, 0, 0, "move %s\n"},
        {"uci", 0, 1, 0, 0, "bestmove %s\n"},
        {"pondering prints no move", 1, 0, 0, 1, ""},
        {"analysis prints no move", 1, 0, 1, 0, ""},
        {"console analysis prints no move", 0, 0, 1, 0, ""},
    };
    // clang-format on
    SearchThread* game = new SearchThread{};
    testing::internal::CaptureStdout();
    free_threads();
    set_threads(1);
    hash_alloc(2);
    testing::internal::GetCapturedStdout();
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        setboard(*game, "7k/8/8/8/8/8/8/K2R4 w - - 0 1");
        new_game(*game);
        reset_search_control();
        engine.xboard_mode   = r.xboard;
        engine.uci_mode      = r.uci;
        engine.analyze_mode  = r.analyze;
        engine.pondering     = r.pondering;
        engine.display_depth = MAX_DEPTH + 1;
        engine.input_ready   = 0;
        engine.depth_limit   = 2;
        testing::internal::CaptureStdout();
        {
            // Nothing typed and nothing ending: a piped console analysis runs to its depth.
            PipedStdin quiet;
            think(*game);
        }
        const std::string out = testing::internal::GetCapturedStdout();
        const Move best       = sc.pv_table[0][0];
        ASSERT_TRUE(is_legal_move(game->stack[0], best));
        std::string text = move_text(best);
        char expected[64];
        std::snprintf(expected, sizeof expected, r.last_lines, text.c_str(), text.c_str());
        const std::string tail(expected);
        ASSERT_GE(out.size(), tail.size()) << out;
        EXPECT_EQ(out.substr(out.size() - tail.size()), tail) << out;
        if (tail.empty()) {
            EXPECT_EQ(out.find("move"), std::string::npos) << out;
        }
        if (r.uci) {
            // The final info line comes just before the answer and leads with the best move.
            const size_t end       = out.size() - tail.size();
            const size_t start     = out.rfind('\n', end - 2) + 1;
            const std::string info = out.substr(start, end - start);
            EXPECT_EQ(info.rfind("info depth 2 score cp ", 0), 0u) << info;
            EXPECT_NE(info.find(" pv " + text), std::string::npos) << info;
        }
    }
    engine.xboard_mode = engine.uci_mode = 0;
    engine.analyze_mode = engine.pondering = 0;
    delete game;
}

} // namespace
