// The UCI dialect end to end: the engine is started, "uci" and the lines of each case are piped in,
// and what it prints is compared with the exact text (or, for searches, with the exact formats).

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string PROMPT     = "#White(1): ";
const std::string UCI_ENTRY  = "threads=1\n"
                               "hash=128MB\n"
                               "id name Morvaine 2.0.34 SSE POPCNT\n"
                               "id author the Morvaine authors\n"
                               "option name Hash type spin default 128 min 1 max 32768\n"
                               "option name Threads type spin default 1 min 1 max 128\n"
                               "uciok\n";
const std::string BEFORE_UCI = STARTUP_LINES + NO_SETTINGS + PROMPT + UCI_ENTRY;

// Runs "uci", the lines and "quit"; returns what came after the UCI entry lines.
std::string uci_session(const std::vector<std::string>& lines) {
    std::vector<std::string> input{"uci"};
    input.insert(input.end(), lines.begin(), lines.end());
    input.push_back("quit");
    const EngineRun run = run_engine(input);
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.err, "");
    if (run.out.compare(0, BEFORE_UCI.size(), BEFORE_UCI) != 0) {
        ADD_FAILURE() << "entry lines differ:\n" << run.out;
        return run.out;
    }
    return run.out.substr(BEFORE_UCI.size());
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

struct ExactRow {
    const char* name;
    std::vector<std::string> input;
    std::string expected;
};

TEST(UciTranscript, ExactReplies) {
    const ExactRow rows[] = {
        {"entry lines then quit", {}, ""},
        {"isready", {"isready"}, "readyok\n"},
        {"quitting is quit", {"isready", "quitting", "isready"}, "readyok\n"},
        {"hash sizes",
         {"setoption name Hash value 64", "setoption name Hash value 65", "setoption name Hash value 0",
          "setoption name Hash value 1"},
         "hash=64MB\nhash=64MB\nhash=2MB\n"},
        {"hash without a number",
         {"setoption name Hash value", "setoption name Hash value big", "setoption name Hash value -8"},
         ""},
        {"threads",
         {"setoption name Threads value 500", "setoption name Threads value 0",
          "setoption name Threads value 4", "setoption name Threads value"},
         "threads=128\nthreads=1\nthreads=4\nthreads=1\n"},
        {"ignored lines",
         {"uci", "debug on", "register later", "stop", "ponderhit", "", "  isready",
          "setoption name Ponder value true", "setoption name hash value 8", "Isready", "ucinewgame",
          "position startpos moves e2e4", "position fen 8/8/8/8/8/8/8/K1k5 w - -"},
         ""},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(uci_session(r.input), r.expected);
    }
}

// The engine keeps reading after the end of its input in UCI mode; it does not leave by itself.
TEST(UciTranscript, EndOfInputDoesNotEndTheLoop) {
    EngineProcess engine;
    engine.send("uci");
    engine.send("isready");
    ASSERT_TRUE(engine.wait_for("readyok\n"));
    const EngineRun run = engine.finish(1500);
    EXPECT_FALSE(run.exited);
    EXPECT_EQ(run.out, BEFORE_UCI + "readyok\n");
}

struct SearchResult {
    std::vector<std::string> info; // every info line
    std::string bestmove;
    int last_depth       = -1;
    int last_score       = 0;
    long long last_nodes = -1;
};

// Splits the output of one search into its info lines and answer, checking each info line's
// format exactly as it is printed.
SearchResult read_search(const std::string& out) {
    static const std::regex info_line(
        R"(info depth (\d+) score cp (-?\d+) nodes (\d+) time (\d+) nps (\d+) pv((?: [a-h][1-8][a-h][1-8][nbrq]?)*))");
    SearchResult r;
    for (const auto& line : lines_of(out)) {
        std::smatch m;
        if (line.rfind("info ", 0) == 0) {
            EXPECT_TRUE(std::regex_match(line, m, info_line)) << line;
            if (m.empty()) continue;
            r.info.push_back(line);
            r.last_depth = std::stoi(m[1]);
            r.last_score = std::stoi(m[2]);
            r.last_nodes = std::stoll(m[3]);
        } else if (line.rfind("bestmove ", 0) == 0) {
            EXPECT_TRUE(r.bestmove.empty()) << "two answers";
            r.bestmove = line.substr(9);
        }
    }
    return r;
}

