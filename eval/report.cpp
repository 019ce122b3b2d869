#include "eval/report.h"

#include <cstdio>

#include "board/fen.h"
#include "eval/evaluate.h"
#include "eval/pawns.h"
#include "eval/tables.h"

constexpr const char* RULE_LONG  = "-----------------------------------------------------";
constexpr const char* RULE_SHORT = "-----------------------";
constexpr int REPORT_TEMPO       = 8;

// clang-format off
constexpr const char* pst_row_formats[6] = {
    "   pawns | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
    " knights | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
    " bishops | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
    "   rooks | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
    "  queens | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
    "   kings | %+1.2f  %+1.2f | %+1.2f  %+1.2f | %+1.2f  %+1.2f\n",
};
// clang-format on

static double in_pawns(int centipawns) {
    return centipawns / 100.0;
}

void eval_report(Position& p) {
    std::printf(" side    %d\n", p.side);
    std::printf(" epsq    %d\tcflag %d\n", p.epsq, p.cflag);
    std::printf(" incheck %d\trule50 %d\n", p.incheck, p.rule50);
    std::printf(" wking   %d\tbking %d\n", p.wking, p.bking);
    std::puts("");
    savepos(p);
    std::puts("");

    // From scratch, so the table and the material line do not carry make-move's castling bonus.
    pst_init(p);
    std::puts("               White          Black");
    std::puts("    PST      mg     eg      mg     eg      mg     eg");
    std::puts(RULE_LONG);
    for (int t = PAWN; t <= KING; ++t) {
        const int wmg = pst_display_mg[piece_code(WHITE, t)], weg = pst_display_eg[piece_code(WHITE, t)];
        const int bmg = pst_display_mg[piece_code(BLACK, t)], beg = pst_display_eg[piece_code(BLACK, t)];
        std::printf(pst_row_formats[t], in_pawns(wmg), in_pawns(weg), in_pawns(bmg), in_pawns(beg),
                    in_pawns(wmg - bmg), in_pawns(weg - beg));
    }
    std::printf("%s\n\n", RULE_LONG);

    const PawnScore ps = eval_pawns(p);
    std::puts("          mg\teg [White POV]");
    std::printf(" pawns    %d\t", pawn_mg(ps.score));
    std::printf("%d\n", pawn_eg(ps.score));

    const int score = evaluate(p);
    std::printf(" material %d\t", p.mg);
    std::printf("%d\n", p.eg);
    std::printf(" k safety %d\t0\n", 0);
    const int tempo = p.side == WHITE ? REPORT_TEMPO : -REPORT_TEMPO;
    std::printf(" tempo    %d\t%d\n", tempo, tempo);
    std::puts(RULE_SHORT);
    std::printf("eval = %d\n", score);
}
