// The evaluation against its own mirror image, and the pawn cache shared by racing threads.

#include <atomic>
#include <cctype>
#include <thread>

#include "eval/evaluate.h"
#include "eval/pawns.h"
#include "support.h"

namespace {

// The same position with the board turned over: ranks reversed, colours, side to move, castling
// rights and the en-passant square exchanged.
std::string flip_fen(const std::string& fen) {
    std::istringstream in(fen);
    std::string placement, side, castling, ep;
    in >> placement >> side >> castling >> ep;
    std::string flipped, rank;
    for (std::istringstream ranks(placement); std::getline(ranks, rank, '/');)
        flipped = flipped.empty() ? rank : rank + "/" + flipped;
    for (char& c : flipped)
        c = std::isupper(static_cast<unsigned char>(c)) ? std::tolower(c) : std::toupper(c);
    for (char& c : castling)
        if (c != '-') c = std::isupper(static_cast<unsigned char>(c)) ? std::tolower(c) : std::toupper(c);
    if (ep.size() == 2) ep[1] = static_cast<char>('1' + '8' - ep[1]);
    return flipped + (side == "w" ? " b " : " w ") + castling + " " + ep;
}

// Every position of the random games scores the same as its twin with colours exchanged. Small
// endings scale the material sum by a shift that rounds towards minus infinity from White's view,
// so there the twins may differ by the rounding and are compared only when it cannot arise.
TEST(Evaluate, ColourFlippedTwinScoresAlike) {
    int compared = 0;
    playouts(3, 200, [&](SearchThread& game, Move) {
        const std::string fen = fen_of(game.stack[0]);
        const Position a      = position_of(fen);
        const Position b      = position_of(flip_fen(fen));
        ASSERT_EQ(b.mg, -a.mg) << fen;
        ASSERT_EQ(b.eg, -a.eg) << fen;
        if (popcount(occupancy(a)) <= 5 && a.eg % 8 != 0) return;
        ASSERT_EQ(evaluate(a), evaluate(b)) << fen;
        ++compared;
    });
    EXPECT_GT(compared, 30000);
}

// Threads that keep overwriting one cache entry with different structures never read back a mix,
// and leave behind one whole entry of one of them.
TEST(PawnCache, SharedEntryUnderConcurrentWriters) {
    const char* fens[] = {
        START_FEN,
        "4k3/8/8/4P3/8/8/8/4K3 w - -",
        "k7/4p3/4PP2/8/8/8/8/K7 w - -",
        "k7/8/8/8/4P3/3PP3/8/K7 w - -",
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    };
    constexpr uint64_t SHARED_INDEX = 0x5A5A5;
    std::vector<Position> positions;
    std::vector<PawnScore> expected;
    for (const char* fen : fens) {
        Position p = game_from(fen)->stack[0];
        p.pawnkey  = (p.pawnkey & ~PAWN_HASH_MASK) | SHARED_INDEX;
        positions.push_back(p);
        expected.push_back(compute_pawns(p));
    }
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (size_t i = 0; i < 20000; ++i) {
                const size_t k     = (i + t) % positions.size();
                const PawnScore ps = eval_pawns(positions[k]);
                if (ps.score != expected[k].score || ps.stops != expected[k].stops) ++wrong;
            }
        });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong.load(), 0);
    const PawnEntry& e = pawn_hash[SHARED_INDEX];
    int whole          = 0;
    for (size_t k = 0; k < positions.size(); ++k)
        whole += e.check == (positions[k].pawnkey ^ expected[k].score ^ expected[k].stops) &&
                 e.score == expected[k].score && e.stops == expected[k].stops;
    EXPECT_EQ(whole, 1);
}

} // namespace