// No input is read while a search runs: "stop" does not shorten it and "isready" is answered
// after the move.
TEST(UciTranscript, LinesDuringASearchWaitForTheAnswer) {
    const std::string out = uci_session({"position startpos", "go depth 5", "stop", "isready"});
    const auto lines      = lines_of(out);
    ASSERT_GE(lines.size(), 3u) << out;
    EXPECT_EQ(lines.back(), "readyok");
    EXPECT_EQ(lines[lines.size() - 2].rfind("bestmove ", 0), 0u) << out;
    EXPECT_EQ(read_search(out).last_depth, 5);
}

TEST(UciTranscript, DepthSearchLines) {
    const SearchResult r = read_search(uci_session({"position startpos moves e2e4 e7e5", "go depth 6"}));
    // One line per completed depth, then the final line again.
    ASSERT_EQ(r.info.size(), 7u);
    for (int d = 1; d <= 6; ++d)
        EXPECT_EQ(r.info[d - 1].rfind("info depth " + std::to_string(d) + " ", 0), 0u);
    EXPECT_EQ(r.info[6].rfind("info depth 6 ", 0), 0u);
    EXPECT_EQ(r.last_depth, 6);
    // The answer is a White move of the position after 1.e4 e5 and leads the variation.
    ASSERT_EQ(r.bestmove.size(), 4u);
    EXPECT_TRUE(r.bestmove[1] == '1' || r.bestmove[1] == '2') << r.bestmove;
    EXPECT_NE(r.info[6].find(" pv " + r.bestmove), std::string::npos);
}

// Several threads through the real front end: every depth reported once by thread 0, one answer.
TEST(UciTranscript, SeveralThreads) {
    const std::string out =
        uci_session({"setoption name Threads value 4", "position startpos moves d2d4", "go depth 8"});
    EXPECT_EQ(out.rfind("threads=4\n", 0), 0u) << out;
    const SearchResult r = read_search(out);
    ASSERT_EQ(r.info.size(), 9u) << out;
    EXPECT_EQ(r.last_depth, 8);
    ASSERT_EQ(r.bestmove.size(), 4u) << out;
    EXPECT_TRUE(r.bestmove[1] == '7' || r.bestmove[1] == '8') << "not a Black move: " << r.bestmove;
}

struct ClockRow {
    const char* name;
    std::vector<std::string> input;
};

// Only the side to move's clock counts. With 1 ms and an increment on it every soft limit is 1 ms,
// so thread 0 starts no iteration after depth 14 (the first one that consults them), and the hard
// limit, should it strike first, cuts depth 14 itself: the last depth is 14 either way. Had the
// other clock (ten minutes, no increment) been read, the search would go on deeper.
TEST(UciTranscript, ClockOfTheSideToMove) {
    // clang-format off
    const ClockRow rows[] = {
        {"black to move reads btime",
         {"position fen rnb2rk1/pp1nppbp/1qp3p1/P2pP3/3P4/2N1BN1P/1PP1BPP1/R2QK2R b KQ - 0 1",
          "go wtime 600000 btime 1 winc 0 binc 500"}},
        {"white to move reads wtime",
         {"position fen 3r1k2/4npp1/1ppr3p/p6P/P2PPPP1/1NR5/5K2/2R5 w - - 0 1",
          "go wtime 1 btime 600000 winc 500 binc 0"}},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const SearchResult s = read_search(uci_session(r.input));
        EXPECT_EQ(s.last_depth, 14);
        EXPECT_EQ(s.bestmove.size(), 4u);
    }
}

struct MoveListRow {
    const char* name;
    std::vector<std::string> input;
    std::string bestmove;
    int score; // ANY when not checked
};

constexpr int ANY = -100000;

