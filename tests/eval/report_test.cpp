#include "eval/report.h"

#include <gtest/gtest.h>

#include <string>

#include "eval_fixture.h"

static const char* const START_TABLE = "               White          Black\n"
                                       "    PST      mg     eg      mg     eg      mg     eg\n"
                                       "-----------------------------------------------------\n"
                                       "   pawns | +0.00  +0.25 | +0.05  -0.15 | -0.05  +0.40\n"
                                       " knights | -0.20  +0.00 | -0.30  -0.30 | +0.10  +0.30\n"
                                       " bishops | -0.02  +0.02 | -0.02  -0.03 | +0.00  +0.05\n"
                                       "   rooks | +0.10  +0.05 | -0.10  -0.15 | +0.20  +0.20\n"
                                       "  queens | +0.00  +0.15 | +0.00  -0.20 | +0.00  +0.35\n"
                                       "   kings | -0.20  +0.30 | -0.05  -0.15 | -0.15  +0.45\n"
                                       "-----------------------------------------------------\n"
                                       "\n";

struct ReportRow {
    const char* name;
    const char* fen;
    std::string expected;
};

TEST(EvalReport, StartPositionEitherSideToMove) {
    const ReportRow rows[] = {
        {"white to move", START_FEN,
         std::string(" side    0\n"
                     " epsq    64\tcflag 15\n"
                     " incheck 0\trule50 0\n"
                     " wking   4\tbking 60\n"
                     "\n"
                     "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n"
                     "\n") +
             START_TABLE +
             "          mg\teg [White POV]\n"
             " pawns    0\t0\n"
             " material 0\t0\n"
             " k safety 0\t0\n"
             " tempo    8\t8\n"
             "-----------------------\n"
             "eval = 8\n"},
        {"black to move", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -",
         std::string(" side    1\n"
                     " epsq    64\tcflag 15\n"
                     " incheck 0\trule50 0\n"
                     " wking   4\tbking 60\n"
                     "\n"
                     "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -\n"
                     "\n") +
             START_TABLE +
             "          mg\teg [White POV]\n"
             " pawns    0\t0\n"
             " material 0\t0\n"
             " k safety 0\t0\n"
             " tempo    -8\t-8\n"
             "-----------------------\n"
             "eval = 8\n"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = record_from_fen(r.fen);
        testing::internal::CaptureStdout();
        eval_report(game->stack[0]);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), r.expected);
    }
}

TEST(EvalReport, RecomputesMaterialFromScratch) {
    const char* fen  = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
    auto game        = record_from_fen(fen);
    Position& p      = game->stack[0];
    const int16_t mg = p.mg, eg = p.eg;
    // As left behind by a castling, whose rook move is credited as a flat bonus.
    p.mg = static_cast<int16_t>(p.mg + 20);
    p.eg = static_cast<int16_t>(p.eg - 3);
    testing::internal::CaptureStdout();
    eval_report(p);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(p.mg, mg);
    EXPECT_EQ(p.eg, eg);
    const std::string material = " material " + std::to_string(mg) + "\t" + std::to_string(eg) + "\n";
    EXPECT_NE(out.find(material), std::string::npos) << out;
}
