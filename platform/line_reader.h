#pragma once
// Standard input turned into lines, shared by the platform files: each OS supplies the bytes, this
// buffer holds them. "Input pending" must see what has already been pulled in but not yet handed
// out as a line, so the count of buffered bytes is published for the input watcher to read.

#include <atomic>
#include <cstddef>

class LineReader {
  public:
    // Reads at most `size` bytes into `to`; returns how many, 0 at the end of input or on an error.
    using Fill = size_t (*)(char* to, size_t size);

    // constexpr, so that a reader at namespace scope needs no constructor to run at start-up.
    explicit constexpr LineReader(Fill fill) : fill_(fill) {}

    // One line (without its line end) into buf of size n; a longer line comes back in pieces. A
    // newline, a carriage return or both together end a line. False at the end of input.
    bool read_line(char* buf, int n);
    // Whether bytes wait in the buffer; safe to ask from any thread.
    bool has_buffered() const { return buffered_.load(std::memory_order_relaxed) > 0; }

  private:
    static constexpr size_t BUFFER_SIZE = 1 << 16;

    // Only the reading thread touches the buffer and its indices.
    Fill fill_;
    char buffer_[BUFFER_SIZE]{};
    size_t start_ = 0, end_ = 0;
    // The last line ended at a carriage return whose newline had not arrived yet: a newline that
    // begins the next read still belongs to that line end.
    bool newline_owed_ = false;
    std::atomic<size_t> buffered_{0};
};
