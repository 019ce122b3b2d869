#include "eval/tables.h"

#include <bit>
#include <gtest/gtest.h>
#include <initializer_list>

#include "board/attacks.h"

namespace {

int sq(const char* s) {
    return (s[0] - 'a') + 8 * (s[1] - '1');
}

uint64_t squares(std::initializer_list<const char*> names) {
    uint64_t b = 0;
    for (const char* n : names)
        b |= bit(sq(n));
    return b;
}

// Every square of the rectangle between two corners, e.g. box("d3", "f8").
uint64_t box(const char* from, const char* to) {
    uint64_t b = 0;
    for (int f = from[0] - 'a'; f <= to[0] - 'a'; ++f)
        for (int r = std::min(from[1], to[1]) - '1'; r <= std::max(from[1], to[1]) - '1'; ++r)
            b |= bit(f + 8 * r);
    return b;
}

class EvalTables : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        attack_init();
        pst_tables_init();
        pawn_masks_init();
        adjacent_files_init();
    }
};

constexpr int W = WHITE, B = BLACK;

} // namespace

TEST_F(EvalTables, MaterialPlusSquareValues) {
    struct Row {
        const char* name;
        int32_t got, want;
    };
    const Row rows[] = {
        {"mg white king g1", pst_mg[piece_code(W, KING)][G1], 20020},
        {"mg black king g8", pst_mg[piece_code(B, KING)][G8], 20020},
        {"eg white knight a1", pst_eg[piece_code(W, KNIGHT)][A1], 270},
        {"eg black knight h8", pst_eg[piece_code(B, KNIGHT)][H8], 270},
        {"mg white pawn e4", pst_mg[piece_code(W, PAWN)][sq("e4")], 90},
        {"eg white pawn e4", pst_eg[piece_code(W, PAWN)][sq("e4")], 90},
        {"mg black pawn e5", pst_mg[piece_code(B, PAWN)][sq("e5")], 90},
        {"eg black pawn e5", pst_eg[piece_code(B, PAWN)][sq("e5")], 90},
        // Flipped top to bottom only: a white pawn on g2 and a black pawn on g7 read the same entry.
        {"mg white pawn g2", pst_mg[piece_code(W, PAWN)][sq("g2")], 95},
        {"mg black pawn g7", pst_mg[piece_code(B, PAWN)][sq("g7")], 95},
        {"mg black pawn b7", pst_mg[piece_code(B, PAWN)][sq("b7")], 75},
        {"eg white pawn b7", pst_eg[piece_code(W, PAWN)][sq("b7")], 130},
        {"mg white knight h7", pst_mg[piece_code(W, KNIGHT)][sq("h7")], 320},
        {"mg white knight a7", pst_mg[piece_code(W, KNIGHT)][sq("a7")], 290},
        {"mg white bishop g8", pst_mg[piece_code(W, BISHOP)][G8], 327},
        {"mg white bishop d2", pst_mg[piece_code(W, BISHOP)][sq("d2")], 328},
        {"eg black bishop d4", pst_eg[piece_code(B, BISHOP)][sq("d4")], 335},
        {"mg white rook h2", pst_mg[piece_code(W, ROOK)][sq("h2")], 485},
        {"mg black rook h7", pst_mg[piece_code(B, ROOK)][sq("h7")], 485},
        {"eg white rook a7", pst_eg[piece_code(W, ROOK)][sq("a7")], 510},
        {"mg white queen a4", pst_mg[piece_code(W, QUEEN)][sq("a4")], 990},
        {"eg black queen d2", pst_eg[piece_code(B, QUEEN)][sq("d2")], 1025},
        {"mg white king c2", pst_mg[piece_code(W, KING)][sq("c2")], 19985},
        {"eg black king c7", pst_eg[piece_code(B, KING)][sq("c7")], 19990},
        {"eg white king c7", pst_eg[piece_code(W, KING)][sq("c7")], 20045},
        {"unused code 6", pst_mg[6][sq("e4")], 0},
        {"unused code 14", pst_eg[14][sq("e4")], 0},
        {"empty code 15", pst_mg[EMPTY][sq("e4")], 0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
}

// A sum and a position-weighted sum per table catch a mistyped or misplaced value anywhere.
TEST_F(EvalTables, BaseTableChecksums) {
    struct Row {
        const char* name;
        const int32_t* table;
        int sum, weighted;
    };
    const Row rows[] = {
        {"mg pawn", pst_mg_base[PAWN], 10, 5},          {"mg knight", pst_mg_base[KNIGHT], -260, -16170},
        {"mg bishop", pst_mg_base[BISHOP], -20, -1748}, {"mg rook", pst_mg_base[ROOK], 85, -2635},
        {"mg queen", pst_mg_base[QUEEN], 20, -1325},    {"mg king", pst_mg_base[KING], -1010, -26085},
        {"eg pawn", pst_eg_base[PAWN], 10, -8995},      {"eg knight", pst_eg_base[KNIGHT], 40, -9580},
        {"eg bishop", pst_eg_base[BISHOP], 96, 1456},   {"eg rook", pst_eg_base[ROOK], 220, -1250},
        {"eg queen", pst_eg_base[QUEEN], 250, -5435},   {"eg king", pst_eg_base[KING], 690, 4065},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        int sum = 0, weighted = 0;
        for (int i = 0; i < 64; ++i) {
            sum += r.table[i];
            weighted += r.table[i] * (i + 1);
        }
        EXPECT_EQ(sum, r.sum);
        EXPECT_EQ(weighted, r.weighted);
    }
}

// Equal armies on mirrored squares balance: the start position sums to zero in both phases.
TEST_F(EvalTables, StartPositionBalances) {
    const int back[8] = {ROOK, KNIGHT, BISHOP, QUEEN, KING, BISHOP, KNIGHT, ROOK};
    int mg = 0, eg = 0;
    for (int f = 0; f < 8; ++f) {
        mg += pst_mg[piece_code(W, back[f])][f] + pst_mg[piece_code(W, PAWN)][8 + f];
        eg += pst_eg[piece_code(W, back[f])][f] + pst_eg[piece_code(W, PAWN)][8 + f];
        mg -= pst_mg[piece_code(B, back[f])][56 + f] + pst_mg[piece_code(B, PAWN)][48 + f];
        eg -= pst_eg[piece_code(B, back[f])][56 + f] + pst_eg[piece_code(B, PAWN)][48 + f];
    }
    EXPECT_EQ(mg, 0);
    EXPECT_EQ(eg, 0);
}

TEST_F(EvalTables, KingZones) {
    struct Row {
        const char* name;
        int square;
        uint64_t want;
    };
    const Row rows[] = {
        {"a1 as b1", A1, box("a1", "c3")}, {"b1", B1, box("a1", "c3")},
        {"g1", G1, box("f1", "h3")},       {"h1 as g1", H1, box("f1", "h3")},
        {"e1", E1, box("d1", "f3")},       {"e8", E8, box("d6", "f8")},
        {"a8 as b8", A8, box("a6", "c8")}, {"h8 as g8", H8, box("f6", "h8")},
        {"e4", sq("e4"), box("d3", "f5")}, {"a4", sq("a4"), box("a3", "b5")},
        {"h2", sq("h2"), box("g1", "h3")},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(king_zone[r.square], r.want);
    }
}

TEST_F(EvalTables, Distances) {
    struct Row {
        const char* a;
        const char* b;
        int want;
    };
    const Row rows[] = {
        {"a1", "h8", 5}, {"e4", "e6", 2}, {"e4", "e4", 0}, {"a1", "b2", 1}, {"a1", "e1", 4},
        {"a1", "f1", 5}, {"h1", "a1", 5}, {"c3", "e7", 4}, {"g2", "b4", 5}, {"d5", "a2", 3},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.a) + "-" + r.b);
        EXPECT_EQ(distance[sq(r.a)][sq(r.b)], r.want);
        EXPECT_EQ(distance[sq(r.b)][sq(r.a)], r.want);
    }
}

