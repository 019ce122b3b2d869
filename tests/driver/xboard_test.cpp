// The XBoard dialect end to end: handshake, protocol versions, ping ordering, usage lines,
// folding and the answer to unknown words.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string PROMPT = "#White(1): ";

struct Row {
    const char* name;
    std::vector<std::string> input;
    std::string expected; // everything between the first prompt and the end-of-input line
};

void check_rows(const Row* begin, const Row* end) {
    for (const Row* row = begin; row != end; ++row) {
        SCOPED_TRACE(row->name);
        EngineRun run = run_engine(row->input);
        ASSERT_TRUE(run.exited);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, STARTUP_LINES + NO_SETTINGS + PROMPT + row->expected + END_OF_INPUT);
        EXPECT_EQ(run.err, "");
    }
}

const std::string FEATURES = "feature ping=1 setboard=1 san=0 time=1 draw=0\n"
                             "feature sigint=0 sigterm=0 reuse=0 analyze=1\n"
                             "feature name=1 usermove=0\n"
                             "feature playother=0 colors=0 memory=1 smp=1\n"
                             "feature nps=0 ics=1 debug=1\n"
                             "feature done=1\n";
const std::string BOGUS    = "ERROR (bogus xboard protocol version received)\n";

TEST(XBoard, HandshakeAndProtocolWords) {
    const Row rows[] = {
        {"handshake", {"xboard", "protover 2"}, "\n" + FEATURES},
        {"winboard is xboard", {"winboard", "protover 2"}, "\n" + FEATURES},
        {"xboard twice prints one newline", {"xboard", "xboard", "winboard"}, "\n"},
        {"protover 3", {"xboard", "protover 3"}, "\n" + BOGUS},
        {"protover without a version", {"xboard", "protover"}, "\n" + BOGUS},
        {"ping answered before the next read", {"xboard", "ping 7", "ping 3"}, "\npong 7\npong 3\n"},
        {"ping 0 and a bare ping get nothing", {"xboard", "ping 0", "ping", "ping 5"}, "\npong 5\n"},
        {"console ping comes before the prompt", {"ping 9"}, "pong 9\n" + PROMPT},
        {"no prompts after xboard",
         {"xboard",     "new",      "force",        "post",
          "nopost",     "hard",     "easy",         "random",
          "computer",   "accepted", "rejected",     "variant",
          "option x=1", "draw",     "name someone", "rating 2000 2100",
          "otim 100",   "time 100", "st 5",         "result 1-0 {x}",
          "flag",       ".",        "exit",         "?",
          "bogus",      "beep"},
         "\n" + NO_SETTINGS + "pondering enabled.\npondering disabled.\n"},
        {"help in xboard mode prints nothing", {"xboard", "help"}, "\n"},
        {"ics greeting",
         {"xboard", "ics -", "ics chess.example.org", "cores 3", "ics x"},
         "\ntellicsnoalias kibitz Hello from Morvaine v2.0.34 (1 cpus)\nthreads=3\nCPUs available 3\n"
         "tellicsnoalias kibitz Hello from Morvaine v2.0.34 (3 cpus)\n"},
        {"cores clamps",
         {"xboard", "cores 0", "cores 500"},
         "\nthreads=1\nCPUs available 1\nthreads=128\nCPUs available 128\n"},
        {"hash sizes", {"xboard", "hash 7", "memory 16", "hash 0", "memory -3"}, "\nhash=6MB\nhash=16MB\n"},
        {"uci is ignored in xboard mode", {"xboard", "uci", "ping 1"}, "\npong 1\n"},
    };
    check_rows(std::begin(rows), std::end(rows));
}

TEST(XBoard, UsageLines) {
    const Row rows[] = {
        {"sd", {"sd"}, "usage: sd <depth>\n" + PROMPT},
        {"level with two arguments", {"level 40 5"}, "usage: level <nmoves> <stime> <inc>\n" + PROMPT},
        {"memory", {"memory"}, "usage: memory <size>\n" + PROMPT},
        {"hash", {"hash"}, "usage: memory <size>\n" + PROMPT},
        {"name", {"name"}, "usage: name <name>\n" + PROMPT},
        {"otim", {"otim"}, "usage: otime <time(unit=.01 secs)>\n" + PROMPT},
        {"cores", {"cores"}, "usage:  cores <processors available>\n" + PROMPT},
        {"ics", {"ics"}, "Usage: ICS <hostname>\n" + PROMPT},
        {"perft", {"perft"}, "usage: perft <depth>\n" + PROMPT},
        {"perft 0", {"perft 0"}, "usage: perft <maxply>\n" + PROMPT},
        {"display", {"display"}, "usage:  display <PV minimum depth>\n" + PROMPT},
        {"ponder", {"ponder"}, "usage: ponder off|on\n" + PROMPT},
        {"trace after new", {"trace"}, "usage: trace <display to depth>\nTrace Off\n" + PROMPT},
        {"xtrace", {"xtrace"}, "usage: xtrace <display @ depth>\n" + PROMPT},
        {"pickbest", {"pickbest"}, "usage: pickbest 0 or 1\n" + PROMPT},
        {"bookdepth",
         {"bookdepth"},
         "usage: bookdepth <args> - default 48 half moves\nbookdepth=0\n" + PROMPT},
        {"bookname", {"bookname"}, "usage: bookname <file name>\n       current book book.bin\n" + PROMPT},
        {"book_random", {"book_random"}, "usage: book_random [move number]\nbook_random=0\n" + PROMPT},
        {"book",
         {"book"},
         "usage:  Book 0  - no book\n        Book 1  - PolyGlot book {best move}\nCurrent Book #  - 0\n" +
             PROMPT},
        {"book help",
         {"book ?"},
         "usage:  Book 0  - no book\n        Book 1  - PolyGlot book {best move}\nCurrent Book #  - 0\n" +
             PROMPT},
    };
    check_rows(std::begin(rows), std::end(rows));
}

