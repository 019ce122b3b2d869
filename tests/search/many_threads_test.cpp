// Searches with 2, 8 and 128 threads on one shared table, run through think() as a game runs them.
// Under ThreadSanitizer these are the threaded searches of the test command; here they check that
// every thread count answers with a legal move at the depth asked and that the node total is the
// sum of the threads' own counts.

#include <gtest/gtest.h>

#include <string>

#include "bench/search_harness.h"
#include "board/board_helpers.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"

namespace {

TEST(ManyThreads, EveryCountAnswersFromTheSharedTable) {
    struct Row {
        const char* name;
        int threads;
        const char* fen;
        int depth;
        int score; // the exact score when the position has a forced mate, else 0
    };
    const Row rows[] = {
        {"2 threads, bench 2", 2, bench_positions[1], 8, 0},
        {"8 threads, bench 3", 8, bench_positions[2], 7, 0},
        {"8 threads, mate in two", 8, "kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1", 6, MATE - 3},
        {"128 threads, bench 4", 128, bench_positions[3], 5, 0},
        {"128 threads, mate in two", 128, "kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1", 5, MATE - 3},
    };
    harness_tables_init();
    SearchThread* game = new SearchThread{};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        testing::internal::CaptureStdout();
        free_threads();
        set_threads(r.threads);
        hash_alloc(16);
        const FixedSearch s   = fixed_depth_search(*game, r.fen, r.depth);
        const std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(thread_count(), r.threads);
        EXPECT_TRUE(is_legal_move(game->stack[0], s.best)) << move_text(s.best);
        EXPECT_EQ(s.depth, r.depth);
        if (r.score) {
            EXPECT_EQ(s.score, r.score);
        }
        EXPECT_NE(out.find(std::string("move ") + move_text(s.best) + "\n"), std::string::npos) << out;
        uint64_t sum = 0;
        for (int i = 0; i < r.threads; ++i)
            sum += thread_nodes(search_record(i));
        EXPECT_EQ(s.nodes, sum);
    }
    testing::internal::CaptureStdout();
    free_threads();
    set_threads(1);
    testing::internal::GetCapturedStdout();
    delete game;
}

} // namespace
