#include "board/perft.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <regex>

#include "board_helpers.h"

namespace {

constexpr const char* KIWIPETE   = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
constexpr const char* PROMOTIONS = "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -";

PerftTotals run_perft(const char* fen, int depth) {
    auto game    = game_from(fen);
    perft_totals = PerftTotals{};
    perft(*game, depth);
    return perft_totals;
}

// The suite is cut at this many leaves per (position, depth) so that the whole set stays at about
// 150 million leaves; every position still runs at depth 4 or more.
constexpr uint64_t SUITE_LEAF_LIMIT = 5'000'000;

} // namespace

TEST(Perft, TotalsOfKnownPositions) {
    struct Row {
        const char* name;
        const char* fen;
        int depth;
        PerftTotals want; // moves, captures (en passant not included), en passant, castles, promotes, mates
    };
    const Row rows[] = {
        {"start d1", START_FEN, 1, {20, 0, 0, 0, 0, 0, 0}},
        {"start d2", START_FEN, 2, {400, 0, 0, 0, 0, 0, 0}},
        {"start d3", START_FEN, 3, {8902, 34, 0, 0, 0, 0, 0}},
        {"start d5", START_FEN, 5, {4865609, 82719 - 258, 258, 0, 0, 8, 0}},
        {"kiwipete d2", KIWIPETE, 2, {2039, 351 - 1, 1, 91, 0, 0, 0}},
        {"kiwipete d3", KIWIPETE, 3, {97862, 17102 - 45, 45, 3162, 0, 0, 0}},
        {"promotions d3", PROMOTIONS, 3, {9467, 1021 - 4, 4, 0, 120, 0, 0}},
        {"mated", "R5k1/5ppp/8/8/8/8/8/6K1 b - -", 1, {0, 0, 0, 0, 0, 1, 0}},
        {"stalemated", "7k/5Q2/6K1/8/8/8/8/8 b - -", 1, {0, 0, 0, 0, 0, 1, 0}},
        // Four promotion pieces per pawn move; the promoting capture counts in both totals.
        {"promotion counts", "1r5k/P7/8/8/8/8/8/K7 w - -", 1, {9, 4, 0, 0, 8, 0, 0}},
        {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", 1, {7, 0, 1, 0, 0, 0, 0}},
        {"castles", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", 1, {26, 2, 0, 2, 0, 0, 0}},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const PerftTotals got = run_perft(r.fen, r.depth);
        EXPECT_EQ(got.moves, r.want.moves);
        EXPECT_EQ(got.captures, r.want.captures);
        EXPECT_EQ(got.en_passant, r.want.en_passant);
        EXPECT_EQ(got.castles, r.want.castles);
        EXPECT_EQ(got.promotes, r.want.promotes);
        EXPECT_EQ(got.checkmates, r.want.checkmates);
        EXPECT_EQ(got.checks, 0);
    }
}

TEST(Perft, LeavesTheGameRecordAsItWas) {
    auto game = game_from(KIWIPETE);
    Position before;
    std::memcpy(&before, game->pos, sizeof before);
    const uint64_t key = game->key;
    perft(*game, 3);
    EXPECT_EQ(game->pos, &game->stack[0]);
    EXPECT_EQ(game->histidx, 0u);
    EXPECT_EQ(game->key, key);
    EXPECT_EQ(std::memcmp(game->pos, &before, sizeof before), 0);
}

TEST(Perft, CommandPrintsTheFourTotalLines) {
    struct Row {
        const char* name;
        const char* fen;
        int depth;
        const char* want; // the time field replaced by T
    };
    const Row rows[] = {
        {"start d1", START_FEN, 1,
         " total moves = 20 time = T\n total captures 0\ttotal en passant 0\n"
         " total castles  0\ttotal checks 0\n total promotes 0\ttotal checkmates 0\n"},
        {"kiwipete d2", KIWIPETE, 2,
         " total moves = 2039 time = T\n total captures 351\ttotal en passant 1\n"
         " total castles  91\ttotal checks 0\n total promotes 0\ttotal checkmates 0\n"},
        {"start d5", START_FEN, 5,
         " total moves = 4865609 time = T\n total captures 82719\ttotal en passant 258\n"
         " total castles  0\ttotal checks 0\n total promotes 0\ttotal checkmates 8\n"},
        {"depth 0", START_FEN, 0, "usage: perft <maxply>\n"},
        {"negative depth", START_FEN, -3, "usage: perft <maxply>\n"},
        {"deeper than the stack", START_FEN, STACK_SIZE, "usage: perft <maxply>\n"},
    };
    const std::regex time_field("time = [0-9]+\\.[0-9]{6}\n");
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game          = game_from(r.fen);
        perft_totals.moves = 12345; // a previous run's totals must not leak into this one
        testing::internal::CaptureStdout();
        perft_command(*game, r.depth);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(std::regex_replace(out, time_field, "time = T\n"), r.want);
    }
}

TEST(Perft, Suite) {
    const auto suite = read_perft_suite();
    ASSERT_EQ(suite.size(), 120u);
    int deep = 0;
    for (const auto& e : suite) {
        auto game   = game_from(e.fen.c_str());
        int deepest = 0;
        for (const auto& [depth, leaves] : e.counts) {
            if (leaves > SUITE_LEAF_LIMIT) continue;
            SCOPED_TRACE("line " + std::to_string(e.line) + " depth " + std::to_string(depth) + ": " + e.fen);
            perft_totals = PerftTotals{};
            perft(*game, depth);
            EXPECT_EQ(static_cast<uint64_t>(perft_totals.moves), leaves);
            deepest = std::max(deepest, depth);
        }
        if (deepest >= 4) ++deep;
    }
    EXPECT_GE(deep, 100);
}
