// Input while an XBoard analysis runs: "." answers with the status line when post is on, "bk"
// gets its reply, and any other line ends the analysis and is then carried out by the loop ("exit"
// prints its newline and leaves analysis mode).

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

struct AnalysisRow {
    const char* name;
    std::vector<std::string> input;
    int status_lines;     // "stat01" lines expected
    int legal_count;      // the legal moves the status line reports
    bool book_reply;      // the "bk" reply (a tab, an empty listing, an empty line) expected
    std::string contains; // text that must appear after the analysis began
};

TEST(AnalysisInput, DotBkAndTheLineThatEnds) {
    const std::string END = "found exit EXIT_FAILURE\n";
    // clang-format off
    const AnalysisRow rows[] = {
        {"dot with post on", {"xboard", "post", "analyze", ".", "exit"}, 1, 20, false, "\n"},
        {"dot twice", {"xboard", "post", "analyze", ".", ".", "exit"}, 2, 20, false, "\n"},
        {"dot with post off", {"xboard", "nopost", "analyze", ".", "exit"}, 0, 20, false, "\n"},
        {"bk keeps the analysis going", {"xboard", "analyze", "bk", "exit"}, 0, 20, true, "\n"},
        // Nothing to search (nor any legal move) in a broken set-up, but the analysis still
        // answers and waits for "exit".
        {"broken set-up", {"xboard", "post", "setboard kK6/8/8/8/8/8/8/8 w - -", "analyze", ".", "exit"},
         1, 0, false, " 0 0 0 0 (none)\n"},
    };
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const std::regex status(R"(stat01: \d+ \d+ \d+ -?\d+ )" + std::to_string(r.legal_count) +
                                R"( (\(none\)|[a-h][1-8][a-h][1-8]))");
        const EngineRun run = run_engine(r.input);
        ASSERT_TRUE(run.exited);
        EXPECT_EQ(run.err, "");
        int found = 0;
        for (size_t at = run.out.find("stat01"); at != std::string::npos;
             at        = run.out.find("stat01", at + 1)) {
            const std::string line = run.out.substr(at, run.out.find('\n', at) - at);
            EXPECT_TRUE(std::regex_match(line, status)) << line;
            ++found;
        }
        EXPECT_EQ(found, r.status_lines) << run.out;
        EXPECT_EQ(run.out.find("\t\n\n") != std::string::npos, r.book_reply) << run.out;
        EXPECT_NE(run.out.find(r.contains), std::string::npos) << run.out;
        // The end of input met during the analysis ends the engine the usual way.
        ASSERT_GE(run.out.size(), END.size());
        EXPECT_EQ(run.out.substr(run.out.size() - END.size()), END) << run.out;
    }
}

} // namespace
