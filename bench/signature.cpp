// Prints the node-count signature: the summed node counts of fixed-depth, one-thread searches of
// the six bench positions and of the perft suite's positions, each after a new game. The test
// suite compares it with tests/data/signature.txt, so any change of search behaviour shows as an
// edit of that file.

#include <cinttypes>
#include <cstdio>

#include "bench/search_harness.h"

int main() {
    const NodeSignature s = node_signature(MORVAINE_SOURCE_DIR "/tests/data/perft_suite.epd");
    if (s.suite == 0) {
        std::printf("cannot read " MORVAINE_SOURCE_DIR "/tests/data/perft_suite.epd\n");
        return 1;
    }
    std::printf("bench positions to depth %d: %" PRIu64 " nodes\n", SIGNATURE_DEPTH, s.bench);
    std::printf("suite positions to depth %d: %" PRIu64 " nodes\n", SUITE_SIGNATURE_DEPTH, s.suite);
    std::printf("signature: %" PRIu64 "\n", s.bench + s.suite);
    return 0;
}
