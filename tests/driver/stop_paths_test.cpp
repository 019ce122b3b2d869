// Searches of several threads ended from outside, end to end: a line arriving during the engine's
// own search (through the input watcher), "?" and ping during a search, a ponder search cut short,
// an XBoard analysis ended by "exit", a console analysis fed through a pipe, quit and the end of
// input during a search. Each session must end cleanly with nothing on stderr: in the
// ThreadSanitizer tree the engine started here is the sanitized one, and a race report would land
// there and change the exit status.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

// One step of a session: send a line, or wait until the output shows a text.
struct Step {
    enum Kind { send, wait } kind;
    std::string text;
};
Step send(const std::string& line) {
    return {Step::send, line};
}
Step wait(const std::string& text) {
    return {Step::wait, text};
}

struct Session {
    const char* name;
    std::vector<Step> steps;
    bool close_input; // the end of input closes the session (else the last line quits)
};

TEST(StopPaths, SearchesOfSeveralThreadsEndedFromOutside) {
    const std::string END    = "found exit EXIT_FAILURE\n";
    const Session sessions[] = {
        {"a line stops the engine's search, 8 threads",
         {send("xboard"), send("cores 8"), send("level 0 60 0"), send("go"), wait("\n2 "), send("ping 4"),
          wait("\nmove "), wait("pong 4\n"), send("quit")},
         false},
        {"move now, 2 threads",
         {send("xboard"), send("cores 2"), send("level 0 60 0"), send("go"), wait("\n2 "), send("?"),
          wait("\nmove "), send("ping 5"), wait("pong 5\n"), send("quit")},
         false},
        // The engine's only legal move is played without a search; the ponder search after it runs
        // on the clock until the next line arrives.
        {"ponder search cut short by a line, 8 threads",
         {send("xboard"), send("cores 8"), send("hard"), send("level 0 60 0"), send("force"), send("e2e4"),
          send("e7e5"), send("k7/8/8/8/8/8/1q5p/K7 w - -"), send("go"), wait("move a1b2\n"), send("ping 6"),
          wait("pong 6\n"), send("quit")},
         false},
        {"analysis ended by exit, 8 threads",
         {send("xboard"), send("cores 8"), send("post"), send("analyze"), wait("#analyzing 1\n"),
          wait("\n3 "), send("."), wait("stat01: "), send("e2e4"), wait("#move_number = 0   (1)\n"),
          send("exit"), send("ping 7"), wait("pong 7\n"), send("quit")},
         false},
        {"console analysis ended by a piped line, 8 threads",
         {send("cores 8"), send("analyze"), wait("depth score time nodes pv\n"), wait("\n3 "),
          send("savepos"), wait("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n"), send("quit")},
         false},
        {"quit during a search, 128 threads",
         {send("xboard"), send("cores 128"), send("level 0 60 0"), send("go"), wait("\n1 "), send("quit")},
         false},
        {"end of input during a search, 8 threads",
         {send("xboard"), send("cores 8"), send("level 0 60 0"), send("go"), wait("\n1 ")},
         true},
        {"end of input during an analysis, 8 threads",
         {send("xboard"), send("cores 8"), send("analyze"), wait("\n1 ")},
         true},
        {"UCI search of 128 threads",
         {send("uci"), send("setoption name Threads value 128"), send("position startpos moves d2d4"),
          send("go depth 5"), wait("\nbestmove "), send("isready"), wait("readyok\n"), send("quit")},
         false},
    };
    for (const auto& s : sessions) {
        SCOPED_TRACE(s.name);
        EngineProcess engine;
        for (const auto& step : s.steps) {
            if (step.kind == Step::send) {
                engine.send(step.text);
            } else {
                ASSERT_TRUE(engine.wait_for(step.text, 120000)) << step.text << "\n" << engine.output();
            }
        }
        if (s.close_input) {
            const EngineRun run = engine.finish(120000);
            EXPECT_TRUE(run.exited);
            EXPECT_EQ(run.status, 0);
            EXPECT_EQ(run.err, "");
            EXPECT_TRUE(run.out.ends_with(END)) << run.out;
        } else {
            EXPECT_EQ(engine.wait_exit(120000), 0);
            EXPECT_EQ(engine.finish().err, "");
        }
    }
}

} // namespace
