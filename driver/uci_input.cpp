#include "driver/uci_input.h"

#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

#include "platform/platform.h"

namespace {

constexpr int EOF_RETRY_MS = 10;

struct Queue {
    std::mutex lock;
    std::condition_variable arrived;
    std::deque<std::string> lines;
    bool running = false;
};

// On the heap and never destroyed: the reader may still be using it when the program ends, and
// no way out of the program may tear it down under that thread.
Queue& queue() {
    static Queue* q = new Queue;
    return *q;
}

// A line longer than the buffer arrives in pieces, each taken as a line of its own.
void read_lines() {
    static char buffer[UCI_LINE_SIZE];
    Queue& q = queue();
    for (;;) {
        if (!read_line(buffer, UCI_LINE_SIZE - 1)) {
            sleep_ms(EOF_RETRY_MS);
            continue;
        }
        {
            std::lock_guard<std::mutex> hold(q.lock);
            q.lines.emplace_back(buffer);
        }
        q.arrived.notify_one();
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

std::string uci_input_next() {
    Queue& q = queue();
    std::unique_lock<std::mutex> hold(q.lock);
    q.arrived.wait(hold, [&] { return !q.lines.empty(); });
    std::string line = std::move(q.lines.front());
    q.lines.pop_front();
    return line;
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
