#include "board/movegen.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

#include "board/makemove.h"
#include "board_helpers.h"

namespace {

enum class Gen { captures, captures_queen_only, quiets, evasions, evasions_queen_only, checks };

std::string generated(const char* fen, Gen g) {
    auto game = game_from(fen);
    MoveList list;
    list.count        = 0;
    const Position& p = *game->pos;
    switch (g) {
    case Gen::captures:
        gen_captures(p, list.moves, &list.count, 1);
        break;
    case Gen::captures_queen_only:
        gen_captures(p, list.moves, &list.count, 0);
        break;
    case Gen::quiets:
        gen_quiets(p, list.moves, &list.count);
        break;
    case Gen::evasions:
        gen_evasions(p, list.moves, &list.count, 1);
        break;
    case Gen::evasions_queen_only:
        gen_evasions(p, list.moves, &list.count, 0);
        break;
    case Gen::checks:
        gen_checks(p, list.moves, &list.count);
        break;
    }
    return list_text(list.moves, list.count);
}

// Generated entries carry no sort key except promotions, which carry the fixed ones.
void expect_entry_bits(const Move* moves, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const Move m        = moves[i];
        const uint32_t high = m & 0xFFFFF000u;
        const Move keys[5]  = {0, PROMO_KNIGHT, PROMO_BISHOP, PROMO_ROOK, PROMO_QUEEN};
        EXPECT_EQ(high, keys[move_promo(m)]) << move_text(m);
    }
}

std::vector<Move> legal_only(const Position& p, const Move* moves, uint32_t count) {
    std::vector<Move> v;
    for (uint32_t i = 0; i < count; ++i)
        if (legal(p, moves[i])) v.push_back(moves[i]);
    std::sort(v.begin(), v.end());
    return v;
}

constexpr const char* EVERY_CAPTURE = "r1r4k/1P6/B3b3/1p2n1pP/2PP1P2/2N1R2Q/7n/6K1 w - g6";

} // namespace

