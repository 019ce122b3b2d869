// Search speed: nodes per second with one and with two threads, and the time each of the six
// bench positions takes to reach a fixed depth (new game before each, 128 MB table). The result
// lines begin with "bench:" so that a script can pick them out of the engine's own output.
//
//   search_bench [depth]     (default 12)

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "bench/search_harness.h"
#include "board/notation.h"

constexpr int DEFAULT_DEPTH = 12;
constexpr int HASH_MB       = 128;

int main(int argc, char** argv) {
    const int depth = argc > 1 ? std::atoi(argv[1]) : DEFAULT_DEPTH;
    if (depth < 1 || depth > MAX_DEPTH) {
        std::printf("usage: search_bench [depth 1..%d]\n", MAX_DEPTH);
        return 1;
    }
    for (int i = 0; i < 6; ++i)
        std::printf("bench: fen %d %s\n", i + 1, bench_positions[i]);
    for (int threads = 1; threads <= 2; ++threads) {
        FixedSearch runs[6];
        const uint64_t nodes = run_bench_positions(threads, HASH_MB, depth, runs);
        int64_t ms           = 0;
        for (int i = 0; i < 6; ++i) {
            ms += runs[i].ms;
            std::printf("bench: threads %d position %d depth %d time %" PRId64 " nodes %" PRIu64
                        " nps %" PRIu64 " move %s\n",
                        threads, i + 1, depth, runs[i].ms, runs[i].nodes,
                        runs[i].nodes * 1000 / static_cast<uint64_t>(runs[i].ms + 1),
                        move_text(runs[i].best));
        }
        std::printf("bench: threads %d total time %" PRId64 " nodes %" PRIu64 " nps %" PRIu64 "\n", threads,
                    ms, nodes, nodes * 1000 / static_cast<uint64_t>(ms + 1));
    }
    return 0;
}
