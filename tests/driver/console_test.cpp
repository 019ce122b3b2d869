// Console and diagnostic words end to end: board diagram, FEN set-up and output, board
// transformations, move and game lists, bench positions, help, hashing statistics and perft.

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string WHITE1    = "#White(1): ";
const std::string BLACK1    = "#Black(1): ";
const std::string START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -";

const std::string FRAME      = "   ************************\n";
const std::string FILES      = "    a  b  c  d  e  f  g  h\n";
const std::string EMPTY_RANK = " *  *  *  *  *  *  *  * |\n";

std::string start_diagram() {
    return "\n" + FRAME + "8 |<R><N><B><Q><K><B><N><R>|\n" + "7 |<P><P><P><P><P><P><P><P>|\n" + "6 |" +
           EMPTY_RANK + "5 |" + EMPTY_RANK + "4 |" + EMPTY_RANK + "3 |" + EMPTY_RANK +
           "2 | P  P  P  P  P  P  P  P |\n" + "1 | R  N  B  Q  K  B  N  R |\n" + FRAME + FILES;
}

// Output between the first prompt and the end-of-input line.
std::string session(const std::vector<std::string>& input) {
    EngineRun run = run_engine(input);
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string head = STARTUP_LINES + NO_SETTINGS + WHITE1;
    EXPECT_EQ(run.out.compare(0, head.size(), head), 0) << run.out;
    const size_t tail = run.out.size() >= END_OF_INPUT.size() ? run.out.size() - END_OF_INPUT.size() : 0;
    EXPECT_EQ(run.out.substr(tail), END_OF_INPUT);
    if (run.out.size() < head.size() + END_OF_INPUT.size()) return run.out;
    return run.out.substr(head.size(), tail - head.size());
}

TEST(Console, BoardDiagram) {
    EXPECT_EQ(session({"d"}), start_diagram() + WHITE1);
}

