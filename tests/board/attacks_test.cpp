#include "board/attacks.h"

#include <bit>
#include <gtest/gtest.h>
#include <map>

namespace {

// Square from its name, e.g. sq("e4").
int sq(const char* s) {
    return (s[0] - 'a') + 8 * (s[1] - '1');
}

uint64_t squares(std::initializer_list<const char*> names) {
    uint64_t b = 0;
    for (const char* n : names)
        b |= bit(sq(n));
    return b;
}

class Attacks : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { attack_init(); }
};

struct SliderKind {
    const char* name;
    const MagicEntry* entries;
    uint64_t (*walk)(int, uint64_t);
    uint64_t (*lookup)(int, uint64_t);
    int total;
};

const SliderKind slider_kinds[] = {
    {"rook", rook_magic, walk_rook_attacks, rook_attacks, ROOK_TABLE_SIZE},
    {"bishop", bishop_magic, walk_bishop_attacks, bishop_attacks, BISHOP_TABLE_SIZE},
};

} // namespace

// Every occupancy of every mask: indices shared by two occupancies must carry equal attack sets,
// and the lookup must give what walking the rays gives.
TEST_F(Attacks, EveryBlockSeparatesDifferentAttackSets) {
    for (const SliderKind& k : slider_kinds) {
        for (int s = 0; s < 64; ++s) {
            SCOPED_TRACE(std::string(k.name) + " square " + std::to_string(s));
            const MagicEntry& e = k.entries[s];
            const int n         = std::popcount(e.mask);
            ASSERT_EQ(e.shift, static_cast<uint32_t>(64 - n));
            std::map<uint64_t, uint64_t> by_index;
            int failures = 0;
            for (uint64_t i = 0; i < (1ULL << n); ++i) {
                const uint64_t occ = mask_subset(i, e.mask);
                const uint64_t att = k.walk(s, occ);
                const uint64_t idx = (occ * e.magic) >> e.shift;
                ASSERT_LT(idx, 1ULL << n);
                auto [it, inserted] = by_index.emplace(idx, att);
                if (!inserted && it->second != att) ++failures;
                // Pieces outside the mask must not change the answer.
                if (k.lookup(s, occ | ~e.mask) != att || k.lookup(s, occ) != att) ++failures;
            }
            EXPECT_EQ(failures, 0);
        }
    }
}

TEST_F(Attacks, BlocksFollowOneAnotherInSquareOrder) {
    for (const SliderKind& k : slider_kinds) {
        SCOPED_TRACE(k.name);
        const uint64_t* start = k.entries[0].block;
        uint64_t offset       = 0;
        for (int s = 0; s < 64; ++s) {
            EXPECT_EQ(k.entries[s].block, start + offset) << "square " << s;
            offset += 1ULL << std::popcount(k.entries[s].mask);
        }
        EXPECT_EQ(offset, static_cast<uint64_t>(k.total));
    }
}

