// The UCI line handler fed arbitrary lines in sequence, each with the line end the loop gives it.
// Every "go" line is lengthened with a depth of a few plies (the last "depth" token wins) and loses
// the words that would wait for a "stop"; table, thread and line options are held to what a
// fuzzing process can afford.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "driver/engine_state.h"
#include "driver/uci.h"
#include "fuzz/harness.h"

namespace {

constexpr int MAX_THREADS_IN_RUN = 4;
constexpr int MAX_LINES_IN_RUN   = 4;

// Twice, so that a line ending in a keyword that takes a value still ends with the depth.
const std::string SHALLOW =
    " depth " + std::to_string(HARNESS_DEPTH) + " depth " + std::to_string(HARNESS_DEPTH);

std::string guarded(const std::string& line) {
    auto option = [&](const char* prefix, int most) -> std::string {
        const size_t n = std::strlen(prefix);
        if (line.compare(0, n, prefix) != 0 || std::atoi(line.c_str() + n) <= most) return line;
        return prefix + std::to_string(most);
    };
    if (line.compare(0, 2, "go") == 0) {
        // No "stop" or "ponderhit" ever comes: a search that waits for one would never end.
        std::string go = line;
        for (const char* word : {"infinite", "ponder"})
            for (size_t at = go.find(word); at != std::string::npos; at = go.find(word))
                go.erase(at, std::strlen(word));
        return go + SHALLOW;
    }
    for (auto [prefix, most] : {std::pair{"setoption name Hash value ", HARNESS_HASH_MB * 8},
                                std::pair{"setoption name Threads value ", MAX_THREADS_IN_RUN},
                                std::pair{"setoption name MultiPV value ", MAX_LINES_IN_RUN}}) {
        const std::string l = option(prefix, most);
        if (l != line) return l;
    }
    return line;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    harness_reset();
    protocol.uci_mode = 1;
    for (const std::string& raw : split_lines(data, size)) {
        // The line as the loop's reader returns it: up to its first NUL, with a line end added.
        const std::string line =
            guarded(c_text(reinterpret_cast<const uint8_t*>(raw.data()), raw.size())) + "\n";
        if (!uci_command(*game_record, line.c_str())) break;
    }
    return 0;
}
