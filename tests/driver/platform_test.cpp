// The POSIX platform layer: the line reader and the non-consuming input test on a pipe, and the
// console keyboard that must stay silent when stdin is not a terminal.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "driver/piped_stdin.h"
#include "driver/platform.h"

namespace {

TEST(Platform, ReadLineCutsLinesAndPieces) {
    struct Row {
        const char* name;
        std::string input;
        int size;
        std::vector<std::string> pieces;
    };
    const Row rows[] = {
        {"plain lines", "go\nquit\n", 64, {"go", "quit"}},
        {"carriage return and newline end one line", "ping 1\r\nping 2\r\n", 64, {"ping 1", "ping 2"}},
        {"carriage returns alone end lines", "xboard\rprotover 2\rping 3\r", 64, {"xboard", "protover 2", "ping 3"}},
        {"two carriage returns make an empty line", "a\r\r\nb\n", 64, {"a", "", "b"}},
        {"empty lines", "\n\na\n", 64, {"", "", "a"}},
        {"last line without newline", "e2e4\nsd 5", 64, {"e2e4", "sd 5"}},
        {"long line in pieces", "abcdefghij\nk\n", 5, {"abcd", "efgh", "ij", "k"}},
        {"piece ending right before the newline", "abcd\nef\n", 5, {"abcd", "", "ef"}},
        {"nothing at all", "", 64, {}},
        {"line longer than the reader's own buffer",
         std::string(70000, 'x') + "\nend\n",
         65536,
         {std::string(65535, 'x'), std::string(4465, 'x'), "end"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        PipedStdin in;
        // Written from another thread: a large input does not fit in the pipe at once.
        std::thread writer([&] {
            in.write_all(row.input);
            in.close_writer();
        });
        std::vector<std::string> got;
        std::vector<char> buf(static_cast<size_t>(row.size));
        while (read_line(buf.data(), row.size))
            got.emplace_back(buf.data());
        writer.join();
        EXPECT_EQ(got, row.pieces);
    }
}

TEST(Platform, InputPendingNeverConsumes) {
    PipedStdin in;
    EXPECT_FALSE(input_pending());
    in.write_all("first\nsecond\n");
    EXPECT_TRUE(input_pending());
    EXPECT_TRUE(input_pending());
    char buf[64];
    ASSERT_TRUE(read_line(buf, sizeof buf));
    EXPECT_STREQ(buf, "first");
    // The second line now sits in the reader's buffer, not in the pipe.
    EXPECT_TRUE(input_pending());
    ASSERT_TRUE(read_line(buf, sizeof buf));
    EXPECT_STREQ(buf, "second");
    EXPECT_FALSE(input_pending());
    // End of input must be noticed by whoever waits for input.
    in.close_writer();
    EXPECT_TRUE(input_pending());
    EXPECT_FALSE(read_line(buf, sizeof buf));
}

// A line end of carriage return and newline split over two writes is still one line end.
TEST(Platform, NewlineArrivingAfterItsCarriageReturn) {
    PipedStdin in;
    char buf[64];
    in.write_all("go\r");
    ASSERT_TRUE(read_line(buf, sizeof buf));
    EXPECT_STREQ(buf, "go");
    in.write_all("\nquit\n");
    ASSERT_TRUE(read_line(buf, sizeof buf));
    EXPECT_STREQ(buf, "quit");
    in.close_writer();
    EXPECT_FALSE(read_line(buf, sizeof buf));
}

TEST(Platform, NoKeysFromAPipe) {
    PipedStdin in;
    in.write_all("x\n");
    EXPECT_FALSE(key_waiting());
    EXPECT_EQ(read_key(), -1);
    char buf[8];
    ASSERT_TRUE(read_line(buf, sizeof buf));
    EXPECT_STREQ(buf, "x");
    in.close_writer();
    EXPECT_FALSE(read_line(buf, sizeof buf));
}

TEST(Platform, ClearScreenWritesTheTerminalSequence) {
    testing::internal::CaptureStdout();
    clear_screen();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\x1b[H\x1b[2J");
}

TEST(Platform, ClockNeverRunsBackwards) {
    int64_t last = get_ms();
    for (int i = 0; i < 1000; ++i) {
        const int64_t now = get_ms();
        EXPECT_GE(now, last);
        last = now;
    }
}

} // namespace
