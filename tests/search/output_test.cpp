#include "search/output.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "search/search_helpers.h"

namespace {

// Publishes what thread 0 would leave behind and returns the line the printer writes.
std::string capture_line(void (*printer)(), int depth, int score, uint64_t nodes, const char* const* pv,
                         int64_t ago_ms) {
    init_search_tables();
    fresh_records(1);
    sc.best_depth.store(depth);
    sc.best_score.store(score);
    set_thread_nodes(search_record(0), nodes);
    std::memset(sc.pv_table, 0, sizeof sc.pv_table);
    for (int i = 0; pv[i]; ++i)
        sc.pv_table[0][i] = text_to_move(pv[i]) | 0x00420000u;
    sc.search_start = get_ms() - ago_ms;
    testing::internal::CaptureStdout();
    printer();
    return testing::internal::GetCapturedStdout();
}

// The clock keeps running while the test does; the elapsed field may only be a little late.
constexpr int64_t CLOCK_SLACK_MS = 2000;

struct InfoRow {
    const char* name;
    int depth, score;
    uint64_t nodes;
    const char* pv[8];
    int64_t ago_ms;
    const char* head; // text before the time
    const char* tail; // text after the nps value
};

TEST(Output, InfoLine) {
    const InfoRow rows[] = {
        {"typical line",
         12,
         35,
         123456,
         {"e2e4", "e7e5", "g1f3", nullptr},
         1500,
         "info depth 12 score cp 35 nodes 123456 time ",
         " pv e2e4 e7e5 g1f3\n"},
        {"empty variation", 0, 0, 0, {nullptr}, 0, "info depth 0 score cp 0 nodes 0 time ", " pv\n"},
        {"mate scores stay centipawns, promotions carry their letter",
         7,
         -32761,
         5000000000ULL,
         {"e7e8n", "a2a1q", nullptr},
         20,
         "info depth 7 score cp -32761 nodes 5000000000 time ",
         " pv e7e8n a2a1q\n"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const std::string line = capture_line(print_info, r.depth, r.score, r.nodes, r.pv, r.ago_ms);
        const std::string head = r.head;
        ASSERT_EQ(line.compare(0, head.size(), head), 0) << line;
        long long time = -1, nps = -1;
        int used = 0;
        ASSERT_EQ(sscanf(line.c_str() + head.size(), "%lld nps %lld%n", &time, &nps, &used), 2) << line;
        EXPECT_GE(time, r.ago_ms);
        EXPECT_LT(time, r.ago_ms + CLOCK_SLACK_MS);
        // Printed as a 32-bit integer, whatever the 64-bit quotient.
        EXPECT_EQ(nps, static_cast<int32_t>(r.nodes * 1000 / static_cast<uint64_t>(time + 1)));
        EXPECT_EQ(line.substr(head.size() + static_cast<size_t>(used)), r.tail);
    }
}

struct ThinkingRow {
    const char* name;
    int depth, score;
    uint64_t nodes;
    const char* pv[12];
    const char* before_time; // depth and score
    const char* after_time;  // nodes and moves
};

TEST(Output, ThinkingLine) {
    const ThinkingRow rows[] = {
        {"six moves at most without a mate",
         9,
         31000,
         777,
         {"e2e4", "e7e5", "g1f3", "b8c6", "f1b5", "a7a6", "b5a4", "g8f6", nullptr},
         "9 31000 ",
         " 777 e2e4 e7e5 g1f3 b8c6 f1b5 a7a6\n"},
        {"a mate shows the whole line and a hash mark",
         5,
         32763,
         42,
         {"e2e4", "e7e5", "g1f3", "b8c6", "f1b5", "a7a6", "b5a4", "g8f6", nullptr},
         "5 32763 ",
         " 42 e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6#\n"},
        {"being mated counts too", 3, -32631 - 1, 1, {"h7h8r", nullptr}, "3 -32632 ", " 1 h7h8r#\n"},
        {"the threshold itself is not a mate", 3, -32631, 1, {"h7h8r", nullptr}, "3 -32631 ", " 1 h7h8r\n"},
        {"no variation", 0, 0, 0, {nullptr}, "0 0 ", " 0\n"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const std::string line = capture_line(print_thinking, r.depth, r.score, r.nodes, r.pv, 3000);
        const std::string head = r.before_time;
        ASSERT_EQ(line.compare(0, head.size(), head), 0) << line;
        long long centis = -1;
        int used         = 0;
        ASSERT_EQ(sscanf(line.c_str() + head.size(), "%lld%n", &centis, &used), 1) << line;
        EXPECT_GE(centis, 300);
        EXPECT_LT(centis, 300 + CLOCK_SLACK_MS / 10);
        EXPECT_EQ(line.substr(head.size() + static_cast<size_t>(used)), r.after_time);
    }
}

TEST(Output, NodesAreSummedOverThreads) {
    init_search_tables();
    fresh_records(3);
    set_thread_nodes(search_record(0), 10);
    set_thread_nodes(search_record(1), 200);
    set_thread_nodes(search_record(2), 3000);
    EXPECT_EQ(total_nodes(), 3210u);
    fresh_records(1);
}

} // namespace
