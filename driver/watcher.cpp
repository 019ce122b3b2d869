#include "driver/watcher.h"

#include <atomic>
#include <new>
#include <thread>

#include "driver/engine_state.h"
#include "platform/platform.h"

constexpr int WATCH_MS = 4;

// Held on the heap and never destroyed while it runs: a process that ends at end of input must
// not meet a joinable std::thread in a static destructor.
static std::thread* watcher = nullptr;

static void input_watcher() {
    do {
        sleep_ms(WATCH_MS);
        if (protocol.xboard_mode.load(std::memory_order_relaxed) &&
            !protocol.input_ready.load(std::memory_order_relaxed) && input_pending())
            protocol.input_ready.store(1, std::memory_order_relaxed);
    } while (!protocol.uci_mode.load(std::memory_order_relaxed) &&
             !protocol.watcher_quit.load(std::memory_order_relaxed));
}

void start_input_watcher() {
    if (watcher) return;
    // Without a watcher the engine still plays; only XBoard input no longer interrupts a search.
    try {
        watcher = new std::thread(input_watcher);
    } catch (...) {
        watcher = nullptr;
    }
}

void join_input_watcher() {
    if (!watcher) return;
    watcher->join();
    delete watcher;
    watcher = nullptr;
}