TEST_F(Attacks, MasksAndFixedMultipliers) {
    struct Row {
        const char* name;
        uint64_t got, want;
    };
    const Row rows[] = {
        {"rook mask a1", rook_magic[A1].mask, 0x000101010101017EULL},
        {"rook mask h8", rook_magic[H8].mask, 0x7E80808080808000ULL},
        {"rook mask d4", rook_magic[sq("d4")].mask,
         squares({"d2", "d3", "d5", "d6", "d7", "b4", "c4", "e4", "f4", "g4"})},
        {"rook mask e1", rook_magic[E1].mask,
         squares({"b1", "c1", "d1", "f1", "g1", "e2", "e3", "e4", "e5", "e6", "e7"})},
        {"bishop mask a1", bishop_magic[A1].mask, squares({"b2", "c3", "d4", "e5", "f6", "g7"})},
        {"bishop mask e4", bishop_magic[sq("e4")].mask,
         squares({"d3", "c2", "f5", "g6", "d5", "c6", "b7", "f3", "g2"})},
        {"rook a1", rook_multipliers[A1], 0x0080008820104002ULL},
        {"rook b1", rook_multipliers[B1], 0x2080104000882000ULL},
        {"rook c1", rook_multipliers[C1], 0x0880091001200080ULL},
        {"rook h8", rook_multipliers[H8], 0x0000052400970042ULL},
        {"bishop a1", bishop_multipliers[A1], 0x1040011E04010024ULL},
        {"bishop b1", bishop_multipliers[B1], 0x20100102008A0004ULL},
        {"bishop c1", bishop_multipliers[C1], 0x0844014403000030ULL},
        {"bishop h8", bishop_multipliers[H8], 0x004101280F024180ULL},
        {"rook magic entry uses table", rook_magic[sq("e5")].magic, rook_multipliers[sq("e5")]},
        {"bishop magic entry uses table", bishop_magic[sq("e5")].magic, bishop_multipliers[sq("e5")]},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
}

TEST_F(Attacks, LookupsAndConstantTables) {
    struct Row {
        const char* name;
        uint64_t got, want;
    };
    const Row rows[] = {
        {"rook a1 empty board", rook_attacks(A1, 0), 0x01010101010101FEULL},
        {"rook d4 blocked on d6 and f4", rook_attacks(sq("d4"), squares({"d6", "f4", "d7", "g4", "b4"})),
         squares({"d1", "d2", "d3", "d5", "d6", "b4", "c4", "e4", "f4"})},
        {"rook h8 boxed in", rook_attacks(H8, squares({"g8", "h7"})), squares({"g8", "h7"})},
        {"bishop c1 blocked on e3", bishop_attacks(C1, squares({"e3", "b2"})), squares({"b2", "d2", "e3"})},
        {"queen d1 start-like", queen_attacks(D1, squares({"c1", "e1", "c2", "d2", "e2"})),
         squares({"c1", "e1", "c2", "d2", "e2"})},
        {"knight a1", knight_attacks[A1], squares({"b3", "c2"})},
        {"knight e4", knight_attacks[sq("e4")], squares({"d2", "f2", "c3", "g3", "c5", "g5", "d6", "f6"})},
        {"king h8", king_attacks[H8], squares({"g8", "g7", "h7"})},
        {"white pawn e4", pseudo_attacks[0][sq("e4")], squares({"d5", "f5"})},
        {"black pawn e4", pseudo_attacks[8][sq("e4")], squares({"d3", "f3"})},
        {"white pawn a2 clipped", pawn_attacks[WHITE][sq("a2")], squares({"b3"})},
        {"white pawn h2 clipped", pawn_attacks[WHITE][sq("h2")], squares({"g3"})},
        {"white pawn on rank 8", pawn_attacks[WHITE][sq("d8")], 0},
        {"white pawn on rank 1", pawn_attacks[WHITE][sq("d1")], squares({"c2", "e2"})},
        {"black pawn on rank 1", pawn_attacks[BLACK][sq("d1")], 0},
        {"black pawn on rank 8", pawn_attacks[BLACK][sq("d8")], squares({"c7", "e7"})},
        {"bishop_empty a1", bishop_empty[A1], 0x8040201008040200ULL},
        {"rook_empty e4", rook_empty[sq("e4")], (0x1010101010101010ULL | 0xFF000000ULL) & ~bit(sq("e4"))},
        {"queen row", pseudo_attacks[12][sq("d5")], bishop_empty[sq("d5")] | rook_empty[sq("d5")]},
        {"white king row", pseudo_attacks[5][E1], king_attacks[E1]},
        {"black knight row", pseudo_attacks[9][sq("g8")], knight_attacks[sq("g8")]},
        {"black rook row", pseudo_attacks[11][A8], rook_empty[A8]},
        {"white bishop row", pseudo_attacks[2][C1], bishop_empty[C1]},
        {"unused row 6", pseudo_attacks[6][sq("e4")], 0},
        {"unused row 14", pseudo_attacks[14][sq("e4")], 0},
        {"between a1 h8", between[A1][H8], squares({"b2", "c3", "d4", "e5", "f6", "g7"})},
        {"between h8 a1", between[H8][A1], squares({"b2", "c3", "d4", "e5", "f6", "g7"})},
        {"between a1 b3", between[A1][sq("b3")], 0},
        {"between e4 e4", between[sq("e4")][sq("e4")], 0},
        {"between e1 e2 adjacent", between[E1][sq("e2")], 0},
        {"between a8 h8", between[A8][H8], squares({"b8", "c8", "d8", "e8", "f8", "g8"})},
        {"between e1 e8", between[E1][E8], squares({"e2", "e3", "e4", "e5", "e6", "e7"})},
        {"between h1 a8", between[H1][A8], squares({"g2", "f3", "e4", "d5", "c6", "b7"})},
        {"between e1 b4", between[E1][sq("b4")], squares({"d2", "c3"})},
        {"between h1 a2 (no line)", between[H1][sq("a2")], 0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
}

// Between, checked against rays walked from both ends: aligned pairs share exactly the squares
// that each end reaches when the other end is the only piece on the board.
TEST_F(Attacks, BetweenMatchesRaysFromBothEnds) {
    int mismatches = 0;
    for (int a = 0; a < 64; ++a)
        for (int b = 0; b < 64; ++b) {
            uint64_t want = 0;
            if (a != b) {
                if (walk_rook_attacks(a, bit(b)) & bit(b))
                    want = walk_rook_attacks(a, bit(b)) & walk_rook_attacks(b, bit(a));
                else if (walk_bishop_attacks(a, bit(b)) & bit(b))
                    want = walk_bishop_attacks(a, bit(b)) & walk_bishop_attacks(b, bit(a));
            }
            if (between[a][b] != want) ++mismatches;
        }
    EXPECT_EQ(mismatches, 0);
}

TEST_F(Attacks, CastleMasks) {
    struct Row {
        const char* name;
        uint32_t got, want;
    };
    const Row rows[] = {
        {"a1", castle_mask[A1], 14},
        {"h1", castle_mask[H1], 13},
        {"a8", castle_mask[A8], 11},
        {"h8", castle_mask[H8], 7},
        {"e1", castle_mask[E1], 15},
        {"e8", castle_mask[E8], 15},
        {"d4", castle_mask[sq("d4")], 15},
        {"white king", king_castle_mask[WHITE], 0xFFFFFFFCu},
        {"black king", king_castle_mask[BLACK], 0xFFFFFFF3u},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
}
