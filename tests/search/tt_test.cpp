#include "search/tt.h"

#include <climits>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "board/makemove.h"

namespace {

// Runs f with stdout captured and returns what it printed.
template <typename F> std::string printed(F f) {
    testing::internal::CaptureStdout();
    f();
    return testing::internal::GetCapturedStdout();
}

class Hash : public ::testing::Test {
  protected:
    void SetUp() override {
        printed([] { hash_alloc(2); });
        hash_age = 1;
        thread   = std::make_unique<SearchThread>();
    }

    void store(uint64_t key, Move move, int score, int eval, int depth, int ply, int bound) {
        thread->key = key;
        hash_store(*thread, move, score, eval, depth, ply, bound);
    }

    std::unique_ptr<SearchThread> thread;
};

} // namespace

TEST_F(Hash, AllocationSizes) {
    struct Row {
        const char* name;
        int request;
        const char* line;
        uint64_t size, mask;
    };
    const Row rows[] = {
        {"odd size rounds down", 7, "hash=6MB\n", 6 * 1048576ULL, 0x5ffff},
        {"one is raised to two", 1, "hash=2MB\n", 2 * 1048576ULL, 0x1ffff},
        {"even size kept", 8, "hash=8MB\n", 8 * 1048576ULL, 0x7ffff},
        {"65 gives 64", 65, "hash=64MB\n", 64 * 1048576ULL, 0x3fffff},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(printed([&] { hash_alloc(r.request); }), r.line);
        EXPECT_EQ(hash_size, r.size);
        EXPECT_EQ(hash_mask, r.mask);
        ASSERT_NE(hash_table, nullptr);
    }
}

// A new table starts empty even where the old one held entries.
TEST_F(Hash, NewTableIsEmpty) {
    for (uint64_t k = 1; k < 1000; ++k)
        store(k * 0x9E3779B97F4A7C15ULL, 796, 10, 20, 3, 0, BOUND_EXACT);
    printed([] { hash_alloc(2); });
    uint64_t nonzero = 0;
    for (uint64_t i = 0; i <= hash_mask; ++i)
        nonzero += hash_table[i].check.load() != 0 || hash_table[i].data.load() != 0;
    EXPECT_EQ(nonzero, 0u);
}

TEST_F(Hash, MateScoreConversion) {
    struct Row {
        const char* name;
        int score, ply, want;
        bool storing;
    };
    const Row rows[] = {
        {"mate given, stored at ply 5", 32760, 5, 32765, true},
        {"mate given, read at ply 3", 32765, 3, 32762, false},
        {"mate suffered, stored at ply 4", -32700, 4, -32704, true},
        {"mate suffered, read at ply 4", -32704, 4, -32700, false},
        {"32630 is not a mate score on store", 32630, 7, 32630, true},
        {"32631 is one on store", 32631, 7, 32638, true},
        {"32630 is not one on reading", 32630, 7, 32630, false},
        {"32631 is one on reading", 32631, 7, 32624, false},
        {"-32646 is not one on store", -32646, 7, -32646, true},
        {"-32647 is one on store", -32647, 7, -32654, true},
        {"-32646 is not one on reading", -32646, 7, -32646, false},
        {"-32647 is one on reading", -32647, 7, -32640, false},
        {"ordinary score", -150, 9, -150, true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.storing ? score_to_hash(r.score, r.ply) : score_from_hash(r.score, r.ply), r.want);
    }
}

