#include "eval/evaluate.h"

#include <gtest/gtest.h>

#include "eval_fixture.h"

constexpr int TEMPO = 8;

// The two running totals from White's view: at phase 0 the blend returns the middlegame total, at a
// stored phase of 128 the endgame total.
struct Totals {
    int mg, eg;
};
static Totals totals(Position p) {
    p.side       = WHITE;
    p.phase      = 0;
    const int mg = evaluate(p) - TEMPO;
    p.phase      = 128;
    return {mg, evaluate(p) - TEMPO};
}

struct ScoreRow {
    const char* name;
    const char* fen;
    int score;
};

TEST(Evaluate, KnownScores) {
    const ScoreRow rows[] = {
        {"start, white to move", START_FEN, 8},
        {"start, black to move", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -", 8},
        {"bare kings, white to move", "4k3/8/8/8/8/8/8/4K3 w - -", 8},
        {"bare kings, black to move", "4k3/8/8/8/8/8/8/4K3 b - -", 8},
        {"K+P e5 v K, white to move", "4k3/8/8/4P3/8/8/8/4K3 w - -", 131},
        {"K+P e5 v K, black to move", "4k3/8/8/4P3/8/8/8/4K3 b - -", -115},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(evaluate(record_from_fen(r.fen)->stack[0]), r.score);
    }
}

struct TotalsRow {
    const char* name;
    const char* fen;
    int mg, eg;
};

TEST(Evaluate, TermTotals) {
    const TotalsRow rows[] = {
        // mg 90 + pawns 36 + one push into the king zone (2 x 1); eg 95 + pawns 24 + safe push 4.
        {"K+P e5 v K", "4k3/8/8/4P3/8/8/8/4K3 w - -", 128, 123},
        // 480 material, 11 squares x 3, open file (8 - 1) x 4 = 28, a safe check on a8: (2 + 8) x 7.
        {"rook alone on an open file", "7k/8/8/8/8/8/8/R3K3 w - -", 611, 566},
        // 400 material, pawns +4, 10 squares x 3, file (8 - 2) x 2 = 12; eg: loose a7, stop a6.
        {"rook file with an enemy pawn", "7k/p7/8/8/8/8/8/R3K3 w - -", 446, 490},
        // Rooks off their first rank see through each other: 14 squares each; three safe checks.
        {"rooks on the second rank", "7k/8/8/8/8/8/R2R4/7K w - -", 1509, 1153},
        // On the first rank they block each other: 10 and 14 squares.
        {"rooks on the first rank", "7k/8/8/8/8/8/8/R2R3K w - -", 1483, 1119},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const Totals t = totals(record_from_fen(r.fen)->stack[0]);
        EXPECT_EQ(t.mg, r.mg);
        EXPECT_EQ(t.eg, r.eg);
    }
}

struct BlendRow {
    const char* name;
    int side;
    uint8_t phase;
    int score;
};

TEST(Evaluate, PhaseBlendAndTempo) {
    // K+P e5 v K: MG 128, EG 123 from White's view.
    const BlendRow rows[] = {
        {"phase 0, white", WHITE, 0, 128 + 8},
        {"phase 0, black", BLACK, 0, -128 + 8},
        {"phase 64, white", WHITE, 64, ((64 * 123 + 64 * 128) >> 7) + 8},
        {"phase 64, black rounds down", BLACK, 64, -126 + 8},
        {"phase 127, white", WHITE, 127, ((127 * 123 + 128) >> 7) + 8},
        {"phase 127, black rounds down", BLACK, 127, -124 + 8},
        {"phase 128, white", WHITE, 128, 123 + 8},
        {"phase 128, black", BLACK, 128, -123 + 8},
        {"stored phase 200 reads negative", WHITE, 200, 123 + 8},
    };
    const auto game = record_from_fen("4k3/8/8/4P3/8/8/8/4K3 w - -");
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        Position p = game->stack[0];
        p.side     = static_cast<uint8_t>(r.side);
        p.phase    = r.phase;
        EXPECT_EQ(evaluate(p), r.score);
    }
}

