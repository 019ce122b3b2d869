// Perft speed: leaves per second for the start position at depth 6 and the castling/pin-heavy
// middlegame position at depth 5, each the best of a few runs (the machine is shared).
// Usage: perft_bench [runs]   (default 3). One line per position:
//   <name> depth <d> leaves <n> seconds <s> leaves/s <rate>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/perft.h"

namespace {

struct Case {
    const char* name;
    const char* fen;
    int depth;
};

} // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    tables_init();

    const Case cases[] = {
        {"startpos", START_FEN, 6},
        {"kiwipete", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", 5},
    };
    auto game = std::make_unique<PositionStack>();
    for (const Case& c : cases) {
        double best    = 0;
        int64_t leaves = 0;
        for (int i = 0; i < runs; ++i) {
            setboard(*game, c.fen);
            perft_totals     = PerftTotals{};
            const auto start = std::chrono::steady_clock::now();
            perft(*game, c.depth);
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
            leaves                                   = perft_totals.moves;
            if (best == 0 || took.count() < best) best = took.count();
        }
        std::printf("%s depth %d leaves %" PRId64 " seconds %.3f leaves/s %.0f\n", c.name, c.depth, leaves,
                    best, static_cast<double>(leaves) / best);
    }
}