TEST_F(Hash, StoredFieldsReadBack) {
    struct Row {
        const char* name;
        Move move;
        int score, eval, depth, ply, bound;
        Move want_move;
        int want_score, read_ply;
    };
    const Row rows[] = {
        {"sort key dropped, quiet mark kept", 0xABCD0000u | QUIET_MARK | 796, 35, -40, 7, 2, BOUND_LOWER,
         QUIET_MARK | 796, 35, 2},
        {"promotion word", 35896, -2000, 1500, 1, 0, BOUND_UPPER, 35896, -2000, 0},
        {"mate through store and probe", 262, 32760, 12, 20, 5, BOUND_EXACT, 262, 32762, 3},
        {"suffered mate", 262, -32700, -32760, 3, 4, BOUND_UPPER, 262, -32702, 2},
        {"quiescence depth 0", 0, 5, 5, 0, 9, BOUND_EXACT, 0, 5, 9},
        {"quiescence depth -1", 0, -5, -7, -1, 9, BOUND_UPPER, 0, -5, 9},
        {"evaluation only", 0, 0, 123, -2, 6, BOUND_NONE, 0, 0, 6},
        {"deepest", 3898, 1, -1, 99, 0, BOUND_LOWER, 3898, 1, 0},
    };
    uint64_t key = 0x123456789ABCDEF0ULL;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        key += 0x9E3779B97F4A7C15ULL;
        store(key, r.move, r.score, r.eval, r.depth, r.ply, r.bound);
        HashHit hit{};
        ASSERT_TRUE(hash_probe(key, r.read_ply, hit));
        EXPECT_EQ(hit.move, r.want_move);
        EXPECT_EQ(hit.score, r.want_score);
        EXPECT_EQ(hit.eval, r.eval);
        EXPECT_EQ(hit.depth, r.depth);
        EXPECT_EQ(hit.bound, r.bound);
        EXPECT_EQ(hash_table[key & hash_mask].data.load() >> 58, hash_age);
    }
}

// The entry at the index holds a depth-10 result of position A from the current search; B shares
// the index.
TEST_F(Hash, ReplacementRule) {
    struct Row {
        const char* name;
        bool same_position;
        int new_depth;
        bool age_changed;
        bool replaced;
    };
    const Row rows[] = {
        {"shallower store for another position keeps the entry", false, 5, false, false},
        {"evaluation-only store keeps it", false, -2, false, false},
        {"equal depth replaces", false, 10, false, true},
        {"deeper replaces", false, 11, false, true},
        {"entry of an earlier search is replaced", false, 5, true, true},
        {"same position is always replaced", true, 1, false, true},
    };
    const uint64_t a = 0x00000000000ABCDEULL & hash_mask;
    const uint64_t b = a + (hash_mask + 1) * 7;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        hash_clear();
        hash_age = 5;
        store(a, 796, 111, 0, 10, 0, BOUND_EXACT);
        if (r.age_changed) ++hash_age;
        store(r.same_position ? a : b, 262, 222, 0, r.new_depth, 0, BOUND_LOWER);
        HashHit hit{};
        const uint64_t winner = r.replaced ? (r.same_position ? a : b) : a;
        ASSERT_TRUE(hash_probe(winner, 0, hit));
        EXPECT_EQ(hit.score, r.replaced ? 222 : 111);
        if (!r.same_position) {
            EXPECT_FALSE(hash_probe(r.replaced ? a : b, 0, hit));
        }
    }
}

// Ages wrap at 64: the entry stores hash_age modulo 64 and the rule compares it so.
TEST_F(Hash, AgeWrapsAtSixtyFour) {
    hash_age = 3;
    store(77, 796, 1, 0, 12, 0, BOUND_EXACT);
    hash_age = 67;
    store(77 + hash_mask + 1, 262, 2, 0, 4, 0, BOUND_EXACT);
    HashHit hit{};
    EXPECT_TRUE(hash_probe(77, 0, hit));
    EXPECT_FALSE(hash_probe(77 + hash_mask + 1, 0, hit));
}