TEST(Console, SavePositionRoundTrips) {
    struct Row {
        const char* name;
        const char* input;
        const char* saved;
        const char* prompt;
    };
    const Row rows[] = {
        {"setboard start", "setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", "#White(1): "},
        {"bare FEN line keeps its case", "r3k2r/8/8/8/8/8/8/R3K2R b Kq - 5 40",
         "r3k2r/8/8/8/8/8/8/R3K2R b Kq -", "#Black(1): "},
        {"castling letters in any order", "r3k2r/8/8/8/8/8/8/R3K2R w qkQK -",
         "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "#White(1): "},
        {"usable en-passant square kept", "setboard 4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1",
         "4k3/8/8/8/3pP3/8/8/4K3 b - e3", "#Black(1): "},
        {"unusable en-passant square dropped", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1",
         "4k3/8/8/8/4P3/8/8/4K3 b - -", "#Black(1): "},
        {"castling rights without their king at home are dropped", "k7/8/8/8/8/8/8/K7 w KQkq -",
         "k7/8/8/8/8/8/8/K7 w - -", "#White(1): "},
        {"bench position 4", "6k1/p4pbp/qp2r1p1/3Q4/8/7P/PPRB1PP1/6K1 b - - 0 32",
         "6k1/p4pbp/qp2r1p1/3Q4/8/7P/PPRB1PP1/6K1 b - -", "#Black(1): "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(session({row.input, "savepos"}), std::string(row.prompt) + row.saved + "\n" + row.prompt);
    }
}

TEST(Console, FlipAndFlop) {
    struct Row {
        const char* name;
        std::vector<std::string> input;
        const char* saved;
        const char* prompt;
    };
    const Row rows[] = {
        {"flip of the start position",
         {"flip"},
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -",
         "#Black(1): "},
        {"flip turns ranks and colours",
         {"8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", "flip"},
         "k7/8/8/p2p1p2/P2p1P2/3P4/K7/8 b - -",
         "#Black(1): "},
        {"flip exchanges castling rights",
         {"r3k3/8/8/8/8/8/8/4K2R w Kq -", "flip"},
         "4k2r/8/8/8/8/8/8/R3K3 b Qk -",
         "#Black(1): "},
        {"flip moves the en-passant square",
         {"4k3/8/8/8/3pP3/8/8/4K3 b - e3", "flip"},
         "4k3/8/8/3Pp3/8/8/8/4K3 w - e6",
         "#White(1): "},
        {"flop with castling rights changes nothing",
         {"flop"},
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
         "#White(1): "},
        {"flop turns files",
         {"8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", "flop"},
         "8/7k/4p3/2p1P2p/2P1P2P/8/8/7K w - -",
         "#White(1): "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> input = row.input;
        input.push_back("savepos");
        const std::string out  = session(input);
        const std::string tail = std::string(row.saved) + "\n" + row.prompt;
        ASSERT_GE(out.size(), tail.size());
        EXPECT_EQ(out.substr(out.size() - tail.size()), tail);
        // The transformation shows the new board.
        EXPECT_NE(out.find(FRAME + "8 |"), std::string::npos);
    }
    EXPECT_EQ(session({"flip"}), start_diagram() + BLACK1);
    EXPECT_EQ(session({"flop"}), start_diagram() + WHITE1);
}

// "from to" coordinates of a move text as the move word.
unsigned move_word(const char* text) {
    const unsigned from = static_cast<unsigned>(text[0] - 'a' + 8 * (text[1] - '1'));
    const unsigned to   = static_cast<unsigned>(text[2] - 'a' + 8 * (text[3] - '1'));
    return from * 64 + to;
}

TEST(Console, ListOfMoves) {
    // The driver lists captures, then quiet moves, in generation order.
    const char* start_moves[] = {"a2a3", "b2b3", "c2c3", "d2d3", "e2e3", "f2f3", "g2g3",
                                 "h2h3", "a2a4", "b2b4", "c2c4", "d2d4", "e2e4", "f2f4",
                                 "g2g4", "h2h4", "b1a3", "b1c3", "g1f3", "g1h3"};
    std::string expected      = " #  Move   Value  Capture  mv:";
    int n                     = 0;
    for (const char* m : start_moves) {
        char line[64];
        std::snprintf(line, sizeof line, "\n%2d  %2s %6d %6d %u", ++n, m, 0, 15, move_word(m));
        expected += line;
    }
    EXPECT_EQ(session({"list"}), expected + "\n" + WHITE1);

    // Illegal pseudo-legal moves stand as "(none)" entries; captures show the captured piece code.
    const std::string pinned = session({"4k3/8/8/8/1b6/8/3Np3/4K3 w - -", "list"});
    EXPECT_NE(pinned.find("(none)"), std::string::npos) << pinned;
    EXPECT_NE(pinned.find("\n 1  e1e2      0      8 268\n 2  e1f2      0     15 269\n"), std::string::npos)
        << pinned;
    EXPECT_EQ(pinned.find("d2b3"), std::string::npos) << pinned;
}

TEST(Console, ListOfGameMoves) {
    struct Row {
        const char* name;
        std::vector<std::string> input;
        const char* listed;
    };
    const Row rows[] = {
        {"no moves", {}, "\n"},
        {"three plies", {"force", "e2e4", "e7e5", "g1f3"}, "1.e2e4 e7e5 2.g1f3 \n"},
        {"undo takes one back", {"force", "e2e4", "e7e5", "g1f3", "undo"}, "1.e2e4 e7e5 \n"},
        {"undo 3 after two plies stops at the start", {"force", "e2e4", "e7e5", "undo 3"}, "\n"},
        {"back 2", {"force", "e2e4", "e7e5", "g1f3", "back 2"}, "1.e2e4 \n"},
        {"back 0 takes nothing back", {"force", "e2e4", "back 0"}, "1.e2e4 \n"},
        {"takeback", {"force", "d2d4", "d7d5", "takeback"}, "1.d2d4 \n"},
        {"promotion", {"8/P6k/8/8/8/8/8/K7 w - -", "force", "a7a8n"}, "1.a7a8n \n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> input = row.input;
        input.push_back("list game");
        const std::string out    = session(input);
        const std::string listed = row.listed;
        ASSERT_GE(out.size(), listed.size());
        const size_t prompt_at = out.rfind('#');
        ASSERT_NE(prompt_at, std::string::npos);
        EXPECT_EQ(out.substr(prompt_at - listed.size(), listed.size()), listed) << out;
    }
}

TEST(Console, ReceivedMovesInForceMode) {
    EXPECT_EQ(session({"force", "e2e4", "e7e5", "e1e2", "undo", "savepos"}),
              WHITE1 + "#move_number = 0   (1)\n" + BLACK1 + "#move_number = 1   (2)\n" +
                  "#White(2): " + "#move_number = 2   (2)\n" + "#Black(2): " + "#White(2): " +
                  "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -\n#White(2): ");
}

TEST(Console, BenchPositions) {
    struct Row {
        const char* name;
        const char* input;
        const char* rank8;
        const char* rank1;
        const char* saved;
        const char* prompt;
    };
    const Row rows[] = {
        {"1", "bench 1", "8 | *  *  * <R> * <K> *  * |", "1 | *  *  R  *  *  *  *  * |",
         "3r1k2/4npp1/1ppr3p/p6P/P2PPPP1/1NR5/5K2/2R5 w - -", "#White(1): "},
        {"2", "bench 2", "8 |<R><N><B> *  * <R><K> * |", "1 | R  *  *  Q  K  *  *  R |",
         "rnb2rk1/pp1nppbp/1qp3p1/P2pP3/3P4/2N1BN1P/1PP1BPP1/R2QK2R b KQ -", "#Black(1): "},
        {"3", "bench 3", "8 | *  *  *  *  *  * <R> * |", "1 | *  *  *  *  *  *  R  * |",
         "6r1/2rp1kpp/2qQp3/p3Pp1P/1pP2P2/1P2KP2/P5R1/6R1 w - -", "#White(1): "},
        {"4", "b 4", "8 | *  *  *  *  *  * <K> * |", "1 | *  *  *  *  *  *  K  * |",
         "6k1/p4pbp/qp2r1p1/3Q4/8/7P/PPRB1PP1/6K1 b - -", "#Black(1): "},
        {"5", "bench=5", "8 | *  *  *  *  *  *  *  * |", "1 | K  *  *  *  *  *  *  * |",
         "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -", "#White(1): "},
        {"6", "bench 6", "8 |<R> *  *  *  * <K> *  * |", "1 | *  *  K  R  R  *  *  * |",
         "r4k2/pb2bp1r/1p1qp2p/3pNp2/3P1P2/2N3P1/PPP1Q2P/2KRR3 w - -", "#White(1): "},
        {"0 leaves the game", "bench 0", "8 |<R><N><B><Q><K><B><N><R>|", "1 | R  N  B  Q  K  B  N  R |",
         START_FEN.c_str(), "#White(1): "},
        {"7 leaves the game", "bench 7", "8 |<R><N><B><Q><K><B><N><R>|", "1 | R  N  B  Q  K  B  N  R |",
         START_FEN.c_str(), "#White(1): "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string out = session({row.input});
        EXPECT_EQ(out.substr(0, 1 + FRAME.size()), "\n" + FRAME);
        EXPECT_NE(out.find("\n" + FRAME + row.rank8 + "\n"), std::string::npos) << out;
        EXPECT_NE(out.find(std::string("\n") + row.rank1 + "\n" + FRAME + FILES), std::string::npos) << out;
        const std::string tail = FILES + row.saved + "\n" + row.prompt;
        ASSERT_GE(out.size(), tail.size());
        EXPECT_EQ(out.substr(out.size() - tail.size()), tail);
    }
    EXPECT_EQ(session({"bench 0"}), start_diagram() + START_FEN + "\n" + WHITE1);
    EXPECT_EQ(session({"bench"}), "Usage: Bench <test number 1 - 6 >\n" + START_FEN + "\n" + WHITE1);
}

TEST(Console, HelpText) {
    const std::string help = " Morvaine v2 Commands\n"
                             " --------------------------\n"
                             " analyze   - continuous\n"
                             " book      - change book mode\n"
                             " cores []  - CPU's\n"
                             " display   - PV depth\n"
                             " go        - start engine thinking\n"
                             " hash []   - size in Mb\n"
                             " new       - new game, default\n"
                             " ponder    - on/off\n"
                             " quit      - exit\n"
                             " undo []   - undo last move[s]\n\n"
                             "xboard commands: [default mode]\n"
                             " sd, level, setboard, ics, etc.\n"
                             "uci commands: [Type \"uci\" to enter uci mode]\n\n"
                             "Debug and console commands:\n"
                             " bench[b ] - bench test number\n"
                             " black     - black to move\n"
                             " white     - white to move\n"
                             " d         - display board\n"
                             " dhash     - display hashing statistics\n"
                             " eval      - assess root position\n"
                             " flip      - invert board\n"
                             " flop      - mirror board\n"
                             " list      - display list of possible moves\n"
                             " list game - list game\n"
                             " perft []  - performance test [depth]\n"
                             " savepos   - display FEN position\n";
    EXPECT_EQ(session({"help"}), help + WHITE1);
    EXPECT_EQ(session({"HELP"}), help + WHITE1);
}

TEST(Console, HashStatisticsAfterStartup) {
    EXPECT_EQ(session({"dhash"}), "\n**** Hashing Statistics ****\n"
                                  "Cores             1\n"
                                  "Table size        134217728\n"
                                  "Mask              0x7fffff\n"
                                  "Count entries     0\n"
                                  "Nodes searched    1\n"
                                  "Percentage use    0.000000%\n"
                                  "Node efficiency   0.000000%  [hash entries/nodes_searched]\n"
                                  "Minimum table use 0x8000000\n"
                                  "Maximum table use 0x0\n\n" +
                                      WHITE1);
}

TEST(Console, PerftLines) {
    struct Row {
        const char* name;
        std::vector<std::string> input;
        const char* moves;
        const char* rest;
    };
    const Row rows[] = {
        {"start depth 1",
         {"perft 1"},
         "20",
         " total captures 0\ttotal en passant 0\n total castles  0\ttotal checks 0\n"
         " total promotes 0\ttotal checkmates 0\n"},
        {"start depth 3",
         {"perft 3"},
         "8902",
         " total captures 34\ttotal en passant 0\n total castles  0\ttotal checks 0\n"
         " total promotes 0\ttotal checkmates 0\n"},
        {"castling position depth 2",
         {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", "perft 2"},
         "2039",
         " total captures 351\ttotal en passant 1\n total castles  91\ttotal checks 0\n"
         " total promotes 0\ttotal checkmates 0\n"},
        {"mated side",
         {"7k/6Q1/6K1/8/8/8/8/8 b - -", "perft 1"},
         "0",
         " total captures 0\ttotal en passant 0\n total castles  0\ttotal checks 0\n"
         " total promotes 0\ttotal checkmates 1\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string out = session(row.input);
        const std::regex head(std::string(" total moves = ") + row.moves + " time = [0-9]+\\.[0-9]{6}\n");
        std::smatch m;
        ASSERT_TRUE(std::regex_search(out, m, head)) << out;
        const std::string after = out.substr(static_cast<size_t>(m.position(0) + m.length(0)));
        EXPECT_EQ(after.substr(0, std::string(row.rest).size()), row.rest);
    }
}

} // namespace
