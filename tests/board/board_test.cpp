// The board against independent truths: perft counts of the suite, the published book keys, and
// everything make-move keeps incrementally against a recomputation from the position's FEN.

#include <algorithm>
#include <cstring>

#include "board/castling.h"
#include "board/perft.h"
#include "support.h"

namespace {

// Each (position, depth) of the suite up to this many leaves: about 150 million in all.
constexpr uint64_t SUITE_LEAF_LIMIT = 5'000'000;

// The standard suite, and the Chess960 one (castling in Shredder-FEN and X-FEN, kings and rooks
// on every file, about 60 million leaves more).
TEST(Perft, Suite) {
    const struct {
        const char* file;
        size_t size;
    } suites[] = {{"perft_suite.epd", 120}, {CHESS960_SUITE, 125}};
    for (const auto& s : suites) {
        const auto suite = perft_suite(s.file);
        ASSERT_EQ(suite.size(), s.size) << s.file;
        for (const auto& e : suite) {
            auto game = game_from(e.fen, e.chess960);
            for (const auto& [depth, leaves] : e.counts) {
                if (leaves > SUITE_LEAF_LIMIT) continue;
                SCOPED_TRACE(e.fen + " depth " + std::to_string(depth));
                perft_totals = PerftTotals{};
                perft(*game, depth);
                EXPECT_EQ(static_cast<uint64_t>(perft_totals.moves), leaves);
            }
        }
    }
}

// The last ply is counted from attack sets, not from a move list, and below the first ply from
// sets carried over from the position above: wherever random games go (pins, checks, en passant,
// castling, promotions), the totals of depths 1 and 2 are those of the legal move lists.
std::vector<int64_t> list_totals(const Position& p) {
    Move moves[MAX_MOVES];
    const uint32_t n = legal_moves(p, moves);
    std::vector<int64_t> t{n, 0, 0, 0, 0, n == 0}; // moves, captures, en passant, castles, promotes, mates
    for (uint32_t i = 0; i < n; ++i) {
        const int from = move_from(moves[i]), to = move_to(moves[i]), type = piece_type(p.board[from]);
        const bool castles = type == KING && (to - from == 2 || from - to == 2 || is_castle960(p, moves[i]));
        t[1] += p.board[to] != EMPTY && !castles;
        t[2] += type == PAWN && to == p.epsq;
        t[3] += castles;
        t[4] += move_promo(moves[i]) != 0;
    }
    return t;
}

std::vector<int64_t> perft_totals_of(PositionStack& game, int depth) {
    perft_totals = PerftTotals{};
    perft(game, depth);
    const PerftTotals& t = perft_totals;
    return {t.moves, t.captures, t.en_passant, t.castles, t.promotes, t.checkmates};
}

TEST(Perft, LastPliesClassifyTheLegalMoves) {
    playouts(1, 200, [&](SearchThread& game, Move) {
        const Position& p = game.stack[0];
        ASSERT_EQ(perft_totals_of(game, 1), list_totals(p)) << fen_of(p);
        Move moves[MAX_MOVES];
        std::vector<int64_t> want(6, 0);
        for (uint32_t i = 0, n = legal_moves(p, moves); i < n; ++i) {
            make_move(game, moves[i]);
            const std::vector<int64_t> child = list_totals(*game.pos);
            unmake_move(game);
            for (size_t j = 0; j < want.size(); ++j)
                want[j] += child[j];
        }
        ASSERT_EQ(perft_totals_of(game, 2), want) << fen_of(p);
    });
}

// The key vectors of the book format: pieces, castling rights lost by king moves, en-passant
// squares that count only with a pawn beside the pushed one.
TEST(Keys, PublishedVectors) {
    const struct {
        const char* moves;
        uint64_t key;
    } rows[] = {
        {"", 0x463B96181691FC9CULL},
        {"e2e4", 0x823C9B50FD114196ULL},
        {"e2e4 d7d5", 0x0756B94461C50FB0ULL},
        {"e2e4 d7d5 e4e5", 0x662FAFB965DB29D4ULL},
        {"e2e4 d7d5 e4e5 f7f5", 0x22A48B5A8E47FF78ULL},
        {"e2e4 d7d5 e4e5 f7f5 e1e2", 0x652A607CA3F242C1ULL},
        {"e2e4 d7d5 e4e5 f7f5 e1e2 e8f7", 0x00FDD303C946BDD9ULL},
        {"a2a4 b7b5 h2h4 b5b4 c2c4", 0x3C8123EA7B067637ULL},
        {"a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3", 0x5C3F9B829B279560ULL},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.moves);
        auto game = game_from(START_FEN);
        std::istringstream words(r.moves);
        for (std::string w; words >> w;) {
            Move list[MAX_MOVES];
            const uint32_t n = legal_moves(game->stack[0], list);
            uint32_t i       = 0;
            while (i < n && move_text(list[i]) != w)
                ++i;
            ASSERT_LT(i, n) << w << " is not legal";
            commit_move(*game, list[i]);
        }
        EXPECT_EQ(game->key, r.key);
        EXPECT_EQ(game_from(fen_of(game->stack[0]))->key, r.key);
    }
}

