// The board diagram and the bench positions.

#include "driver/display.h"

#include <cstdio>

#include "board/types.h"

const char* const bench_positions[6] = {
    "3r1k2/4npp1/1ppr3p/p6P/P2PPPP1/1NR5/5K2/2R5 w - - 0 1",
    "rnb2rk1/pp1nppbp/1qp3p1/P2pP3/3P4/2N1BN1P/1PP1BPP1/R2QK2R b KQ - 0 1",
    "6r1/2rp1kpp/2qQp3/p3Pp1P/1pP2P2/1P2KP2/P5R1/6R1 w - - 0 1",
    "6k1/p4pbp/qp2r1p1/3Q4/8/7P/PPRB1PP1/6K1 b - - 0 32",
    "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1",
    "r4k2/pb2bp1r/1p1qp2p/3pNp2/3P1P2/2N3P1/PPP1Q2P/2KRR3 w - - 0 1",
};

void show_board(const uint8_t board[64]) {
    static constexpr char letters[]    = "PNBRQK";
    static constexpr const char* frame = "   ************************";
    std::printf("\n%s\n", frame);
    for (int rank = 7; rank >= 0; --rank) {
        char row[64];
        int len = std::snprintf(row, sizeof row, "%d |", rank + 1);
        for (int file = 0; file < 8; ++file) {
            const uint8_t code = board[file + 8 * rank];
            const bool piece   = code != EMPTY && piece_type(code) <= KING;
            const bool black   = piece && piece_colour(code) == BLACK;
            row[len++]         = black ? '<' : ' ';
            row[len++]         = piece ? letters[piece_type(code)] : '*';
            row[len++]         = black ? '>' : ' ';
        }
        row[len++] = '|';
        row[len++] = '\n';
        row[len]   = '\0';
        std::fputs(row, stdout);
    }
    std::printf("%s\n    a  b  c  d  e  f  g  h\n", frame);
}
