#include "platform/line_reader.h"

bool LineReader::read_line(char* buf, int n) {
    if (n < 2) {
        if (n == 1) buf[0] = '\0';
        return n == 1;
    }
    int len = 0;
    for (;;) {
        if (start_ == end_) {
            const size_t got = fill_(buffer_, BUFFER_SIZE);
            if (got == 0) {
                // A last line without its line end still counts as a line.
                newline_owed_ = false;
                buf[len]      = '\0';
                buffered_.store(0, std::memory_order_relaxed);
                return len > 0;
            }
            start_ = 0;
            end_   = got;
        }
        const char c = buffer_[start_++];
        if (c == '\n' && newline_owed_ && len == 0) {
            newline_owed_ = false;
            continue;
        }
        newline_owed_ = false;
        if (c == '\n') break;
        if (c == '\r') {
            // A carriage return ends a line as well, so that input with carriage returns alone
            // is not run together; with a newline right after it, the two are one line end.
            if (start_ < end_)
                start_ += buffer_[start_] == '\n';
            else
                newline_owed_ = true;
            break;
        }
        buf[len++] = c;
        if (len == n - 1) break; // the rest of a long line comes back as the next piece
    }
    buf[len] = '\0';
    buffered_.store(end_ - start_, std::memory_order_relaxed);
    return true;
}
