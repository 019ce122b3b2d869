#include "search/threads.h"

#include <gtest/gtest.h>

#include <string>

#include "search/search_helpers.h"

namespace {

struct CountRow {
    const char* name;
    int requested;
    int count;
};

TEST(Threads, CountIsClamped) {
    init_search_tables();
    const CountRow rows[] = {
        {"zero gives one", 0, 1},
        {"negative gives one", -5, 1},
        {"within range", 4, 4},
        {"above the maximum", 200, 128},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        testing::internal::CaptureStdout();
        set_threads(r.requested);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "threads=" + std::to_string(r.count) + "\n");
        EXPECT_EQ(thread_count(), r.count);
    }
    fresh_records(1);
}

TEST(Threads, ResizingKeepsExistingRecords) {
    init_search_tables();
    fresh_records(2);
    search_record(0).history[WHITE][12][28] = 111;
    search_record(1).cmhist[0][28][9][45]   = -222;
    SearchThread* first                     = &search_record(0);
    set_threads(4);
    EXPECT_EQ(&search_record(0), first);
    EXPECT_EQ(search_record(0).history[WHITE][12][28], 111);
    EXPECT_EQ(search_record(1).cmhist[0][28][9][45], -222);
    for (int i = 2; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(search_record(i).history[WHITE][12][28], 0);
        EXPECT_EQ(search_record(i).counter[0][28], 0u);
    }
    // Records dropped by a lower count come back empty.
    search_record(3).history[BLACK][1][2] = 5;
    set_threads(3);
    set_threads(4);
    EXPECT_EQ(search_record(3).history[BLACK][1][2], 0);
    fresh_records(1);
}

TEST(Threads, PreparedRecordTakesTheGameRoot) {
    auto game = game_from_fen(START_FEN);
    play(*game, "e2e4");
    play(*game, "e7e5");
    SearchThread& t         = search_record(0);
    t.killers[0][3]         = 1234;
    t.killers[1][60]        = 99;
    t.history[WHITE][6][21] = 77;
    prepare_record(t, *game, 0);
    EXPECT_EQ(t.pos, &t.stack[0]);
    EXPECT_EQ(t.key, game->key);
    EXPECT_EQ(t.histidx, game->histidx);
    for (uint32_t i = 0; i <= game->histidx; ++i)
        EXPECT_EQ(t.keyhist[i], game->keyhist[i]);
    EXPECT_EQ(std::memcmp(&t.stack[0], game->pos, sizeof(Position)), 0);
    EXPECT_EQ(t.killers[0][3], 0u);
    EXPECT_EQ(t.killers[1][60], 0u);
    EXPECT_EQ(t.history[WHITE][6][21], 77);
    t.history[WHITE][6][21] = 0;
}

// Several threads with a depth limit: thread 0 ends the search for all, every record was prepared
// from the game, and the result is thread 0's.
TEST(Threads, SearchWithSeveralThreads) {
    auto game = game_from_fen("r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3");
    fresh_records(3);
    reset_search_control(5);
    sc.search_start = get_ms();
    start_search(*game);
    join_search();
    EXPECT_EQ(sc.stop.load(), 1);
    EXPECT_EQ(sc.best_depth.load(), 5);
    EXPECT_NE(sc.pv_table[0][0] & SQUARE_BITS, 0u);
    for (int i = 0; i < thread_count(); ++i) {
        SCOPED_TRACE(i);
        const SearchThread& t = search_record(i);
        EXPECT_EQ(t.id, static_cast<uint32_t>(i));
        EXPECT_EQ(t.pos, &t.stack[0]);
        EXPECT_EQ(t.key, game->key);
        EXPECT_EQ(std::memcmp(t.stack[0].board, game->pos->board, 64), 0);
    }
    // The other threads may find the search over before they begin; thread 0 always searches.
    EXPECT_GT(thread_nodes(search_record(0)), 0u);
    fresh_records(1);
}

} // namespace
