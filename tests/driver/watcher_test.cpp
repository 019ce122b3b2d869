// The input watcher: raises input_ready only in XBoard mode and only when stdin holds bytes, never
// consumes them, and ends on watcher_quit or uci_mode.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <string>

#include "driver/engine_state.h"
#include "driver/platform.h"
#include "driver/watcher.h"

namespace {

// Stdin replaced by a pipe holding the given bytes for the life of the object.
class PipedStdin {
  public:
    explicit PipedStdin(const char* bytes) {
        saved = dup(0);
        if (pipe(fds) != 0) ADD_FAILURE() << "pipe";
        if (*bytes && write(fds[1], bytes, std::strlen(bytes)) < 0) ADD_FAILURE() << "write";
        dup2(fds[0], 0);
    }
    ~PipedStdin() {
        dup2(saved, 0);
        close(saved);
        close(fds[0]);
        if (fds[1] >= 0) close(fds[1]);
    }
    // Bytes still waiting in the pipe.
    std::string drain() {
        close(fds[1]);
        fds[1] = -1;
        std::string s;
        char buf[64];
        ssize_t n;
        while ((n = read(fds[0], buf, sizeof buf)) > 0)
            s.append(buf, static_cast<size_t>(n));
        return s;
    }

  private:
    int saved  = -1;
    int fds[2] = {-1, -1};
};

// Waits up to ten seconds for input_ready; the watcher looks every 4 ms.
bool ready_within_a_while() {
    for (int i = 0; i < 2000; ++i) {
        if (engine.input_ready.load()) return true;
        sleep_ms(5);
    }
    return false;
}

struct WatchRow {
    const char* name;
    int xboard_mode;
    const char* bytes;
    bool ready;
};

TEST(InputWatcher, RaisesReadyOnlyForXBoardInput) {
    const WatchRow rows[] = {
        {"xboard with a line waiting", 1, "usermove\n", true},
        {"xboard with a partial line", 1, "e2", true},
        {"xboard with nothing", 1, "", false},
        {"console with a line waiting", 0, "go\n", false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        PipedStdin in(r.bytes);
        engine.xboard_mode  = r.xboard_mode;
        engine.uci_mode     = 0;
        engine.watcher_quit = 0;
        engine.input_ready  = 0;
        start_input_watcher();
        if (r.ready) {
            EXPECT_TRUE(ready_within_a_while());
        } else {
            sleep_ms(40); // ten looks of the watcher
            EXPECT_FALSE(engine.input_ready.load());
        }
        engine.watcher_quit = 1;
        join_input_watcher();
        EXPECT_EQ(in.drain(), r.bytes); // nothing was read
    }
    engine.xboard_mode  = 0;
    engine.watcher_quit = 0;
    engine.input_ready  = 0;
}

TEST(InputWatcher, EndsWhenUciStarts) {
    engine.watcher_quit = 0;
    engine.uci_mode     = 0;
    start_input_watcher();
    engine.uci_mode = 1;
    join_input_watcher(); // returns once the watcher has seen uci_mode
    engine.uci_mode = 0;
    SUCCEED();
}

} // namespace
