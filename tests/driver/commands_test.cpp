// The interpreter's effect on the engine state: clock arithmetic of "level" and "time", depth
// limits, folding and separators, take-backs, and the time-control countdown of received moves.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/notation.h"
#include "driver/commands.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "eval/tables.h"
#include "search/tt.h"

namespace {

class Interpreter : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        attack_init();
        pawn_masks_init();
        pst_tables_init();
        keys_init();
        adjacent_files_init();
        hash_alloc(2);
        game_ = new SearchThread();
    }
    static void TearDownTestSuite() {
        delete game_;
        game_ = nullptr;
    }
    void SetUp() override {
        engine.xboard_mode  = 1;
        engine.analyze_mode = 0;
        engine.force_mode   = 0;
        engine.game_over    = 0;
        engine.ply          = 0;
        engine.time_left = engine.increment = engine.moves_to_go = engine.level_moves = 0;
        engine.depth_limit = engine.move_time = 0;
        setboard(*game_, START_FEN);
        new_game(*game_);
        generate_legal_moves(*game_, true);
    }
    int run(const std::string& line) {
        std::strncpy(engine.line, line.c_str(), INPUT_SIZE - 1);
        const int result = parse_command(*game_);
        bool regenerate  = result == CMD_POSITION || result == CMD_FORCE;
        if (result == CMD_NONE) regenerate = received_move(*game_, engine.line) == LoopStep::regenerate;
        if (regenerate) generate_legal_moves(*game_, true);
        return result;
    }
    static SearchThread* game_;
};
SearchThread* Interpreter::game_ = nullptr;

TEST_F(Interpreter, ClockAndDepthSettings) {
    struct Row {
        const char* name;
        std::vector<std::string> lines;
        int time_left, increment, moves_to_go, level_moves, depth_limit;
    };
    const Row rows[] = {
        {"sudden death with increment", {"level 0 5 3"}, 300000, 3000, 0, 1000, 0},
        {"minutes and seconds", {"level 40 2:30 0"}, 150000, 0, 40, 40, 0},
        {"fractional increment", {"level 40 5 0.5"}, 300000, 500, 40, 40, 0},
        {"folded words", {"LEVEL 1 1:05 1.25"}, 65000, 1250, 1, 1, 0},
        {"level, then time in centiseconds", {"level 40 5 0", "time 30000"}, 300000, 0, 40, 40, 0},
        {"time with '='", {"time=123"}, 1230, 0, 0, 0, 0},
        // Values past the 32-bit milliseconds fields are held at their limits, never wrapped.
        {"base time past the field", {"level 1 99999999 0"}, INT32_MAX, 0, 1, 1, 0},
        {"increment past the field", {"level 0 5 1e300"}, 300000, INT32_MAX, 0, 1000, 0},
        {"negative increment past the field", {"level 0 5 -1e300"}, 300000, INT32_MIN, 0, 1000, 0},
        {"increment that is no number", {"level 0 5 nan"}, 300000, 0, 0, 1000, 0},
        {"time past the field", {"time 999999999"}, INT32_MAX, 0, 0, 0, 0},
        {"negative time past the field", {"time -999999999"}, INT32_MIN, 0, 0, 0, 0},
        {"missing level argument changes nothing", {"level 40 5"}, 0, 0, 0, 0, 0},
        {"sd", {"sd 5"}, 0, 0, 0, 0, 5},
        {"SD folded", {"SD 5"}, 0, 0, 0, 0, 5},
        {"sd=5", {"sd=5"}, 0, 0, 0, 0, 5},
        {"sd above 120", {"sd 200"}, 0, 0, 0, 0, 120},
        {"sd 0 hands over to the clock", {"sd 7", "sd 0"}, 0, 0, 0, 0, 0},
        {"analyze", {"analyze"}, 0, 0, 0, 0, 99},
        {"exit ends analysis with depth 14", {"analyze", "exit"}, 0, 0, 0, 0, 14},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        for (const auto& line : row.lines)
            EXPECT_EQ(run(line), CMD_DONE) << line;
        EXPECT_EQ(engine.time_left, row.time_left);
        EXPECT_EQ(engine.increment, row.increment);
        EXPECT_EQ(engine.moves_to_go, row.moves_to_go);
        EXPECT_EQ(engine.level_moves, row.level_moves);
        EXPECT_EQ(engine.depth_limit, row.depth_limit);
    }
}

