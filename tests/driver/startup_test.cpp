// Start-up lines, the settings file, the prompt, end of input and the quit path, end to end.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

const std::string PROMPT = "#White(1): ";

struct StartupRow {
    const char* name;
    std::optional<std::string> settings;
    std::vector<std::string> input;
    std::string expected;
};

TEST(Startup, LinesSettingsPromptAndEndOfInput) {
    const std::string long_blank_piece(127, ' ');
    const StartupRow rows[] = {
        {"no settings file", std::nullopt, {}, STARTUP_LINES + NO_SETTINGS + PROMPT + END_OF_INPUT},
        {"hash line", "hash 64\n", {}, STARTUP_LINES + "hash=64MB\n" + PROMPT + END_OF_INPUT},
        {"hash line read again by new",
         "hash 64\n",
         {"new"},
         STARTUP_LINES + "hash=64MB\n" + PROMPT + "hash=64MB\n" + PROMPT + END_OF_INPUT},
        {"comment lines", "# a comment\n#\n   # indented\n", {}, STARTUP_LINES + PROMPT + END_OF_INPUT},
        {"upper case folded, CRLF line ends",
         "CORES 2\r\nHash 32\r\n",
         {},
         STARTUP_LINES + "threads=2\nCPUs available 2\nhash=32MB\n" + PROMPT + END_OF_INPUT},
        {"long line read in 127-character pieces",
         long_blank_piece + "hash 16\n",
         {},
         STARTUP_LINES + "hash=16MB\n" + PROMPT + END_OF_INPUT},
        {"unknown words are ignored silently", "frobnicate 3\n", {}, STARTUP_LINES + PROMPT + END_OF_INPUT},
        {"usage lines of settings still print",
         "sd\n",
         {},
         STARTUP_LINES + "usage: sd <depth>\n" + PROMPT + END_OF_INPUT},
        {"FEN line sets the start position",
         "8/8/8/8/8/8/k7/2K5 b - -\n",
         {"savepos"},
         STARTUP_LINES + "#Black(1): 8/8/8/8/8/8/k7/2K5 b - -\n#Black(1): " + END_OF_INPUT},
        {"empty lines prompt again",
         std::nullopt,
         {"", "", "\r"},
         STARTUP_LINES + NO_SETTINGS + PROMPT + PROMPT + PROMPT + PROMPT + END_OF_INPUT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EngineRun run = run_engine(row.input, {row.settings, {}});
        ASSERT_TRUE(run.exited);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, row.expected);
        EXPECT_EQ(run.err, "");
    }
}

TEST(Startup, LinesBeginningWithQEndSilently) {
    const char* lines[] = {"quit", "QUIT", "q", "queen", "Quit now", "q1"};
    for (const char* line : lines) {
        SCOPED_TRACE(line);
        EngineRun run = run_engine({line, "d"});
        ASSERT_TRUE(run.exited);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, STARTUP_LINES + NO_SETTINGS + PROMPT);
        EXPECT_EQ(run.err, "");
    }
}

TEST(Startup, LastLineWithoutNewlineIsStillRead) {
    EngineProcess engine;
    ASSERT_TRUE(engine.wait_for(PROMPT));
    engine.send_raw("ping 4");
    EngineRun run = engine.finish();
    EXPECT_EQ(run.out, STARTUP_LINES + NO_SETTINGS + PROMPT + "pong 4\n" + PROMPT + END_OF_INPUT);
}

TEST(Startup, ReaderGoneEndsTheProgramQuietly) {
    EngineProcess engine;
    ASSERT_TRUE(engine.wait_for(PROMPT));
    engine.close_output();
    // Input stays open: only the failed writes can end the program.
    engine.send("help");
    engine.send("d");
    EXPECT_EQ(engine.wait_exit(), 0);
}

} // namespace