struct ScalingRow {
    const char* name;
    const char* fen;
    int e;      // the position's endgame material sum, White minus Black
    int scaled; // what it contributes after scaling
};

// In a pure endgame with White to move the score moves one for one with the scaled material sum,
// and every rule scales 0 to 0.
static int scaled_material(const char* fen, int e) {
    Position p       = record_from_fen(fen)->stack[0];
    p.side           = WHITE;
    p.phase          = PHASE_TOTAL;
    p.eg             = static_cast<int16_t>(e);
    const int with_e = evaluate(p);
    p.eg             = 0;
    return with_e - evaluate(p);
}

TEST(Evaluate, EndgameScaling) {
    const ScalingRow rows[] = {
        {"K v K", "4k3/8/8/8/8/8/8/4K3 w - -", 100, 0},
        {"KN v K", "4k3/8/8/8/8/8/8/1N2K3 w - -", 300, 0},
        {"K v KB", "2b1k3/8/8/8/8/8/8/4K3 w - -", -300, 0},
        {"KNN v K", "4k3/8/8/8/8/8/8/1N2KN2 w - -", 500, 0},
        {"KN v KP, knight ahead: capped", "4k3/4p3/8/8/8/8/8/1N2K3 w - -", 200, 0},
        {"KN v KP, pawn ahead: kept", "4k3/4p3/8/8/8/8/8/1N2K3 w - -", -50, -50},
        {"KP v KB, bishop ahead: capped", "2b1k3/8/8/8/8/8/4P3/4K3 w - -", -200, 0},
        {"KP v KB, pawn ahead: kept", "2b1k3/8/8/8/8/8/4P3/4K3 w - -", 50, 50},
        {"KR v KN, 7 / 4", "1n2k3/8/8/8/8/8/8/R3K3 w - -", 7, 1},
        {"KR v KN, -7 / 4", "1n2k3/8/8/8/8/8/8/R3K3 w - -", -7, -2},
        {"KB v KR, -7 / 8", "r3k3/8/8/8/8/8/8/2B1K3 w - -", -7, -1},
        {"KB v KR, 7 / 8", "r3k3/8/8/8/8/8/8/2B1K3 w - -", 7, 0},
        {"KBB v KB", "2b1k3/8/8/8/8/8/8/2B1KB2 w - -", 400, 0},
        {"KNB v KB", "2b1k3/8/8/8/8/8/8/1NB1K3 w - -", 400, 0},
        {"KNN v KB", "2b1k3/8/8/8/8/8/8/1N2KN2 w - -", 400, 0},
        {"KNB v KN", "1n2k3/8/8/8/8/8/8/1NB1K3 w - -", 400, 0},
        {"KNN v KN", "1n2k3/8/8/8/8/8/8/1N2KN2 w - -", 400, 0},
        {"KNB v KR", "r3k3/8/8/8/8/8/8/1NB1K3 w - -", -300, 0},
        {"KR v KNN", "1n2kn2/8/8/8/8/8/8/R3K3 w - -", -100, 0},
        {"KBR v KR, 100 / 8", "r3k3/8/8/8/8/8/8/R1B1K3 w - -", 100, 12},
        {"KBR v KR, -100 / 8", "r3k3/8/8/8/8/8/8/R1B1K3 w - -", -100, -13},
        {"KR v KNR, -100 / 8", "r2nk3/8/8/8/8/8/8/R3K3 w - -", -100, -13},
        {"KR v KPB, rook ahead: capped", "2b1k3/4p3/8/8/8/8/8/R3K3 w - -", 200, 0},
        {"KR v KPB, pawn side ahead: kept", "2b1k3/4p3/8/8/8/8/8/R3K3 w - -", -50, -50},
        {"KPN v KR, rook ahead: capped", "r3k3/8/8/8/8/8/4P3/1N2K3 w - -", -200, 0},
        {"KPN v KR, pawn side ahead: kept", "r3k3/8/8/8/8/8/4P3/1N2K3 w - -", 50, 50},
        {"KP v K", "4k3/8/8/8/8/8/4P3/4K3 w - -", 100, 100},
        {"KR v K", "4k3/8/8/8/8/8/8/R3K3 w - -", 500, 500},
        {"KR v KR", "r3k3/8/8/8/8/8/8/R3K3 w - -", 7, 7},
        {"KBN v K", "4k3/8/8/8/8/8/8/1NB1K3 w - -", 300, 300},
        {"KP v KP", "4k3/4p3/8/8/8/8/4P3/4K3 w - -", 30, 30},
        {"KPB v KB, one colour of bishops", "5bk1/8/8/8/8/8/4P3/2B1K3 w - -", 100, 100},
        {"KBB v KN", "1n2k3/8/8/8/8/8/8/2B1KB2 w - -", 100, 100},
        {"KQ v K", "4k3/8/8/8/8/8/8/3QK3 w - -", 100, 100},
        {"KNN v KNN, six men", "1n2kn2/8/8/8/8/8/8/1N2KN2 w - -", 100, 100},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(scaled_material(r.fen, r.e), r.scaled);
    }
}