TEST_F(Hash, MissesOnTornForeignAndEmptyEntries) {
    const uint64_t key = 0x5555AAAA0000FFFFULL;
    HashHit hit{};
    EXPECT_FALSE(hash_probe(key, 0, hit)) << "empty table";
    store(key, 796, 50, 60, 4, 0, BOUND_EXACT);
    ASSERT_TRUE(hash_probe(key, 0, hit));
    EXPECT_FALSE(hash_probe(key + hash_mask + 1, 0, hit)) << "other position, same index";
    // Data of a second store without its check word: a torn entry.
    HashEntry& e = hash_table[key & hash_mask];
    e.data.store(e.data.load() ^ (1ULL << 20));
    EXPECT_FALSE(hash_probe(key, 0, hit)) << "torn entry";
    // A check word matching zero data is still no entry.
    e.data.store(0);
    e.check.store(key);
    EXPECT_FALSE(hash_probe(key, 0, hit)) << "zero data";
}

// 6 MB holds 393,216 entries; the mask 0x5ffff keeps every key inside them.
TEST_F(Hash, MaskThatIsNotAllOnes) {
    printed([] { hash_alloc(7); });
    ASSERT_EQ(hash_mask, 0x5ffffu);
    const uint64_t keys[] = {~0ULL, 0x7ffff, 0x60000, 0xfffffffffff9ffffULL};
    for (uint64_t k : keys) {
        SCOPED_TRACE(k);
        store(k, 796, 1, 2, 3, 0, BOUND_EXACT);
        EXPECT_LT(k & hash_mask, hash_size / sizeof(HashEntry));
        HashHit hit{};
        EXPECT_TRUE(hash_probe(k, 0, hit));
    }
}

TEST_F(Hash, ClearEmptiesAndResetsAge) {
    store(42, 796, 1, 2, 3, 0, BOUND_EXACT);
    hash_age = 17;
    hash_clear();
    HashHit hit{};
    EXPECT_FALSE(hash_probe(42, 0, hit));
    EXPECT_EQ(hash_age, 0u);
}

TEST_F(Hash, Statistics) {
    struct Row {
        const char* name;
        int cores;
        uint64_t nodes_before;
        uint64_t stored_at[2];
        int stored;
        const char* want;
    };
    const Row rows[] = {
        {"just cleared",
         1,
         0,
         {0, 0},
         0,
         "\n**** Hashing Statistics ****\n"
         "Cores             1\n"
         "Table size        2097152\n"
         "Mask              0x1ffff\n"
         "Count entries     0\n"
         "Nodes searched    1\n"
         "Percentage use    0.000000%\n"
         "Node efficiency   0.000000%  [hash entries/nodes_searched]\n"
         "Minimum table use 0x200000\n"
         "Maximum table use 0x0\n\n"},
        {"two entries",
         4,
         400,
         {5, 100},
         2,
         "\n**** Hashing Statistics ****\n"
         "Cores             4\n"
         "Table size        2097152\n"
         "Mask              0x1ffff\n"
         "Count entries     2\n"
         "Nodes searched    400\n"
         "Percentage use    0.001526%\n"
         "Node efficiency   0.500000%  [hash entries/nodes_searched]\n"
         "Minimum table use 0xa\n"
         "Maximum table use 0xc8\n\n"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        hash_clear();
        for (int i = 0; i < r.stored; ++i)
            store(r.stored_at[i], 796, 1, 2, 3, 0, BOUND_EXACT);
        nodes_searched.store(r.nodes_before);
        EXPECT_EQ(printed([&] { hash_stats(r.cores); }), r.want);
    }
}

TEST(HashDeathTest, ImpossibleRequestEndsWithTheMessage) {
    const std::string out =
        testing::TempDir() + "morvaine_hash_failure_" + std::to_string(std::random_device{}()) + ".txt";
    const int requests[] = {INT_MAX, 1 << 24};
    for (int mb : requests) {
        SCOPED_TRACE(mb);
        EXPECT_EXIT(
            {
                if (!std::freopen(out.c_str(), "w", stdout)) std::abort();
                hash_alloc(mb);
            },
            ::testing::ExitedWithCode(1), "");
        std::ifstream in(out);
        std::stringstream text;
        text << in.rdbuf();
        EXPECT_EQ(text.str(), " hash allocation error - exiting ...\n");
    }
    std::remove(out.c_str());
}
