#include "driver/uci_input.h"

#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

#include "platform/platform.h"

namespace {

struct Queue {
    std::mutex lock;
    std::condition_variable arrived;
    std::deque<std::string> lines;
    bool running = false;
    bool ended   = false; // the input has ended: no line will come after those queued
};

// On the heap and never destroyed: the reader may still be using it when the program ends, and
// no way out of the program may tear it down under that thread.
Queue& queue() {
    static Queue* q = new Queue;
    return *q;
}

// A line longer than the buffer arrives in pieces, each taken as a line of its own. At the end of
// the input the reader says so and ends: a GUI that has gone sends nothing more.
void read_lines() {
    static char buffer[UCI_LINE_SIZE];
    Queue& q = queue();
    for (;;) {
        const bool got = read_line(buffer, UCI_LINE_SIZE - 1);
        {
            std::lock_guard<std::mutex> hold(q.lock);
            if (got)
                q.lines.emplace_back(buffer);
            else
                q.ended = true;
        }
        q.arrived.notify_one();
        if (!got) return;
    }
}

} // namespace

void uci_input_start() {
    Queue& q = queue();
    std::lock_guard<std::mutex> hold(q.lock);
    if (q.running) return;
    // Detached and never joined: it sits in a read until the process ends, and "quit" must not
    // wait for a line that never comes.
    std::thread(read_lines).detach();
    q.running = true;
}

bool uci_input_next(std::string& line) {
    Queue& q = queue();
    std::unique_lock<std::mutex> hold(q.lock);
    q.arrived.wait(hold, [&] { return !q.lines.empty() || q.ended; });
    if (q.lines.empty()) return false;
    line = std::move(q.lines.front());
    q.lines.pop_front();
    return true;
}

bool uci_input_ended(const char* barrier) {
    Queue& q = queue();
    std::lock_guard<std::mutex> hold(q.lock);
    if (!q.ended) return false;
    for (const std::string& line : q.lines)
        if (line.compare(0, std::strlen(barrier), barrier) == 0) return false;
    return true;
}

bool uci_input_take(const char* const* words, int count, const char* barrier, std::string& line) {
    Queue& q = queue();
    std::lock_guard<std::mutex> hold(q.lock);
    for (auto it = q.lines.begin(); it != q.lines.end(); ++it) {
        if (it->compare(0, std::strlen(barrier), barrier) == 0) return false;
        for (int i = 0; i < count; ++i) {
            if (it->compare(0, std::strlen(words[i]), words[i]) != 0) continue;
            line = std::move(*it);
            q.lines.erase(it);
            return true;
        }
    }
    return false;
}
