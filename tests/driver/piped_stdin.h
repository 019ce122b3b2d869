#pragma once
// Tests that read standard input in-process: a pipe stands in for it while the object lives.

#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

// Puts the read end of a fresh pipe on descriptor 0 for the lifetime of the object.
class PipedStdin {
  public:
    PipedStdin() {
        saved_ = dup(0);
        int fds[2];
        EXPECT_EQ(pipe(fds), 0);
        dup2(fds[0], 0);
        close(fds[0]);
        writer_ = fds[1];
    }
    ~PipedStdin() {
        close_writer();
        dup2(saved_, 0);
        close(saved_);
    }
    PipedStdin(const PipedStdin&)            = delete;
    PipedStdin& operator=(const PipedStdin&) = delete;

    void write_all(const std::string& data) {
        EXPECT_EQ(write(writer_, data.data(), data.size()), static_cast<ssize_t>(data.size()));
    }
    void close_writer() {
        if (writer_ >= 0) close(writer_);
        writer_ = -1;
    }

  private:
    int saved_ = -1, writer_ = -1;
};