TEST(UciTranscript, PositionsAndMoveLists) {
    const std::string long_shuffle = [] {
        std::string s = "position startpos moves";
        for (int i = 0; i < 250; ++i)
            s += " g1f3 g8f6 f3g1 f6g8";
        return s;
    }();
    const MoveListRow rows[] = {
        {"mate in one after a move list",
         {"position startpos moves f2f3 e7e5 g2g4", "go depth 3"},
         "d8h4",
         32766},
        {"malformed token ends the list",
         {"position startpos moves f2f3 e7e5 g2g4 zz d8h4", "go depth 3"},
         "d8h4",
         32766},
        {"illegal token ends the list",
         {"position startpos moves f2f3 e7e5 g2g4 e2e4 d8h4", "go depth 3"},
         "d8h4",
         32766},
        {"extra characters make a bad token",
         {"position startpos moves f2f3 e7e5 g2g4 d8h4x", "go depth 3"},
         "d8h4",
         32766},
        {"mated side has no move",
         {"position startpos moves f2f3 e7e5 g2g4 d8h4", "go depth 3"},
         "(none)",
         ANY},
        {"promotion needs its letter",
         {"position fen 8/P6k/8/8/8/8/8/K7 w - - 0 1 moves a7a8", "go depth 2"},
         "a7a8q",
         ANY},
        {"fen with its own mate in one",
         {"position fen 6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1", "go depth 2"},
         "d1d8",
         32766},
        {"trailing blanks after the list",
         {"position startpos moves f2f3 e7e5 g2g4   ", "go depth 3"},
         "d8h4",
         32766},
        {"broken set-up is not searched",
         {"position fen 4k3/8/8/8/8/8/4q3/4K3 b - -", "go depth 4"},
         "(none)",
         0},
        {"no king is taken from a broken set-up",
         {"position fen 4k3/8/8/8/8/8/4q3/4K3 b - - moves e2e1", "go depth 4"},
         "(none)",
         0},
        {"ucinewgame returns to the start",
         {"position startpos moves f2f3 e7e5 g2g4", "ucinewgame", "go depth 1"},
         "",
         ANY},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const SearchResult s = read_search(uci_session(r.input));
        if (!r.bestmove.empty()) {
            EXPECT_EQ(s.bestmove, r.bestmove);
        }
        if (r.score != ANY) {
            EXPECT_EQ(s.last_score, r.score);
        }
        if (r.bestmove.empty()) {
            ASSERT_EQ(s.bestmove.size(), 4u);
            EXPECT_TRUE(s.bestmove[1] == '1' || s.bestmove[1] == '2') << "not a first move: " << s.bestmove;
        }
    }
    // A list longer than the key history can hold for a search stops at 903 plies: Black to move.
    const SearchResult s = read_search(uci_session({long_shuffle, "go depth 2"}));
    ASSERT_EQ(s.bestmove.size(), 4u);
    EXPECT_TRUE(s.bestmove[1] >= '6') << "not a Black move: " << s.bestmove;
}

// Keys of the listed moves are recorded: a position repeated from the list is a draw.
TEST(UciTranscript, RepetitionFromTheMoveList) {
    // White has two knights against the whole Black army; only repeating saves it.
    const std::string fen   = "position fen rnbqkbnr/pppppppp/8/8/8/8/8/1N2K1N1 w kq - 0 1";
    const SearchResult lost = read_search(uci_session({fen, "go depth 4"}));
    EXPECT_LT(lost.last_score, -1000);
    const SearchResult held = read_search(uci_session({fen + " moves g1f3 g8f6 f3g1 f6g8", "go depth 4"}));
    EXPECT_EQ(held.last_score, 0);
    EXPECT_EQ(held.bestmove, "g1f3");
}

// "position fen" clears the table and "position startpos" does not. Both lines below reach the
// same root (same board, last move, fifty-move count and key history), so after the same first
// search the second one counts the same nodes as after "ucinewgame" only when the table was
// cleared; the move-ordering history carries over in all three sessions alike.
TEST(UciTranscript, PositionFenClearsTheTable) {
    const std::string by_fen =
        "position fen rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1 moves g1f3";
    const std::string by_list = "position startpos moves g1f3";
    auto second_nodes         = [&](const std::vector<std::string>& between) {
        std::vector<std::string> lines{by_list, "go depth 7"};
        lines.insert(lines.end(), between.begin(), between.end());
        lines.push_back("go depth 7");
        const std::string out = uci_session(lines);
        return read_search(out.substr(out.find("bestmove") + 1)).last_nodes;
    };
    const long long cleared_by_fen = second_nodes({by_fen});
    const long long cleared_by_new = second_nodes({"ucinewgame", by_list});
    const long long kept           = second_nodes({by_list});
    EXPECT_EQ(cleared_by_fen, cleared_by_new);
    EXPECT_NE(cleared_by_fen, kept);
}

} // namespace
