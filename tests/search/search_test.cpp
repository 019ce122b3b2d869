// The search's fixed points: the node-count signature, the exchange values, and the transposition
// table's check word and mate scores, including entries that several threads overwrite at once.

#include <atomic>
#include <thread>

#include "search/movepick.h"
#include "search/tt.h"
#include "support.h"

namespace {

// Fixed-depth, one-thread searches of the six bench positions and the perft suite's visit exactly
// the committed number of nodes. A deliberate change of search behaviour updates
// tests/data/signature.txt with it.
TEST(Signature, MatchesCommittedValue) {
    std::ifstream in(MORVAINE_SOURCE_DIR "/tests/data/signature.txt");
    uint64_t expected = 0;
    in >> expected;
    ASSERT_NE(expected, 0u) << "tests/data/signature.txt is missing or empty";
    testing::internal::CaptureStdout();
    const NodeSignature s = node_signature(MORVAINE_SOURCE_DIR "/tests/data/perft_suite.epd");
    testing::internal::GetCapturedStdout();
    ASSERT_NE(s.suite, 0u);
    EXPECT_EQ(s.bench + s.suite, expected);
}

TEST(See, ExchangeValues) {
    const struct {
        const char *name, *fen, *move;
        int value;
    } rows[] = {
        {"pawn takes defended knight", "4k3/8/2p5/3n4/4P3/8/8/4K3 w - -", "e4d5", 0},
        {"queen takes pawn defended by pawn", "4k3/8/2p5/3p4/8/8/8/3QK3 w - -", "d1d5", -900},
        {"quiet knight move onto a pawn's square", "4k3/8/8/3p4/8/8/1N6/4K3 w - -", "b2c4", -310},
        {"rook takes undefended knight", "4k3/8/8/3n4/8/8/8/3RK3 w - -", "d1d5", 310},
        {"rook takes knight defended by pawn", "4k3/8/2p5/3n4/8/8/8/3RK3 w - -", "d1d5", -190},
        {"rooks doubled against a rook", "3rk3/8/8/3p4/8/8/3R4/3RK3 w - -", "d2d5", 100},
        {"queen behind the bishop joins", "4k3/5b2/8/3p4/2B5/1Q6/8/4K3 w - -", "c4d5", 100},
        {"bishop behind the pawn joins later", "4k3/5b2/4p3/3p4/2B5/1Q6/8/4K3 w - -", "c4d5", -230},
        {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", "e5d6", 100},
        {"free promotion", "4k3/P7/8/8/8/8/8/4K3 w - -", "a7a8q", 900},
        {"promotion taken by the king", "1k6/P7/8/8/8/8/8/4K3 w - -", "a7a8q", -100},
        {"black knight takes defended pawn", "4k3/8/8/4n3/2P5/1P1P4/8/4K3 b - -", "e5c4", -210},
        {"black queen takes defended rook", "4k3/8/8/3q4/8/8/3R4/1N2K3 b - -", "d5d2", -500},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(see(position_of(r.fen), text_to_move(r.move)), r.value);
    }
}

class Hash : public ::testing::Test {
  protected:
    void SetUp() override {
        harness_tables_init();
        testing::internal::CaptureStdout();
        hash_alloc(2);
        testing::internal::GetCapturedStdout();
    }
};

// A mate score is stored as a distance from the entry's own position and read back from the
// reader's ply; other scores come back as they were.
TEST_F(Hash, ScoresSeenFromTheReadersPly) {
    const struct {
        int score, store_ply, probe_ply, read;
    } rows[] = {
        {MATE - 10, 4, 4, MATE - 10}, {MATE - 10, 4, 6, MATE - 12}, {MATE - 10, 4, 1, MATE - 7},
        {10 - MATE, 4, 6, 12 - MATE}, {10 - MATE, 4, 1, 7 - MATE},  {-250, 3, 9, -250},
        {32000, 2, 7, 32000},
    };
    auto t = game_from(START_FEN);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.score);
        hash_clear();
        hash_store(*t, 0x1234, r.score, 55, 7, r.store_ply, BOUND_EXACT);
        HashHit hit{};
        ASSERT_TRUE(hash_probe(t->key, r.probe_ply, hit));
        EXPECT_EQ(hit.score, r.read);
        EXPECT_EQ(hit.eval, 55);
        EXPECT_EQ(hit.depth, 7);
        EXPECT_EQ(hit.bound, BOUND_EXACT);
        EXPECT_FALSE(hash_probe(t->key ^ 0x100000000ULL, r.probe_ply, hit));
    }
}

// Writers keep replacing one entry with their own positions while readers probe it: a hit always
// carries exactly what the writer of that key stored, never half of another position's entry.
TEST_F(Hash, EntryUnderConcurrentWriters) {
    constexpr int WRITERS = 3;
    std::atomic<int> wrong{0}, hits{0};
    std::vector<std::thread> threads;
    for (int w = 0; w < WRITERS; ++w)
        threads.emplace_back([&, w] {
            auto t = std::make_unique<SearchThread>();
            t->key = (static_cast<uint64_t>(w + 1) << 40) | 0x1234;
            for (int i = 0; i < 30000; ++i) {
                hash_store(*t, static_cast<Move>(0x100 + w), 100 * w, 10 * w, 5, 0, BOUND_LOWER);
                for (int k = 0; k < WRITERS; ++k) {
                    HashHit hit{};
                    if (!hash_probe((static_cast<uint64_t>(k + 1) << 40) | 0x1234, 0, hit)) continue;
                    ++hits;
                    if (hit.move != static_cast<Move>(0x100 + k) || hit.score != 100 * k ||
                        hit.eval != 10 * k)
                        ++wrong;
                }
            }
        });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_GT(hits.load(), 0);
}

} // namespace
