#include "eval/pawns.h"

#include <gtest/gtest.h>

#include <atomic>
#include <initializer_list>
#include <thread>
#include <vector>

#include "eval_fixture.h"

static uint64_t squares(std::initializer_list<int> list) {
    uint64_t b = 0;
    for (int s : list)
        b |= bit(s);
    return b;
}

constexpr int D4 = 27, E3 = 20, E4 = 28, E5 = 36, E6 = 44, G3 = 22;

struct PawnRow {
    const char* name;
    const char* fen;
    int mg, eg;
    uint64_t stops;
};

TEST(PawnStructure, ScoresAndPasserStops) {
    const PawnRow rows[] = {
        {"no pawns", "4k3/8/8/8/8/8/8/4K3 w - -", 0, 0, 0},
        {"start position", START_FEN, 0, 0, 0},
        // Passed (40, 40 + 2<<4 - 5<<3) and isolated (-4, -8); the king race stays at 0.
        {"lone white e5", "4k3/8/8/4P3/8/8/8/4K3 w - -", 36, 24, squares({E6})},
        {"lone black e4", "4k3/8/8/8/4p3/8/8/4K3 w - -", -36, -24, squares({E3})},
        // Only the rear pawn is doubled; both are isolated and passed; king race 5.
        {"doubled and isolated e2 e3", "7k/8/8/8/8/4P3/4P3/K7 w - -", -12, 6, squares({E3, E4})},
        // e6 is connected and opposed (65 >> 1, 60 >> 1), f6 connected (65, 60); e7 backward and
        // isolated; each side's king race is 5.
        {"opposed connected", "k7/4p3/4PP2/8/8/8/8/K7 w - -", 107, 110, 0},
        // e3 is doubled but connected, so it takes no penalty.
        {"connected and doubled", "k7/8/8/8/4P3/3PP3/8/K7 w - -", 73, 92, squares({D4, E4, E5})},
        // The pawn in front of its king adds 8 to the middlegame.
        {"shield", "k7/8/8/8/8/8/6P1/6K1 w - -", 4, 20, squares({G3})},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const auto game    = record_from_fen(r.fen);
        const PawnScore ps = compute_pawns(game->stack[0]);
        EXPECT_EQ(pawn_mg(ps.score), r.mg);
        EXPECT_EQ(pawn_eg(ps.score), r.eg);
        EXPECT_EQ(ps.stops, r.stops);
        EXPECT_EQ(ps.score >> 32, 0u);
        const PawnScore cached = eval_pawns(game->stack[0]);
        EXPECT_EQ(cached.score, ps.score);
        EXPECT_EQ(cached.stops, ps.stops);
    }
}

struct CacheRow {
    const char* name;
    uint64_t key_change;   // the planted entry belongs to pawnkey ^ key_change
    uint64_t stops_change; // applied to the stops word after the check word was made (torn)
    bool planted_returned;
};

TEST(PawnStructure, CacheReturnsStoredWordsAndReplacesOthers) {
    const CacheRow rows[] = {
        {"matching entry", 0, 0, true},
        {"entry of another key at the same index", 1ULL << 40, 0, false},
        {"torn entry", 0, 1ULL << 17, false},
    };
    const auto game              = record_from_fen("4k3/8/8/4P3/8/8/8/4K3 w - -");
    const Position& p            = game->stack[0];
    const PawnScore computed     = compute_pawns(p);
    const uint64_t planted_score = pack_pawn_score(-1234, -567);
    const uint64_t planted_stops = 0xF0F0ULL;
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        PawnEntry& e = pawn_hash[p.pawnkey & PAWN_HASH_MASK];
        e.score      = planted_score;
        e.stops      = planted_stops ^ r.stops_change;
        e.check      = (p.pawnkey ^ r.key_change) ^ planted_score ^ planted_stops;

        const PawnScore got = eval_pawns(p);
        if (r.planted_returned) {
            EXPECT_EQ(pawn_mg(got.score), -1234);
            EXPECT_EQ(pawn_eg(got.score), -567);
            EXPECT_EQ(got.stops, planted_stops);
        } else {
            EXPECT_EQ(got.score, computed.score);
            EXPECT_EQ(got.stops, computed.stops);
            // Always overwritten with the position's own words.
            EXPECT_EQ(e.score, computed.score);
            EXPECT_EQ(e.stops, computed.stops);
            EXPECT_EQ(e.check, p.pawnkey ^ computed.score ^ computed.stops);
        }
    }
}

// Threads that keep overwriting one entry with different structures must never read back a mix:
// every answer is the position's own.
TEST(PawnStructure, SharedEntryUnderConcurrentWriters) {
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
        Position p = record_from_fen(fen)->stack[0];
        p.pawnkey  = (p.pawnkey & ~PAWN_HASH_MASK) | SHARED_INDEX;
        positions.push_back(p);
        expected.push_back(compute_pawns(p));
    }
    constexpr int THREADS = 4, ROUNDS = 20000;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < ROUNDS; ++i) {
                const size_t k     = static_cast<size_t>(i + t) % positions.size();
                const PawnScore ps = eval_pawns(positions[k]);
                if (ps.score != expected[k].score || ps.stops != expected[k].stops) ++wrong;
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong.load(), 0);
}