// A hash of the 781 numbers in order, taken from the book format's published table.
TEST(Keys, TableHoldsThePublishedNumbers) {
    uint64_t h = 0;
    for (uint64_t v : Random64)
        h = (h * 0x100000001B3ULL) ^ v;
    EXPECT_EQ(h, 0xCEDA46E0371ABD1AULL);
}

// Through thousands of random games: a move made and taken back leaves the key as it was, and
// every position reached agrees with the same position set up from its FEN (keys,
// bitboards, kings, check, pins, and the material sums until a castling adds its bonus). The phase
// grows by the weight of each captured piece (up to 255) and, as the evaluation wants, not by
// promotions.
TEST(MakeMove, PlayoutsAgreeWithRecomputation) {
    bool castled  = false;
    int phase     = 0;
    int positions = 0;
    playouts(4, 200, [&](SearchThread& game, Move m) {
        const Position& p = game.stack[0];
        if (game.histidx == 0) {
            castled = false;
            phase   = p.phase;
        }
        const std::string where = fen_of(p);
        Position q              = position_of(where, p.chess960);
        ASSERT_EQ(game.key, full_key(q)) << where;
        ASSERT_EQ(game.keyhist[game.histidx], game.key) << where;
        ASSERT_EQ(p.pawnkey, q.pawnkey) << where;
        ASSERT_EQ(std::memcmp(p.board, q.board, sizeof p.board), 0) << where;
        ASSERT_EQ(p.colour_bb[WHITE], q.colour_bb[WHITE]) << where;
        ASSERT_EQ(p.colour_bb[BLACK], q.colour_bb[BLACK]) << where;
        ASSERT_EQ(std::memcmp(p.type_bb, q.type_bb, sizeof p.type_bb), 0) << where;
        ASSERT_EQ(p.wking, q.wking) << where;
        ASSERT_EQ(p.bking, q.bking) << where;
        ASSERT_EQ(p.incheck, q.incheck) << where;
        ASSERT_EQ(p.pinned, q.pinned) << where;
        ASSERT_EQ(p.phase, std::min(phase, 255)) << where;
        if (!castled) {
            ASSERT_EQ(p.mg, q.mg) << where;
            ASSERT_EQ(p.eg, q.eg) << where;
        }
        const uint64_t key = game.key;
        make_move(game, m);
        unmake_move(game);
        ASSERT_EQ(game.key, key) << where << " " << move_text(m);
        const int from = move_from(m), to = move_to(m);
        castled |=
            piece_type(p.board[from]) == KING && (to - from == 2 || from - to == 2 || is_castle960(p, m));
        if (p.board[to] != EMPTY && !is_castle960(p, m)) phase += phase_weight[piece_type(p.board[to])];
        ++positions;
    });
    EXPECT_GT(positions, 50000);
}

// Each capture adds its weight to the phase until it saturates: twenty-four queens less ten taken
// still read as an ending, where a wrapping byte would have read as the opening again.
TEST(MakeMove, PhaseSaturates) {
    auto game = game_from("qqqqqqqq/QQQQQQQQ/8/8/8/8/PP4pp/K6k w - -");
    ASSERT_EQ(game->pos->phase, 0);
    for (const char* text :
         {"a7a8", "b8b7", "c7c8", "d8d7", "e7e8", "f8f7", "g7g8", "h8h7", "c8b7", "d7e8"}) {
        Move list[256];
        const uint32_t n = legal_moves(*game->pos, list);
        const Move* m =
            std::find_if(list, list + n, [&](Move x) { return !std::strcmp(move_text(x), text); });
        ASSERT_NE(m, list + n) << text;
        make_move(*game, *m);
    }
    EXPECT_EQ(game->pos->phase, 255);
}

} // namespace