TEST_F(EvalTables, PawnMasks) {
    struct Row {
        const char* name;
        uint64_t got, want;
    };
    const Row rows[] = {
        {"passed white e2", passed_mask[W][sq("e2")], box("d3", "f8")},
        {"passed black a7", passed_mask[B][sq("a7")], box("a1", "b6")},
        {"passed white h5", passed_mask[W][sq("h5")], box("g6", "h8")},
        {"passed black d2", passed_mask[B][sq("d2")], box("c1", "e1")},
        {"passed white on rank 8", passed_mask[W][sq("d8")], 0},
        {"passed black on rank 1", passed_mask[B][sq("d1")], 0},
        {"front white e2", front_span[W][sq("e2")], box("e3", "e8")},
        {"front black e7", front_span[B][sq("e7")], box("e1", "e6")},
        {"front white on rank 8", front_span[W][sq("c8")], 0},
        {"front black on rank 1", front_span[B][sq("c1")], 0},
        {"neighbours white e4", pawn_neighbours[W][sq("e4")], squares({"d4", "f4", "d3", "f3"})},
        {"neighbours black e5", pawn_neighbours[B][sq("e5")], squares({"d5", "f5", "d6", "f6"})},
        {"neighbours white a3", pawn_neighbours[W][sq("a3")], squares({"b3", "b2"})},
        {"neighbours black h6", pawn_neighbours[B][sq("h6")], squares({"g6", "g7"})},
        {"adjacent a", adjacent_files[0], file_mask[1]},
        {"adjacent h", adjacent_files[7], file_mask[6]},
        {"adjacent e", adjacent_files[4], file_mask[3] | file_mask[5]},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
    EXPECT_EQ(std::popcount(passed_mask[W][sq("e2")]), 18);
    EXPECT_EQ(std::popcount(passed_mask[B][sq("a7")]), 12);
}
