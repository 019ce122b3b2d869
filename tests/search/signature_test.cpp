// The node-count signature: fixed-depth, one-thread searches of the six bench positions must
// visit exactly the committed number of nodes. A deliberate change of search behaviour updates
// tests/data/signature.txt in the same commit.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>

#include "bench/search_harness.h"

namespace {

uint64_t committed_signature() {
    std::ifstream in(MORVAINE_SOURCE_DIR "/tests/data/signature.txt");
    uint64_t value = 0;
    in >> value;
    return value;
}

TEST(Signature, MatchesCommittedValue) {
    const uint64_t expected = committed_signature();
    ASSERT_NE(expected, 0u) << "tests/data/signature.txt is missing or empty";
    FixedSearch runs[6];
    testing::internal::CaptureStdout();
    const uint64_t total = run_bench_positions(1, SIGNATURE_HASH_MB, SIGNATURE_DEPTH, runs);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(total, expected);
}

// Searches in between (another thread count, trained histories) leave no trace: fresh records
// and a new game decide the count.
TEST(Signature, RepeatsInTheSameProcess) {
    FixedSearch first[6], second[6];
    testing::internal::CaptureStdout();
    run_bench_positions(1, SIGNATURE_HASH_MB, 6, first);
    run_bench_positions(2, SIGNATURE_HASH_MB, 6, second);
    run_bench_positions(1, SIGNATURE_HASH_MB, 6, second);
    testing::internal::GetCapturedStdout();
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i + 1);
        EXPECT_EQ(second[i].nodes, first[i].nodes);
        EXPECT_EQ(second[i].best & SQUARE_BITS, first[i].best & SQUARE_BITS);
    }
}

} // namespace
