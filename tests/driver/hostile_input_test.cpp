// What real GUIs, servers and people send that a well-behaved client would not: lines past the
// buffer, NUL bytes, binary garbage, bare carriage returns, storms of commands, pipes closed under
// the engine, impossible hash sizes and lines that would start the same analysis for ever. The
// engine must answer, end quietly or refuse, never crash or hang.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

int count_of(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
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
    EngineRun run = engine.finish();
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
}

} // namespace