TEST_F(Interpreter, TimeIsIgnoredOnTheConsole) {
    engine.xboard_mode = 0;
    run("time 500");
    EXPECT_EQ(engine.time_left, 0);
}

TEST_F(Interpreter, ResultCodesAndModes) {
    struct Row {
        const char* name;
        const char* line;
        int xboard, result;
    };
    const Row rows[] = {
        {"force on the console", "force", 0, CMD_DONE},
        {"force in xboard mode", "force", 1, CMD_FORCE},
        {"white", "white", 1, CMD_POSITION},
        {"undo at the start", "undo", 1, CMD_POSITION},
        {"beep on the console", "beep", 0, CMD_NONE},
        {"beep in xboard mode", "beep", 1, CMD_DONE},
        {"comment", "# go", 1, CMD_DONE},
        {"go is the loop's", "go", 1, CMD_NONE},
        {"new is the loop's", "new", 1, CMD_NONE},
        {"quit is the loop's", "quit", 1, CMD_NONE},
        {"FEN line", "8/8/8/8/8/8/k7/2K5 b - -", 1, CMD_POSITION},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        engine.xboard_mode = row.xboard;
        std::strcpy(engine.line, row.line);
        EXPECT_EQ(parse_command(*game_), row.result);
    }
}

TEST_F(Interpreter, SideToMoveKeepsTheKeyConsistent) {
    const uint64_t white_key = game_->key;
    run("black");
    EXPECT_EQ(game_->pos->side, BLACK);
    EXPECT_NE(game_->key, white_key);
    EXPECT_EQ(game_->keyhist[game_->histidx], game_->key);
    run("white");
    EXPECT_EQ(game_->key, white_key);
}

// An en-passant square belongs to the side that was to move: after "black" the black pawns beside
// it must not take "en passant" on it (which would remove their own pawn).
TEST_F(Interpreter, SideSwitchDropsTheEnPassantSquare) {
    engine.force_mode = 1;
    for (const char* m : {"e2e4", "d7d5", "e4e5", "f7f5"})
        run(m);
    ASSERT_EQ(game_->pos->epsq, 45); // f6, for White
    run("black");
    EXPECT_EQ(game_->pos->epsq, NO_SQUARE);
    EXPECT_EQ(game_->key, full_key(*game_->pos));
    for (uint32_t i = 0; i < engine.legal_count; ++i) {
        const Move m = engine.legal_moves.moves[i];
        if (m == 0 || move_to(m) != 45) continue;
        EXPECT_NE(piece_type(game_->pos->board[move_from(m)]), PAWN) << move_text(m);
    }
}

TEST_F(Interpreter, TakeBacksRestorePositionAndKeys) {
    engine.force_mode        = 1;
    const uint64_t start_key = game_->key;
    for (const char* m : {"e2e4", "e7e5", "g1f3"})
        run(m);
    ASSERT_EQ(engine.ply, 3);
    const uint64_t after_two = game_->keyhist[2];
    run("undo");
    EXPECT_EQ(engine.ply, 2);
    EXPECT_EQ(game_->key, after_two);
    EXPECT_EQ(game_->histidx, 2u);
    run("back 5");
    EXPECT_EQ(engine.ply, 0);
    EXPECT_EQ(game_->key, start_key);
    EXPECT_EQ(game_->histidx, 0u);
    // A position set up mid-game restarts the key history; taking back past it must not underflow.
    for (const char* m : {"e2e4", "e7e5"})
        run(m);
    run("4k3/8/8/8/8/8/8/4K3 w - -");
    run("undo 2");
    EXPECT_EQ(engine.ply, 0);
    EXPECT_EQ(game_->histidx, 0u);
    EXPECT_EQ(game_->key, start_key);
}

TEST_F(Interpreter, MovesToGoCountsBlackMoves) {
    engine.force_mode = 1;
    run("level 2 5 0");
    struct Step {
        const char* move;
        int moves_to_go;
    };
    const Step steps[] = {{"e2e4", 2}, {"e7e5", 1}, {"g1f3", 1}, {"b8c6", 2}, {"f1c4", 2}, {"g8f6", 1}};
    for (const auto& s : steps) {
        SCOPED_TRACE(s.move);
        run(s.move);
        EXPECT_EQ(engine.moves_to_go, s.moves_to_go);
    }
    EXPECT_EQ(engine.ply, 6);
}

} // namespace
