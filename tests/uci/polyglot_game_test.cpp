// A whole game under a real UCI client: tests/uci/polyglot_game.sh lets Debian's polyglot adapter
// drive the engine in UCI against a second copy of the engine in its XBoard dialect.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

TEST(PolyglotGame, WholeGameThroughTheAdapter) {
    const std::string cmd = std::string("bash '") + MORVAINE_SOURCE_DIR + "/tests/uci/polyglot_game.sh' '" +
                            MORVAINE_BIN + "' 3 300 2>&1";
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::string out;
    char buf[512];
    while (fgets(buf, sizeof buf, p))
        out += buf;
    const int status = pclose(p);
    ASSERT_TRUE(WIFEXITED(status)) << out;
    EXPECT_EQ(WEXITSTATUS(status), 0) << out;
    EXPECT_NE(out.find("game over after "), std::string::npos) << out;
}

} // namespace
