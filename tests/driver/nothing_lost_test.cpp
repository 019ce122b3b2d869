// Rejected lines change nothing: after an illegal move, a malformed or misused command, or a UCI
// move list that stops at a bad token, the game position, its key history and the move history
// are exactly those the accepted input left.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "bench/search_harness.h"
#include "board/fen.h"
#include "driver/commands.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "driver/transcript.h"
#include "driver/uci.h"

namespace {

// Everything a rejected line must leave alone, compared byte for byte.
struct GameState {
    Position position;
    uint64_t key;
    uint32_t histidx;
    std::vector<uint64_t> keys;
    int ply;
    std::vector<Move> moves;
    std::vector<std::string> positions_before; // FEN of each recorded ply's position
    int game_over;
};

GameState state_of(const SearchThread& game) {
    GameState s{*game.pos, game.key, game.histidx, {}, engine.ply, {}, {}, engine.game_over};
    s.keys.assign(game.keyhist, game.keyhist + game.histidx + 1);
    for (int n = 1; n <= engine.ply; ++n) {
        s.moves.push_back(engine.move_history[n]);
        char fen[100];
        fen_text(engine.position_history[n], fen);
        s.positions_before.emplace_back(fen);
    }
    return s;
}

void expect_same(const GameState& a, const GameState& b) {
    EXPECT_EQ(std::memcmp(&a.position, &b.position, sizeof(Position)), 0);
    EXPECT_EQ(a.key, b.key);
    EXPECT_EQ(a.histidx, b.histidx);
    EXPECT_EQ(a.keys, b.keys);
    EXPECT_EQ(a.ply, b.ply);
    EXPECT_EQ(a.moves, b.moves);
    EXPECT_EQ(a.positions_before, b.positions_before);
    EXPECT_EQ(a.game_over, b.game_over);
}

class NothingLost : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        harness_tables_init();
        testing::internal::CaptureStdout();
        free_threads();
        set_threads(1);
        hash_alloc(2);
        testing::internal::GetCapturedStdout();
        game_ = new SearchThread();
    }
    static void TearDownTestSuite() {
        delete game_;
        game_ = nullptr;
    }
    void SetUp() override {
        reset_search_control();
        engine.uci_mode     = 0;
        engine.analyze_mode = 0;
        engine.game_over    = 0;
        engine.ply          = 0;
        engine.depth_limit  = 1;
        setboard(*game_, START_FEN);
        new_game(*game_);
        generate_legal_moves(*game_, true);
    }
    void TearDown() override {
        engine.xboard_mode = 0;
        engine.uci_mode    = 0;
        engine.force_mode  = 0;
    }
    // One line through the interpreter and, when it is no command, the game driver; output kept.
    static std::string run(const std::string& line) {
        testing::internal::CaptureStdout();
        std::snprintf(engine.line, INPUT_SIZE, "%s", line.c_str());
        const int result = parse_command(*game_);
        bool regenerate  = result == CMD_POSITION || result == CMD_FORCE;
        if (result == CMD_NONE) regenerate = received_move(*game_, engine.line) == LoopStep::regenerate;
        if (regenerate) generate_legal_moves(*game_, true);
        return testing::internal::GetCapturedStdout();
    }
    static SearchThread* game_;
};
SearchThread* NothingLost::game_ = nullptr;

// A game of a few plies (a capture, castling rights lost, an en-passant square on the board),
// then lines that must all be turned away without a trace.
TEST_F(NothingLost, RejectedLinesInTheXBoardAndConsoleDialects) {
    const char* game_moves[] = {"e2e4", "d7d5", "e4d5", "g8f6", "e1e2", "c7c5"};
    struct Row {
        const char* name;
        std::string line;
    };
    const Row rows[] = {
        {"move of the wrong side", "a7a6"},
        {"move onto an own piece", "d1d2"},
        {"impossible move", "e2e5"},
        {"promotion letter on an en-passant capture", "d5c6q"},
        {"square names off the board", "z9y0"},
        {"three characters", "e2e"},
        {"binary garbage", "\x01\x7f\xff\xfe"},
        {"bytes above 127 in a move", "\xe5\x32\xe5\x34"},
        {"go with a trailing blank", "go "},
        {"blank line of spaces", "   "},
        {"perft without depth", "perft"},
        {"perft of depth 0", "perft 0"},
        {"sd without depth", "sd"},
        {"level short of arguments", "level 40 5"},
        {"hash without size", "hash"},
        {"hash of size 0", "hash 0"},
        {"cores without count", "cores"},
        {"setboard without a position", "setboard 8/8/8 w"},
        {"undo of nothing", "undo 0"},
        {"back of nothing", "back -3"},
        {"bench of a test that does not exist", "bench 9"},
        {"mirror with castling rights left", "flop"},
        {"comment", "# e2e4"},
        {"uci after xboard", "uci"},
        {"unknown word", "castle"},
        {"long line", std::string(2000, 'x')},
    };
    run("xboard");
    run("force");
    for (const char* m : game_moves)
        run(m);
    ASSERT_EQ(engine.ply, 6);
    ASSERT_EQ(game_->pos->epsq, 42); // c6
    const GameState before = state_of(*game_);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        run(r.line);
        expect_same(state_of(*game_), before);
    }
    // The same on the console (where "beep" and "bogus" are taken as moves and rejected).
    engine.xboard_mode = 0;
    for (const char* line : {"beep", "bogus", "a7a6", "help", "list", "list game", "savepos", "d"}) {
        SCOPED_TRACE(line);
        run(line);
        expect_same(state_of(*game_), before);
    }
}

