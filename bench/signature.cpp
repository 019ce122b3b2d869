// Prints the node-count signature: the summed node counts of fixed-depth, one-thread searches of
// the six bench positions, each after a new game. The test suite compares it with
// tests/data/signature.txt, so any change of search behaviour shows as an edit of that file.

#include <cinttypes>
#include <cstdio>

#include "bench/search_harness.h"

int main() {
    FixedSearch runs[6];
    const uint64_t total = run_bench_positions(1, SIGNATURE_HASH_MB, SIGNATURE_DEPTH, runs);
    for (int i = 0; i < 6; ++i)
        std::printf("position %d: %" PRIu64 " nodes\n", i + 1, runs[i].nodes);
    std::printf("signature: %" PRIu64 "\n", total);
    return 0;
}
