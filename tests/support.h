#pragma once
// Shared by the property tests: the start-up tables, game records from FEN, the perft suite of
// tests/data and random legal games played from the suite.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bench/search_harness.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"

// The record is far too large for a test's stack.
inline std::unique_ptr<SearchThread> game_from(const std::string& fen, bool chess960 = false) {
    harness_tables_init();
    auto game = std::make_unique<SearchThread>();
    setboard(*game, fen.c_str(), chess960);
    return game;
}

// The position of the text, set up in a record kept for the next call.
inline const Position& position_of(const std::string& fen, bool chess960 = false) {
    static const auto game = game_from(START_FEN);
    setboard(*game, fen.c_str(), chess960);
    return game->stack[0];
}

inline std::string fen_of(const Position& p) {
    char text[100];
    fen_text(p, text);
    return text;
}

// One EPD line: the position, its ";Dn leaves" counts, and whether it is a Chess960 one.
struct SuiteEntry {
    std::string fen;
    std::vector<std::pair<int, uint64_t>> counts;
    bool chess960;
};

inline constexpr const char* CHESS960_SUITE = "perft960.epd";

// The standard suite, or another file of tests/data such as the Chess960 one.
inline std::vector<SuiteEntry> perft_suite(const std::string& file = "perft_suite.epd") {
    std::vector<SuiteEntry> suite;
    for (const std::string& line : epd_records((MORVAINE_SOURCE_DIR "/tests/data/" + file).c_str())) {
        SuiteEntry e{epd_position(line), {}, file == CHESS960_SUITE};
        for (size_t at = line.find(";D"); at != std::string::npos; at = line.find(";D", at + 1)) {
            std::istringstream fields(line.substr(at + 2));
            int depth       = 0;
            uint64_t leaves = 0;
            fields >> depth >> leaves;
            e.counts.emplace_back(depth, leaves);
        }
        suite.push_back(e);
    }
    return suite;
}

// Plays random legal games (fixed seed) from every position of both suites: visit(game, move)
// sees each position and the move chosen in it, which is then committed.
template <class Visit> void playouts(int games_per_start, int plies, Visit visit) {
    std::mt19937 rng(20240611);
    Move moves[MAX_MOVES];
    auto starts = perft_suite();
    for (const auto& entry : perft_suite(CHESS960_SUITE))
        starts.push_back(entry);
    for (const auto& entry : starts) {
        for (int g = 0; g < games_per_start; ++g) {
            auto game = game_from(entry.fen, entry.chess960);
            for (int ply = 0; ply < plies && !testing::Test::HasFatalFailure(); ++ply) {
                const uint32_t n = legal_moves(game->stack[0], moves);
                if (n == 0 || game->stack[0].rule50 >= 100) break;
                const Move m = moves[rng() % n];
                visit(*game, m);
                commit_move(*game, m);
            }
        }
    }
}
