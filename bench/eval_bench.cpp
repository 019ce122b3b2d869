// Evaluations per second over a fixed set of positions (a few known positions and the positions of
// pseudo-random legal games from them, fixed seed), with the pawn cache warm and with every probe
// made to miss.

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "eval/evaluate.h"
#include "eval/pawns.h"
#include "search/thread.h"

static const char* const starts[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -",
    "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP3PPP/R2QKB1R w KQ -",
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -",
};

constexpr int GAMES_PER_START = 16;
constexpr int PLIES_PER_GAME  = 120;
constexpr int ROUNDS          = 40;

static std::vector<Position> position_set() {
    std::vector<Position> set;
    std::mt19937 rng(7);
    std::unique_ptr<SearchThread> game(new SearchThread);
    Move moves[MAX_MOVES];
    for (const char* fen : starts) {
        for (int g = 0; g < GAMES_PER_START; ++g) {
            setboard(*game, fen);
            set.push_back(game->stack[0]);
            for (int ply = 0; ply < PLIES_PER_GAME; ++ply) {
                const uint32_t n = legal_moves(game->stack[0], moves);
                if (n == 0) break;
                commit_move(*game, moves[rng() % n]);
                set.push_back(game->stack[0]);
            }
        }
    }
    return set;
}

// Returns evaluations per second; spoil makes every pawn-cache probe miss.
static double run(const std::vector<Position>& set, bool spoil, int64_t& checksum) {
    const auto t0 = std::chrono::steady_clock::now();
    for (int r = 0; r < ROUNDS; ++r) {
        for (const Position& p : set) {
            if (spoil) {
                PawnEntry& e = pawn_hash[p.pawnkey & PAWN_HASH_MASK];
                pawn_word_store(e.check, ~pawn_word_load(e.check));
            }
            checksum += evaluate(p);
        }
    }
    const std::chrono::duration<double> dt = std::chrono::steady_clock::now() - t0;
    return static_cast<double>(set.size()) * ROUNDS / dt.count();
}

int main() {
    tables_init();
    if (!pawn_hash_alloc()) {
        std::printf("pawn hash allocation failed\n");
        return 1;
    }
    const std::vector<Position> set = position_set();
    int64_t checksum                = 0;
    for (const Position& p : set)
        checksum += evaluate(p); // fills the cache

    const double warm = run(set, false, checksum);
    const double cold = run(set, true, checksum);
    std::printf("positions %zu, rounds %d\n", set.size(), ROUNDS);
    std::printf("pawn cache warm: %.0f evaluations/s\n", warm);
    std::printf("pawn cache cold: %.0f evaluations/s\n", cold);
    std::printf("checksum %" PRId64 "\n", checksum);
    pawn_hash_free();
    return 0;
}
