// Whole games end to end: the engine answering moves on the console and in XBoard mode, force/go,
// single replies, a mate by the opponent, take-backs, pondering, analysis and the history limit.

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string MOVE_RE = "[a-h][1-8][a-h][1-8][nbrq]?";
// A thinking line after the depth: score, centiseconds, nodes, variation.
const std::string THINKING_RE = " -?[0-9]+ [0-9]+ [0-9]+(?: " + MOVE_RE + ")*#?\n";
const std::string TIMING_RE   = "elap: [0-9]+\\.[0-9]{6}\nTotal Nodes=[0-9]+ nps: [0-9]+\n";

std::string console_session(const std::vector<std::string>& input) {
    EngineRun run = run_engine(input);
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string head = STARTUP_LINES + NO_SETTINGS + "#White(1): ";
    EXPECT_EQ(run.out.compare(0, head.size(), head), 0) << run.out;
    const size_t tail = run.out.size() - END_OF_INPUT.size();
    EXPECT_EQ(run.out.substr(tail), END_OF_INPUT);
    return run.out.substr(head.size(), tail - head.size());
}

bool matches(const std::string& text, const std::string& pattern) {
    return std::regex_match(text, std::regex(pattern));
}

TEST(Game, ConsoleSessions) {
    struct Row {
        const char* name;
        std::vector<std::string> input;
        std::string pattern; // the whole output after the first prompt
    };
    const Row rows[] = {
        {"engine answers a move",
         {"sd 2", "e2e4"},
         "#White\\(1\\): #move_number = 0   \\(1\\)\ndepth score time nodes pv\n1" + THINKING_RE + "2" +
             THINKING_RE + "move " + MOVE_RE + "\n" + TIMING_RE + "#White\\(2\\): "},
        {"force then go moves for the side to move",
         {"sd 1", "force", "e2e4", "go", "list game"},
         "#White\\(1\\): #White\\(1\\): #move_number = 0   \\(1\\)\n#Black\\(1\\): depth score time nodes "
         "pv\n1" +
             THINKING_RE + "move (" + MOVE_RE + ")\n" + TIMING_RE +
             "#White\\(2\\): 1\\.e2e4 \\1 \n#White\\(2\\): "},
        {"single reply is played without a search",
         {"k7/8/8/8/8/8/1q6/K7 w - -", "go"},
         "#White\\(1\\): 0 -?[0-9]+ [0-9]+ 0 a1b2\nmove a1b2\nelap: [0-9]+\\.[0-9]{6}\nTotal Nodes=0 nps: 0\n"
         "#Black\\(1\\): "},
        {"mate by the opponent ends the game",
         {"sd 3", "k7/8/1K6/8/8/8/7Q/8 w - -", "h2h8", "a8b8"},
         "#White\\(1\\): #White\\(1\\): #move_number = 0   \\(1\\)\ndepth score time nodes pv\n([0-9]+" +
             THINKING_RE +
             ")*move \\(none\\)\ntellics kibitz Good Game!\n#Black\\(1\\): Illegal move: "
             "a8b8\n#Black\\(1\\): "},
        {"engine mates, then has no move for the other side",
         {"sd 3", "6k1/5ppp/8/8/8/8/8/R5K1 w - -", "go", "go", "list game", "h7h6"},
         "#White\\(1\\): #White\\(1\\): depth score time nodes pv\n([0-9]+" + THINKING_RE + ")+move a1a8\n" +
             TIMING_RE + "#Black\\(1\\): depth score time nodes pv\n([0-9]+" + THINKING_RE +
             ")*move \\(none\\)\ntellics kibitz Good Game!\n#Black\\(1\\): 1\\.a1a8 \n#Black\\(1\\): "
             "Illegal move: h7h6\n#Black\\(1\\): "},
        {"moves without their promotion letter are rejected",
         {"force", "8/P6k/8/8/8/8/8/K7 w - -", "a7a8", "a7a8q"},
         "#White\\(1\\): #White\\(1\\): Illegal move: a7a8\n#White\\(1\\): #move_number = 0   \\(1\\)\n"
         "#Black\\(1\\): "},
        {"pondering on the console after the engine's move",
         {"hard", "sd 1", "force", "e2e4", "e7e5", "go"},
         "pondering enabled\\.\n#White\\(1\\): #White\\(1\\): #White\\(1\\): #move_number = 0   \\(1\\)\n"
         "#Black\\(1\\): #move_number = 1   \\(2\\)\n#White\\(2\\): depth score time nodes pv\n1" +
             THINKING_RE + "move " + MOVE_RE + "\n" + TIMING_RE + "#pondering \\.\\.\\.\n(1" + THINKING_RE +
             ")?#ponder complete\n#Black\\(2\\): "},
        {"undo and back mid-game",
         {"sd 1", "e2e4", "undo", "undo", "savepos", "back 5"},
         "#White\\(1\\): #move_number = 0   \\(1\\)\ndepth score time nodes pv\n1" + THINKING_RE + "move " +
             MOVE_RE + "\n" + TIMING_RE +
             "#White\\(2\\): #Black\\(1\\): #White\\(1\\): "
             "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n#White\\(1\\): #White\\(1\\): "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string out = console_session(row.input);
        EXPECT_TRUE(matches(out, row.pattern)) << out;
    }
}

// Set-up text is never rejected, so whatever it describes must survive every command.
TEST(Game, OddPositionsSurviveEveryCommand) {
    const char* positions[] = {
        "8/8/8/8/8/8/8/8 w - -",
        "k7/8/8/8/8/8/8/K7 w KQkq e3",
        "kkkk/KKKK/8/8/8/8/8/8 w KQkq -",
        "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/8/8/k7/8/K7 w - -",
        "pppppppp/pppppppp/8/8/8/8/PPPPPPPP/PPPPPPPP w - -",
        "K7/8/8/8/8/8/8/k7 b - a3 0 1",
        "zzzz/////// w",
        "4k3/8/8/8/8/8/8/4K2R w KQkq -",
        "4k3/8/8/8/8/8/8/4QK2 w - -",
    };
    for (const char* fen : positions) {
        SCOPED_TRACE(fen);
        EngineRun run = run_engine(
            {fen, "list", "d", "sd 3", "go", "perft 2", "flip", "flop", "eval", "undo", "savepos", "go"});
        ASSERT_TRUE(run.exited);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(run.out.ends_with(END_OF_INPUT)) << run.out;
        EXPECT_EQ(run.err, "");
    }
}

TEST(Game, PositionsTheRulesCannotReachAreNotSearched) {
    struct Row {
        const char* name;
        std::vector<std::string> input;
    };
    const Row rows[] = {
        {"side that has moved is in check", {"4k3/8/8/8/8/8/8/4QK2 w - -", "list", "go"}},
        {"two white kings", {"4k3/8/8/8/8/8/8/K3K3 w - -", "list", "go"}},
        {"no black king", {"8/8/8/8/8/8/8/4K3 w - -", "list", "go"}},
        {"side to move switched into it", {"4k3/4Q3/8/8/8/8/8/4K3 b - -", "white", "list", "go"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string out = console_session(row.input);
        EXPECT_NE(
            out.find(" #  Move   Value  Capture  mv:\n#White(1): move (none)\ntellics kibitz Good Game!\n"),
            std::string::npos)
            << out;
        EXPECT_EQ(out.find("depth score time nodes pv"), std::string::npos) << out;
    }
}

// Engine against itself in XBoard mode: each "go" makes it move for the side to move.
TEST(Game, XBoardSelfPlayThroughGo) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("protover 2");
    ASSERT_TRUE(engine.wait_for("feature done=1\n"));
    engine.send("sd 2");
    std::vector<std::string> moves;
    const std::regex move_line("move (" + MOVE_RE + ")\n");
    for (int ply = 0; ply < 8; ++ply) {
        engine.send("go");
        ASSERT_TRUE(engine.wait_for("\nmove ")) << engine.output();
        ASSERT_TRUE(engine.wait_for("\n"));
    }
    engine.send("list game");
    EngineRun run = engine.finish();
    for (auto it = std::sregex_iterator(run.out.begin(), run.out.end(), move_line);
         it != std::sregex_iterator(); ++it)
        moves.push_back((*it)[1]);
    ASSERT_EQ(moves.size(), 8u) << run.out;
    std::string listed;
    for (size_t i = 0; i < moves.size(); ++i)
        listed += (i % 2 == 0 ? std::to_string(i / 2 + 1) + "." : "") + moves[i] + " ";
    EXPECT_NE(run.out.find("\n" + listed + "\n"), std::string::npos) << run.out;
    // No console lines once in XBoard mode: no prompts, no timing lines.
    const std::string after_handshake = run.out.substr(run.out.find("feature done=1\n"));
    EXPECT_EQ(after_handshake.find("Illegal"), std::string::npos) << run.out;
    EXPECT_EQ(after_handshake.find("#White"), std::string::npos) << run.out;
    EXPECT_EQ(after_handshake.find("elap:"), std::string::npos) << run.out;
    EXPECT_EQ(run.status, 0);
}

TEST(Game, XBoardAnswersMovesAndTakesBack) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("new");
    engine.send("sd 2");
    engine.send("e2e4");
    ASSERT_TRUE(engine.wait_for("#move_number = 0   (1)\n"));
    ASSERT_TRUE(engine.wait_for("\nmove ")) << engine.output();
    ASSERT_TRUE(engine.wait_for("\n"));
    engine.send("a2a3");
    ASSERT_TRUE(engine.wait_for("#move_number = 2   (2)\n")) << engine.output();
    ASSERT_TRUE(engine.wait_for("\nmove ")) << engine.output();
    ASSERT_TRUE(engine.wait_for("\n"));
    // Three take-backs leave the position after our first move.
    engine.send("undo");
    engine.send("undo");
    engine.send("undo");
    engine.send("savepos");
    ASSERT_TRUE(engine.wait_for("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -\n"))
        << engine.output();
    engine.send("remove");
    EngineRun run = engine.finish();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.find("Illegal move: e2e4"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("Illegal move: a2a3"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Illegal move: remove\n"), std::string::npos) << run.out;
}

TEST(Game, XBoardGamesToTheirEnd) {
    struct Row {
        const char* name;
        std::vector<std::string> moves; // sent one at a time after the set-up
        std::string ending;             // the last lines of the game
    };
    const Row rows[] = {
        {"the opponent mates the engine", {"h2h8"}, "move (none)\ntellics kibitz Good Game!\n"},
        {"a move after the end is refused",
         {"h2h8", "a8b8"},
         "move (none)\ntellics kibitz Good Game!\nIllegal move: a8b8\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EngineProcess engine;
        engine.send("xboard");
        engine.send("sd 3");
        engine.send("k7/8/1K6/8/8/8/7Q/8 w - -");
        for (const auto& m : row.moves)
            engine.send(m);
        engine.send("ping 4");
        ASSERT_TRUE(engine.wait_for("pong 4\n")) << engine.output();
        EngineRun run = engine.finish();
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.out.find("#move_number = 0   (1)\n"), std::string::npos) << run.out;
        const std::string tail = row.ending + "pong 4\n" + END_OF_INPUT;
        ASSERT_GE(run.out.size(), tail.size());
        EXPECT_EQ(run.out.substr(run.out.size() - tail.size()), tail) << run.out;
    }
}

TEST(Game, XBoardInputDuringTheEnginesSearch) {
    struct Row {
        const char* name;
        const char* line;   // sent while the engine thinks on a long clock
        const char* answer; // what must follow the engine's move
    };
    const Row rows[] = {
        {"ping is answered after the move", "ping 8", "pong 8\n"},
        {"? makes the engine move now", "?", ""},
        {"an unknown line after the move", "hello", "Illegal move: hello\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EngineProcess engine;
        engine.send("xboard");
        engine.send("level 0 60 0");
        engine.send("time 360000");
        engine.send("ping 1");
        ASSERT_TRUE(engine.wait_for("pong 1\n"));
        engine.send("e2e4");
        ASSERT_TRUE(engine.wait_for("#move_number = 0   (1)\n"));
        engine.send(row.line);
        ASSERT_TRUE(engine.wait_for("move ")) << engine.output();
        ASSERT_TRUE(engine.wait_for("\n"));
        engine.send("ping 9");
        ASSERT_TRUE(engine.wait_for(std::string(row.answer) + "pong 9\n")) << engine.output();
        EXPECT_TRUE(engine.finish().exited);
    }
}

TEST(Game, XBoardPonderSearchEndsWhenALineArrives) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("hard");
    engine.send("sd 99");
    engine.send("k7/pp6/8/1q6/8/8/7P/K7 b - -");
    engine.send("force");
    engine.send("b5b2");
    // The engine's only reply comes without a search; then it ponders with no depth in reach.
    engine.send("go");
    ASSERT_TRUE(engine.wait_for("move a1b2\n")) << engine.output();
    engine.send("ping 5");
    ASSERT_TRUE(engine.wait_for("pong 5\n")) << engine.output();
    EngineRun run = engine.finish();
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
}

TEST(Game, XBoardAnalysis) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("post");
    engine.send("analyze");
    ASSERT_TRUE(engine.wait_for("#analyzing 1\n"));
    // Thinking lines show the analysis is under way before anything is sent.
    ASSERT_TRUE(engine.wait_for("\n")) << engine.output();
    engine.send(".");
    ASSERT_TRUE(engine.wait_for("stat01: ")) << engine.output();
    engine.send("bk");
    ASSERT_TRUE(engine.wait_for("\t\n\n")) << engine.output();
    engine.send("e2e4");
    ASSERT_TRUE(engine.wait_for("#analyzing 1\n#move_number = 0   (1)\n")) << engine.output();
    engine.send("undo");
    engine.send("exit");
    engine.send("ping 3");
    ASSERT_TRUE(engine.wait_for("pong 3\n")) << engine.output();
    engine.send("savepos");
    ASSERT_TRUE(engine.wait_for("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n")) << engine.output();
    EngineRun run = engine.finish();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.find("\nmove "), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("Illegal"), std::string::npos) << run.out;
}

// Knight moves back and forth: every line a legal move, four plies to a cycle.
std::vector<std::string> shuffle_moves(int plies) {
    const char* cycle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    std::vector<std::string> moves;
    for (int i = 0; i < plies; ++i)
        moves.push_back(cycle[i % 4]);
    return moves;
}

TEST(Game, HistoryOverflowEndsTheProgram) {
    std::vector<std::string> input = {"xboard", "force"};
    for (const auto& m : shuffle_moves(770))
        input.push_back(m);
    input.push_back("ping 1");
    EngineRun run = run_engine(input);
    ASSERT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    const std::string tail = "#move_number = 768   (385)\n#move_number = 769   (386)\nERROR (Overflow)\n";
    ASSERT_GE(run.out.size(), tail.size());
    EXPECT_EQ(run.out.substr(run.out.size() - tail.size()), tail);
}

TEST(Game, EngineMovesTakeTheSameHistoryLimit) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("sd 1");
    engine.send("force");
    for (const auto& m : shuffle_moves(768))
        engine.send(m);
    engine.send("ping 2");
    ASSERT_TRUE(engine.wait_for("pong 2\n"));
    engine.send("go");
    ASSERT_TRUE(engine.wait_for("\nmove ")) << engine.take();
    ASSERT_TRUE(engine.wait_for("\n"));
    engine.send("go");
    ASSERT_TRUE(engine.wait_for("\nmove ")) << engine.take();
    ASSERT_TRUE(engine.wait_for("\nERROR (Overflow)\n")) << engine.take();
    EngineRun run = engine.finish();
    ASSERT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.ends_with("ERROR (Overflow)\n"));
}

} // namespace