TEST(MoveGen, ListsInTheirFixedOrder) {
    struct Row {
        const char* name;
        const char* fen;
        Gen gen;
        const char* moves;
    };
    const Row rows[] = {
        {"start captures", START_FEN, Gen::captures, ""},
        {"start quiets", START_FEN, Gen::quiets,
         "a2a3 b2b3 c2c3 d2d3 e2e3 f2f3 g2g3 h2h3 a2a4 b2b4 c2c4 d2d4 e2e4 f2f4 g2g4 h2h4 b1a3 b1c3 g1f3 "
         "g1h3"},
        {"black quiets", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -", Gen::quiets,
         "a7a6 b7b6 c7c6 d7d6 e7e6 f7f6 g7g6 h7h6 a7a5 b7b5 c7c5 d7d5 e7e5 f7f5 g7g5 h7h5 b8a6 b8c6 g8f6 "
         "g8h6"},
        {"push promotion", "k7/4P3/8/8/8/8/8/4K3 w - -", Gen::captures, "e7e8q e7e8r e7e8b e7e8n"},
        {"push promotion, queen only", "k7/4P3/8/8/8/8/8/4K3 w - -", Gen::captures_queen_only, "e7e8q"},
        {"black push promotion", "4k3/8/8/8/8/8/3p4/K7 b - -", Gen::captures, "d2d1q d2d1r d2d1b d2d1n"},
        {"every kind of capture", EVERY_CAPTURE, Gen::captures,
         "g1h2 c4b5 d4e5 f4e5 f4g5 h5g6 b7a8q b7a8r b7a8b b7a8n b7c8q b7c8r b7c8b b7c8n c3b5 a6b5 e3e5 h3h2 "
         "h3e6 b7b8q b7b8r b7b8b b7b8n"},
        {"every kind of capture, queen only", EVERY_CAPTURE, Gen::captures_queen_only,
         "g1h2 c4b5 d4e5 f4e5 f4g5 h5g6 b7a8q b7c8q c3b5 a6b5 e3e5 h3h2 h3e6 b7b8q"},
        {"king captures avoid pawn-guarded squares and the other king", "8/8/8/8/8/2k5/1pPp4/2K5 w - -",
         Gen::captures, ""},
        {"castling first, even through an attacked square", "r3kr2/8/8/8/8/4p3/8/R3K2R w KQq -", Gen::quiets,
         "e1g1 e1c1 e1d1 e1f1 e1e2 a1b1 a1c1 a1d1 a1a2 a1a3 a1a4 a1a5 a1a6 a1a7 h1f1 h1g1 h1h2 h1h3 h1h4 "
         "h1h5 "
         "h1h6 h1h7 h1h8"},
        {"black castling", "r3k2r/8/8/8/8/8/8/4K3 b kq -", Gen::quiets,
         "e8g8 e8c8 e8d7 e8e7 e8f7 e8d8 e8f8 a8a1 a8a2 a8a3 a8a4 a8a5 a8a6 a8a7 a8b8 a8c8 a8d8 h8h1 h8h2 "
         "h8h3 "
         "h8h4 h8h5 h8h6 h8h7 h8f8 h8g8"},
        {"no castling through a piece", "r3k2r/8/8/8/8/8/8/RN2K1NR w KQkq -", Gen::quiets,
         "e1d1 e1f1 e1d2 e1e2 e1f2 b1d2 b1a3 b1c3 g1e2 g1f3 g1h3 a1a2 a1a3 a1a4 a1a5 a1a6 a1a7 h1h2 h1h3 "
         "h1h4 "
         "h1h5 h1h6 h1h7"},
        {"pieces in kind order", "4k3/8/8/8/8/8/8/QBR1K2N w - -", Gen::quiets,
         "e1d1 e1f1 e1d2 e1e2 e1f2 h1f2 h1g3 b1a2 b1c2 b1d3 b1e4 b1f5 b1g6 b1h7 c1d1 c1c2 c1c3 c1c4 c1c5 "
         "c1c6 "
         "c1c7 c1c8 a1a2 a1b2 a1a3 a1c3 a1a4 a1d4 a1a5 a1e5 a1a6 a1f6 a1a7 a1g7 a1a8 a1h8"},
        {"double pushes only through an empty square", "4k3/8/8/8/8/1n6/PPP5/4K3 w - -", Gen::quiets,
         "e1d1 e1f1 e1d2 e1e2 e1f2 a2a3 c2c3 a2a4 c2c4"},
        {"single check", "7k/3Q4/1BN5/b7/7R/8/1PP5/1N2K3 w - -", Gen::evasions,
         "e1d1 e1f1 e1d2 e1e2 e1f2 c2c3 b2b4 b1d2 b1c3 c6b4 c6a5 b6a5 h4b4 d7d2"},
        {"double check: king moves only", "4k2R/8/8/8/8/5n2/8/4K2r w - -", Gen::evasions,
         "e1d1 e1f1 e1d2 e1e2 e1f2"},
        {"checker on the last rank", "4r2K/3P1P2/8/8/8/8/8/k7 w - -", Gen::evasions,
         "h8g7 h8h7 h8g8 d7e8q d7e8r d7e8b d7e8n f7e8q f7e8r f7e8b f7e8n f7f8q f7f8r f7f8b f7f8n"},
        {"checker on the last rank, queen only", "4r2K/3P1P2/8/8/8/8/8/k7 w - -", Gen::evasions_queen_only,
         "h8g7 h8h7 h8g8 d7e8q f7e8q f7f8q"},
        {"en passant target joins the pawn captures", "8/8/8/2k5/3Pp3/8/8/4K3 b - d3", Gen::evasions,
         "c5b4 c5c4 c5d4 c5b5 c5d5 c5b6 c5c6 c5d6 e4d3"},
        {"checks: queen, discoverer, pawn and bishop", "4k3/8/5P2/8/2B1N3/8/8/Q3R1K1 w - -", Gen::checks,
         "a1a4 a1e5 a1a8 e4d2 e4f2 e4c3 e4g3 e4c5 e4g5 e4d6 f6f7 c4b5 c4f7"},
        // The king may step along its own line (e8f8) and still be listed: duplicates and such
        // non-checks are the search's to drop.
        {"checks: discovering pawn and king", "k3K2R/8/8/3P4/8/8/8/7B w - -", Gen::checks,
         "d5d6 e8d7 e8e7 e8f7 e8f8"},
        {"checks: blocked discovering pawn", "k3K2R/8/3p4/3P4/8/8/8/7B w - -", Gen::checks,
         "e8d7 e8e7 e8f7 e8f8"},
        {"checks: a push along the line uncovers nothing", "4k3/8/8/3p4/4P3/8/8/4R1K1 w - -", Gen::checks,
         "e4d5"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(generated(r.fen, r.gen), r.moves);
    }
}

TEST(MoveGen, ChecksWritesNothingWhenInCheck) {
    auto game = game_from("4k3/8/8/8/8/8/4r3/4K3 w - -");
    MoveList list;
    list.count    = 777;
    list.moves[0] = 12345;
    gen_checks(*game->pos, list.moves, &list.count);
    EXPECT_EQ(list.count, 777u);
    EXPECT_EQ(list.moves[0], 12345u);
}

TEST(MoveGen, EntryBitsAndListSizes) {
    // The densest positions known for pseudo-legal moves must fit the fixed list.
    const char* fens[] = {
        EVERY_CAPTURE,
        "R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - -",
        "3Q4/1Q4Q1/4Q3/2Q4R/Q4Q2/3Q4/1Q4Rp/1K1BBNNk w - -",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -",
    };
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        auto game = game_from(fen);
        MoveList list;
        uint32_t n = 0;
        gen_captures(*game->pos, list.moves, &list.count, 1);
        gen_quiets(*game->pos, list.moves + list.count, &n);
        list.count += n;
        EXPECT_LE(list.count, static_cast<uint32_t>(MAX_MOVES));
        expect_entry_bits(list.moves, list.count);
    }
}

