#include "driver/uci_input.h"

#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

#include "platform/platform.h"

namespace {

constexpr int LINE_SIZE    = 32758;
constexpr int EOF_RETRY_MS = 10;

std::mutex lock;
std::condition_variable arrived;
std::deque<std::string> waiting;
bool running = false;

// A line longer than the buffer arrives in pieces, each taken as a line of its own.
void read_lines() {
    static char buffer[LINE_SIZE];
    for (;;) {
        if (!read_line(buffer, LINE_SIZE - 1)) {
            sleep_ms(EOF_RETRY_MS);
            continue;
        }
        {
            std::lock_guard<std::mutex> hold(lock);
            waiting.emplace_back(buffer);
        }
        arrived.notify_one();
    }
}

} // namespace

void uci_input_start() {
    std::lock_guard<std::mutex> hold(lock);
    if (running) return;
    // Detached and never joined: it sits in a read until the process ends, and "quit" must not
    // wait for a line that never comes.
    std::thread(read_lines).detach();
    running = true;
}

std::string uci_input_next() {
    std::unique_lock<std::mutex> hold(lock);
    arrived.wait(hold, [] { return !waiting.empty(); });
    std::string line = std::move(waiting.front());
    waiting.pop_front();
    return line;
}

bool uci_input_take(const char* const* words, int count, const char* barrier, std::string& line) {
    std::lock_guard<std::mutex> hold(lock);
    for (auto it = waiting.begin(); it != waiting.end(); ++it) {
        if (it->compare(0, std::strlen(barrier), barrier) == 0) return false;
        for (int i = 0; i < count; ++i) {
            if (it->compare(0, std::strlen(words[i]), words[i]) != 0) continue;
            line = std::move(*it);
            waiting.erase(it);
            return true;
        }
    }
    return false;
}
