// What real GUIs, servers and people send that a well-behaved client would not: lines past the
// buffer, NUL bytes, binary garbage, bare carriage returns, storms of commands, games past the
// history limits, pipes closed under the engine, impossible hash sizes and lines that would start
// the same analysis for ever. The engine must answer, end quietly or refuse; it never crashes,
// hangs, writes to stderr or dies by a signal.

#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string BANNER = STARTUP_LINES + NO_SETTINGS;

void expect_clean_end(const EngineRun& run) {
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.ends_with(END_OF_INPUT))
        << run.out.substr(run.out.size() > 400 ? run.out.size() - 400 : 0);
}

// Knight moves back and forth, four plies to a cycle.
std::string shuffle_moves(int plies) {
    const char* cycle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    std::string moves;
    for (int i = 0; i < plies; ++i)
        moves += std::string(" ") + cycle[i % 4];
    return moves;
}

TEST(HostileInput, OddBytesAndLineEnds) {
    using namespace std::string_literals;
    struct Row {
        const char* name;
        std::string input;
        std::string after_banner; // the whole output between the banner lines and the end of input
    };
    const std::string features = "feature ping=1 setboard=1 san=0 time=1 draw=0\n"
                                 "feature sigint=0 sigterm=0 reuse=0 analyze=1\n"
                                 "feature name=1 usermove=0\n"
                                 "feature playother=0 colors=0 memory=1 smp=1\n"
                                 "feature nps=0 ics=1 debug=1\n"
                                 "feature done=1\n";
    const std::string start    = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n";
    const Row rows[]           = {
                  {"carriage returns alone", "xboard\rprotover 2\rping 3\r", "#White(1): \n" + features + "pong 3\n"},
                  {"carriage return and newline", "xboard\r\nprotover 2\r\nping 3\r\n",
                   "#White(1): \n" + features + "pong 3\n"},
                  {"NUL byte ends what the line shows", "xboard\nping 5\0 garbage\n"s, "#White(1): \npong 5\n"},
                  {"line of NUL bytes is empty", "\0\0\0\nsavepos\n"s,
                   "#White(1): #White(1): " + start + "#White(1): "},
                  {"line past the buffer comes in pieces", "force\n" + std::string(2047, 'x') + "e2e4\nsavepos\n",
                   "#White(1): #White(1): Illegal move: " + std::string(2047, 'x') +
                       "\n#White(1): #move_number = 0   (1)\n#Black(1): "
                                 "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -\n#Black(1): "},
                  {"bytes above 127 fold to nothing", "\xc9\xd8\xc2\xcf\xc1\xd2\xc4\n",
                   "#White(1): Illegal move: \xc9\xd8\xc2\xcf\xc1\xd2\xc4\n#White(1): "},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EngineProcess engine;
        engine.send_raw(r.input);
        const EngineRun run = engine.finish();
        expect_clean_end(run);
        ASSERT_GE(run.out.size(), BANNER.size() + END_OF_INPUT.size());
        EXPECT_EQ(run.out.substr(BANNER.size(), run.out.size() - BANNER.size() - END_OF_INPUT.size()),
                  r.after_banner);
    }
}

// Deterministic garbage (no line begins a quit: every q is replaced), then a ping that must still
// be answered, in both dialects.
TEST(HostileInput, BinaryGarbageThenAPing) {
    std::string garbage;
    uint32_t state = 12345;
    for (int i = 0; i < 65536; ++i) {
        state  = state * 1103515245u + 12345u;
        char c = static_cast<char>(state >> 23);
        garbage += c == 'q' || c == 'Q' ? 'x' : c;
    }
    for (const char* dialect : {"", "xboard"}) {
        SCOPED_TRACE(*dialect ? dialect : "console");
        EngineProcess engine;
        engine.send("sd 1");
        if (*dialect) engine.send(dialect);
        engine.send_raw(garbage);
        engine.send("\nxboard\nping 77");
        ASSERT_TRUE(engine.wait_for("pong 77\n")) << engine.output().substr(0, 300);
        expect_clean_end(engine.finish());
    }
}

TEST(HostileInput, CommandStorms) {
    {
        SCOPED_TRACE("1000 new");
        std::vector<std::string> lines = {"xboard", "hash 2"};
        lines.insert(lines.end(), 1000, "new");
        lines.push_back("ping 1");
        const EngineRun run = run_engine(lines);
        expect_clean_end(run);
        EXPECT_EQ(count_of(run.out, "mo.ini file not found\n"), 1001);
        EXPECT_TRUE(run.out.ends_with("pong 1\n" + END_OF_INPUT));
    }
    {
        SCOPED_TRACE("1000 go depth 1 in UCI");
        std::vector<std::string> lines = {"uci", "setoption name Hash value 2",
                                          "position startpos moves e2e4"};
        lines.insert(lines.end(), 1000, "go depth 1");
        lines.push_back("isready");
        EngineProcess engine;
        for (const auto& l : lines)
            engine.send(l);
        ASSERT_TRUE(engine.wait_for("readyok\n"));
        EXPECT_EQ(count_of(engine.output(), "\nbestmove "), 1000);
        EXPECT_EQ(count_of(engine.output(), "info depth 1 "), 2000); // the iteration's line and the final one
        engine.send("quit");
        const EngineRun run = engine.finish();
        EXPECT_TRUE(run.exited);
        EXPECT_EQ(run.err, "");
    }
}