struct BishopRow {
    const char* name;
    const char* fen;
    int step; // score change when the endgame material sum rises by 30
};

TEST(Evaluate, OppositeBishops) {
    // This position is its own colour-flipped twin, so everything but the material sum cancels.
    const char* mirror      = "4k3/8/2b5/4p3/4P3/2B5/8/4K3 w - -";
    const int expected[][2] = {{-100, -33 + 8}, {100, 33 + 8}, {-2, 0 + 8}};
    for (const auto& e : expected) {
        SCOPED_TRACE(e[0]);
        Position p = record_from_fen(mirror)->stack[0];
        p.eg       = static_cast<int16_t>(e[0]);
        EXPECT_EQ(evaluate(p), e[1]);
    }

    const BishopRow rows[] = {
        {"opposite bishops and pawns", "4k3/5p2/8/2b5/8/8/3PB3/4K3 w - -", 10},
        {"bishops of one colour", "4k3/5p2/8/3b4/8/8/3PB3/4K3 w - -", 30},
        {"opposite bishops and a knight", "4k3/5p2/8/2b5/8/8/3PB3/4KN2 w - -", 30},
        {"opposite bishops and rooks", "r3k3/5p2/8/2b5/8/8/3PB3/R3K3 w - -", 30},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        Position p    = record_from_fen(r.fen)->stack[0];
        p.side        = WHITE;
        p.phase       = PHASE_TOTAL;
        p.eg          = -3000;
        const int low = evaluate(p);
        p.eg          = -3000 + 30;
        EXPECT_EQ(evaluate(p) - low, r.step);
    }
}

struct OddRow {
    const char* name;
    const char* fen;
    bool has_twin; // both kings on the board, so the turned board is the same position
};

// Hand-made boards that no game reaches must still evaluate without reading outside any table
// (the sanitizer build checks that), and alike for both colours where the kings are there.
TEST(Evaluate, OddBoards) {
    const OddRow rows[] = {
        {"pawns on the first and last ranks", "P3k2p/8/8/8/8/8/8/p3K2P w - -", true},
        {"passed pawns on the last rank", "4k3/1P6/8/8/8/8/6p1/P3K2p b - -", true},
        {"no kings", "8/8/3p4/8/8/4P3/8/8 w - -", false},
        {"nine queens", "4k3/QQQQQQQQ/8/8/8/8/8/Q3K3 w - -", true},
        {"twenty pieces each side", "rrrrkrrr/nnnnnnnn/8/8/8/8/NNNNNNNN/RRRRKRRR w - -", true},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const int score = evaluate(record_from_fen(r.fen)->stack[0]);
        if (r.has_twin) {
            EXPECT_EQ(score, evaluate(record_from_fen(flip_fen(r.fen).c_str())->stack[0]));
        }
    }
}
