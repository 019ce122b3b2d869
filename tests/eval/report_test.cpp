#include "eval/report.h"

#include <gtest/gtest.h>

#include <string>

#include "driver/transcript.h"
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

// The whole report of the start position with the given side to move.
static std::string start_report(bool white) {
    return std::string(white ? " side    0\n" : " side    1\n") +
           " epsq    64\tcflag 15\n"
           " incheck 0\trule50 0\n"
           " wking   4\tbking 60\n"
           "\n" +
           (white ? "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -\n"
                  : "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -\n") +
           "\n" + START_TABLE +
           "          mg\teg [White POV]\n"
           " pawns    0\t0\n"
           " material 0\t0\n"
           " k safety 0\t0\n" +
           (white ? " tempo    8\t8\n" : " tempo    -8\t-8\n") +
           "-----------------------\n"
           "eval = 8\n";
}

constexpr const char* START_BLACK = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq -";

struct ReportRow {
    const char* name;
    const char* fen;
    bool white;
};

TEST(EvalReport, StartPositionEitherSideToMove) {
    const ReportRow rows[] = {
        {"white to move", START_FEN, true},
        {"black to move", START_BLACK, false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = record_from_fen(r.fen);
        testing::internal::CaptureStdout();
        eval_report(game->stack[0]);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), start_report(r.white));
    }
}

TEST(EvalReport, EngineTranscript) {
    const EngineRun run =
        run_engine({"xboard", "eval", std::string("setboard ") + START_BLACK, "eval", "quit"});
    const std::string white = start_report(true), black = start_report(false);
    const size_t at = run.out.find(white);
    ASSERT_NE(at, std::string::npos) << run.out;
    EXPECT_EQ(run.out.compare(at + white.size(), black.size(), black), 0) << run.out;
    EXPECT_EQ(run.err, "");
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