TEST(XBoard, UnknownWordsAreIllegalMoves) {
    const Row rows[] = {
        {"unknown word", {"frobnicate"}, "Illegal move: frobnicate\n" + PROMPT},
        {"folded before it is echoed", {"FROB Nicate"}, "Illegal move: frob nicate\n" + PROMPT},
        {"go with a trailing blank is not go", {"go "}, "Illegal move: go \n" + PROMPT},
        {"beep on the console", {"beep"}, "Illegal move: beep\n" + PROMPT},
        {"bogus on the console", {"bogus"}, "Illegal move: bogus\n" + PROMPT},
        {"not a legal move", {"e2e5"}, "Illegal move: e2e5\n" + PROMPT},
        {"too short", {"e2"}, "Illegal move: e2\n" + PROMPT},
        {"promotion letter on a quiet move", {"e2e4q"}, "Illegal move: e2e4q\n" + PROMPT},
        {"setboard without a position", {"setboard 8/8 w"}, "Illegal move: setboard 8/8 w\n" + PROMPT},
        {"comments do nothing", {"# a comment", "#", "   #x"}, PROMPT + PROMPT + PROMPT},
        {"whole-line words need the whole line",
         {"d x", "list x"},
         "Illegal move: d x\n" + PROMPT + "Illegal move: list x\n" + PROMPT},
        {"xboard mode answers the same", {"xboard", "e2e5", "bogus", "beep"}, "\nIllegal move: e2e5\n"},
    };
    check_rows(std::begin(rows), std::end(rows));
}

TEST(XBoard, ConsoleMessages) {
    const Row rows[] = {
        {"hard and easy",
         {"hard", "easy"},
         "pondering enabled.\n" + PROMPT + "pondering disabled.\n" + PROMPT},
        {"ponder on/off",
         {"ponder on", "ponder 0", "ponder 1", "ponder off", "ponder maybe"},
         "pondering enabled\n" + PROMPT + "pondering disabled\n" + PROMPT + "pondering enabled\n" + PROMPT +
             "pondering disabled\n" + PROMPT + PROMPT},
        {"display", {"display 5"}, "Display minimum depth 5\n" + PROMPT},
        {"syzygypath", {"syzygypath /tb"}, "SYZYGY support not included (no -DSYZYGY)\n" + PROMPT},
        {"trace",
         {"trace 3", "trace", "trace 0", "trace"},
         "Trace = 3\n" + PROMPT + "usage: trace <display to depth>\nTrace Off\n" + PROMPT + "Trace = 0\n" +
             PROMPT + "usage: trace <display to depth>\nTrace On = 32\n" + PROMPT},
        {"xtrace", {"xtrace 4", "xtrace 5"}, "xTrace = 4\n" + PROMPT + "xTrace Off\n" + PROMPT},
        {"cls", {"cls"}, "\x1b[H\x1b[2J" + PROMPT},
        {"exit outside analysis", {"exit"}, PROMPT},
        {"bookdepth and book_random",
         {"bookdepth 12", "book_random 4", "pickbest 1"},
         "bookdepth=12\n" + PROMPT + "book_random=4\n" + PROMPT + PROMPT},
        {"bookname keeps the quoted text",
         {"bookname \"My Books/Main.BIN\" trailing", "bookname"},
         "book = my books/main.bin\n" + PROMPT +
             "usage: bookname <file name>\n       current book my books/main.bin\n" + PROMPT},
        {"bookname without quotes keeps the name", {"bookname other.bin"}, "book = book.bin\n" + PROMPT},
        {"book that cannot be opened",
         {"book 1", "book"},
         "book_open: can't open book.bin\n" + PROMPT +
             "usage:  Book 0  - no book\n        Book 1  - PolyGlot book {best move}\nCurrent Book #  - 0\n" +
             PROMPT},
        {"book off", {"book off"}, PROMPT},
    };
    check_rows(std::begin(rows), std::end(rows));
}

} // namespace