// In check, the evasions keep exactly the legal moves that captures and quiets would give.
TEST(MoveGen, EvasionsAreTheLegalMovesInCheck) {
    int checks_seen = 0;
    walk_suite(2, [&](SearchThread& t) {
        const Position& p = *t.pos;
        if (!p.incheck) return;
        ++checks_seen;
        for (int under = 0; under <= 1; ++under) {
            MoveList all, ev;
            uint32_t n = 0;
            gen_captures(p, all.moves, &all.count, under);
            gen_quiets(p, all.moves + all.count, &n);
            all.count += n;
            gen_evasions(p, ev.moves, &ev.count, under);
            expect_entry_bits(ev.moves, ev.count);
            const auto want = legal_only(p, all.moves, all.count);
            const auto got  = legal_only(p, ev.moves, ev.count);
            ASSERT_EQ(got, want) << fen_of(p) << " flag " << under;
            std::vector<Move> sorted(ev.moves, ev.moves + ev.count);
            std::sort(sorted.begin(), sorted.end());
            ASSERT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end()) << fen_of(p);
        }
    });
    EXPECT_GT(checks_seen, 1000);
}

// Out of check, gen_checks holds every capture (queen promotions only) and every legal quiet move
// that gives check (castling aside), and nothing that captures and quiets would not give.
TEST(MoveGen, ChecksCoverCapturesAndCheckingMoves) {
    int checking_quiets = 0;
    walk_suite(1, [&](SearchThread& t) {
        const Position p = *t.pos;
        if (p.incheck) return;
        MoveList all, caps, checks;
        uint32_t n = 0;
        gen_captures(p, caps.moves, &caps.count, 0);
        gen_captures(p, all.moves, &all.count, 1);
        gen_quiets(p, all.moves + all.count, &n);
        all.count += n;
        gen_checks(p, checks.moves, &checks.count);
        expect_entry_bits(checks.moves, checks.count);
        const std::set<Move> got(checks.moves, checks.moves + checks.count);
        const std::set<Move> pseudo(all.moves, all.moves + all.count);
        for (Move m : got)
            ASSERT_TRUE(pseudo.count(m)) << fen_of(p) << " " << move_text(m);
        for (uint32_t i = 0; i < caps.count; ++i)
            ASSERT_TRUE(got.count(caps.moves[i])) << fen_of(p) << " " << move_text(caps.moves[i]);
        for (uint32_t i = caps.count; i < all.count; ++i) {
            const Move m = all.moves[i];
            if (move_promo(m) || p.board[move_to(m)] != EMPTY || !legal(p, m)) continue;
            const int from = move_from(m), to = move_to(m);
            if (piece_type(p.board[from]) == KING && (to - from == 2 || from - to == 2)) continue;
            make_move(t, m);
            const bool gives_check = attacked_by(*t.pos, king_of(*t.pos, t.pos->side), p.side);
            unmake_move(t);
            if (!gives_check) continue;
            ++checking_quiets;
            ASSERT_TRUE(got.count(m)) << fen_of(p) << " " << move_text(m);
        }
    });
    EXPECT_GT(checking_quiets, 500);
}

// The one-pass lists used by perft are exactly what gen_captures (all promotions) and gen_quiets give.
TEST(MoveGen, OnePassListsAreCapturesAndQuiets) {
    int positions = 0;
    walk_suite(2, [&](SearchThread& t) {
        const Position& p = *t.pos;
        MoveList caps, quiets, one_caps, one_quiets;
        gen_captures(p, caps.moves, &caps.count, 1);
        gen_quiets(p, quiets.moves, &quiets.count);
        gen_captures_quiets(p, one_caps.moves, &one_caps.count, one_quiets.moves, &one_quiets.count);
        ++positions;
        ASSERT_EQ(list_text(one_caps.moves, one_caps.count), list_text(caps.moves, caps.count)) << fen_of(p);
        ASSERT_EQ(list_text(one_quiets.moves, one_quiets.count), list_text(quiets.moves, quiets.count))
            << fen_of(p);
        ASSERT_TRUE(std::equal(caps.moves, caps.moves + caps.count, one_caps.moves)) << fen_of(p);
        ASSERT_TRUE(std::equal(quiets.moves, quiets.moves + quiets.count, one_quiets.moves)) << fen_of(p);
    });
    EXPECT_GT(positions, 40000);
}