// A UCI move list far longer than the key history: the moves that fit are played, the search still
// has room for its plies, and the answer comes.
TEST(HostileInput, UciMoveListsPastTheHistory) {
    for (int plies : {1000, 3000}) {
        SCOPED_TRACE(plies);
        EngineProcess engine;
        engine.send("uci");
        engine.send("position startpos moves" + shuffle_moves(plies));
        engine.send("go depth 4");
        engine.send("isready");
        ASSERT_TRUE(engine.wait_for("readyok\n"));
        EXPECT_TRUE(std::regex_search(engine.output(), std::regex("\nbestmove [a-h][1-8][a-h][1-8]\n")))
            << engine.output();
        engine.send("quit");
        EXPECT_EQ(engine.finish().err, "");
    }
}

// Standard input closed while the engine searches: the search ends (XBoard at once, the console at
// its depth), and the end of input is reported the usual way.
TEST(HostileInput, InputClosedDuringASearch) {
    struct Row {
        const char* name;
        std::vector<std::string> lines;
        const char* answer; // printed before the end of input
    };
    const Row rows[] = {
        {"xboard move search", {"xboard", "level 0 60 0", "go"}, "\nmove "},
        {"xboard analysis", {"xboard", "analyze"}, "#analyzing 1\n"},
        {"xboard ponder search", {"xboard", "hard", "sd 2", "force", "e2e4", "go"}, "\nmove "},
        {"console search", {"sd 4", "go"}, "\nmove "},
        {"console analysis", {"analyze"}, "Total Nodes="},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const EngineRun run = run_engine(r.lines);
        expect_clean_end(run);
        EXPECT_NE(run.out.find(r.answer), std::string::npos) << run.out;
    }
}

// A GUI that goes away closes the engine's output first: the engine ends by itself, quietly and
// with status 0, not by a signal, even while its input stays open.
TEST(HostileInput, OutputClosedByTheGui) {
    const std::vector<std::vector<std::string>> sessions = {
        {"sd 3", "go", "savepos"},
        {"xboard", "sd 3", "go", "ping 1"},
        {"xboard", "post", "analyze", "e2e4", "exit", "ping 2"},
        {"uci", "go depth 3", "isready"},
    };
    for (const auto& lines : sessions) {
        SCOPED_TRACE(lines[0] + " " + lines[1]);
        EngineProcess engine;
        ASSERT_TRUE(engine.wait_for("hash=128MB\n"));
        engine.close_output();
        for (const auto& l : lines)
            engine.send(l);
        EXPECT_EQ(engine.wait_exit(30000), 0);
        EXPECT_EQ(engine.finish().err, "");
    }
}

// Sizes no machine can give end with the allocation message and status 1, before any memory is
// touched (so never by the kernel's out-of-memory killer).
TEST(HostileInput, HashRequestsThatCannotBeMet) {
    const std::vector<std::vector<std::string>> sessions = {
        {"hash 2000000000"},
        {"xboard", "memory 2000000000"},
        {"uci", "setoption name Hash value 2000000000"},
    };
    for (const auto& lines : sessions) {
        SCOPED_TRACE(lines.back());
        const EngineRun run = run_engine(lines);
        EXPECT_TRUE(run.exited);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "");
        EXPECT_TRUE(run.out.ends_with(" hash allocation error - exiting ...\n")) << run.out;
    }
}

// An analysis that ends at its own depth limit ("sd" sent during analysis) has no new line
// waiting: the engine must go back to reading instead of starting the same analysis again.
TEST(HostileInput, DepthLimitedAnalysisGoesBackToReading) {
    EngineProcess engine;
    engine.send("xboard");
    engine.send("analyze");
    ASSERT_TRUE(engine.wait_for("#analyzing 1\n"));
    engine.send("sd 2");
    engine.send("ping 9");
    ASSERT_TRUE(engine.wait_for("pong 9\n", 20000)) << engine.output().substr(0, 2000);
    // "analyze", then "sd 2" and "ping 9" each restart the analysis once.
    EXPECT_EQ(count_of(engine.output(), "#analyzing 1\n"), 3);
    engine.send("exit");
    engine.send("savepos");
    ASSERT_TRUE(engine.wait_for("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n", 20000));
    expect_clean_end(engine.finish());
}

// The line that ends an analysis of a position without a move (mated, or no position a game can
// reach) is still carried out: "exit" must leave analysis mode, so the ping after it is answered
// outside the analysis.
TEST(HostileInput, LineEndingAnAnalysisOfAFinishedGame) {
    for (const char* fen : {"setboard kK6/8/8/8/8/8/8/8 w - -", "setboard k7/1Q6/1K6/8/8/8/8/8 b - -"}) {
        SCOPED_TRACE(fen);
        EngineProcess engine;
        engine.send("xboard");
        engine.send(fen);
        engine.send("analyze");
        ASSERT_TRUE(engine.wait_for("#analyzing 1\n"));
        engine.send("exit");
        engine.send("ping 2");
        ASSERT_TRUE(engine.wait_for("pong 2\n")) << engine.output();
        EXPECT_EQ(count_of(engine.output(), "#analyzing"), 1) << engine.output();
        expect_clean_end(engine.finish());
    }
}

} // namespace