TEST_F(NothingLost, RejectedMovesAtGameOverAndInSetUpPositions) {
    struct Row {
        const char* name;
        const char* fen;
        const char* line;
    };
    const Row rows[] = {
        {"promotion without its letter", "8/P6k/8/8/8/8/8/K7 w - -", "a7a8"},
        {"move after mate", "k7/1Q6/1K6/8/8/8/8/8 b - -", "a8b8"},
        {"move in an unplayable position", "kK6/8/8/8/8/8/8/8 w - -", "b8c8"},
        {"castling through check", "r3k2r/8/8/8/8/8/5r2/R3K2R w KQkq -", "e1g1"},
        {"en passant not on offer", "4k3/8/8/3pP3/8/8/8/4K3 w - -", "e5d6"},
    };
    run("force");
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        run(r.fen);
        const GameState before = state_of(*game_);
        const std::string out  = run(r.line);
        EXPECT_EQ(out, std::string("Illegal move: ") + r.line + "\n");
        expect_same(state_of(*game_), before);
    }
}

// A UCI move list ends at its first token that is no legal move; what the position command leaves
// is exactly the position of the moves before it, with their keys.
TEST_F(NothingLost, UciMoveListsStopAtTheFirstBadToken) {
    struct Row {
        const char* name;
        std::string good, bad;
    };
    const Row rows[] = {
        {"illegal move", "position startpos moves e2e4 e7e5", "position startpos moves e2e4 e7e5 e1e3 g1f3"},
        {"garbage token", "position startpos moves e2e4 e7e5",
         "position startpos moves e2e4 e7e5 xyzzy g1f3"},
        {"missing promotion letter", "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves",
         "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves a7a8 h7g7"},
        {"upper-case promotion letter", "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves",
         "position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves a7a8Q"},
        {"move too long", "position startpos moves g1f3", "position startpos moves g1f3 g8f6x"},
        {"blanks at the end", "position startpos moves d2d4 d7d5", "position startpos moves d2d4 d7d5   "},
        {"repetition kept in the keys", "position startpos moves g1f3 g8f6 f3g1 f6g8 g1f3",
         "position startpos moves g1f3 g8f6 f3g1 f6g8 g1f3 g1f3"},
    };
    engine.uci_mode = 1;
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        uci_command(*game_, (r.good + "\n").c_str());
        const GameState good = state_of(*game_);
        uci_command(*game_, "position startpos moves a2a4\n");
        uci_command(*game_, (r.bad + "\n").c_str());
        expect_same(state_of(*game_), good);
    }
}

// The same from outside: a console game, a barrage of bad lines, and the game list and position
// printed before and after are the same text.
TEST(NothingLostTranscript, GameListAndPositionSurviveBadLines) {
    const std::vector<std::string> game = {"force", "e2e4", "c7c5", "g1f3", "d7d6"};
    const std::vector<std::string> bad  = {
         "e2e4",   "xboardd", "sd",   "level 1", "perft", "go ", "a", std::string(3000, 'x'),
         "undo 0", "back 0",  "flop", "",        "e7e5"};
    const std::vector<std::string> probe = {"savepos", "list game"};
    std::vector<std::string> lines       = game;
    lines.insert(lines.end(), probe.begin(), probe.end());
    EngineProcess engine;
    for (const auto& l : lines)
        engine.send(l);
    ASSERT_TRUE(engine.wait_for("1.e2e4 c7c5 2.g1f3 d7d6 \n"));
    // The position and the game list, up to the end of the list (the prompt after it may or may
    // not have arrived yet).
    const std::string list = "1.e2e4 c7c5 2.g1f3 d7d6 \n";
    auto shown_in          = [&](const std::string& out) {
        const size_t from = out.rfind("rnbqkbnr");
        return out.substr(from, out.find(list, from) + list.size() - from);
    };
    const std::string shown = shown_in(engine.output());
    // The long line comes back in two pieces, each rejected as a move of its own.
    for (const auto& l : bad)
        engine.send(l);
    for (const auto& l : probe)
        engine.send(l);
    ASSERT_TRUE(engine.wait_for("1.e2e4 c7c5 2.g1f3 d7d6 \n"));
    const std::string after = engine.output();
    EXPECT_EQ(shown_in(after), shown) << after;
    EXPECT_EQ(count_of(after, "Illegal move: "), 7);
    EngineRun run = engine.finish();
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
}

} // namespace
