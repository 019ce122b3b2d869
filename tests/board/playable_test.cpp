// Positions typed in by hand: which ones the engine agrees to play, and the rights that set-up
// drops because the placement cannot back them.

#include "board/playable.h"

#include <gtest/gtest.h>

#include "board_helpers.h"

TEST(Playable, WhichPlacementsCanBePlayed) {
    struct Row {
        const char* name;
        const char* fen;
        bool playable;
    };
    const Row rows[] = {
        {"start position", START_FEN, true},
        {"bare kings", "4k3/8/8/8/8/8/8/4K3 w - -", true},
        {"side to move in check", "4k3/8/8/8/8/8/4r3/4K3 w - -", true},
        {"nine queens and no pawns", "QQQQQQQQ/8/8/8/8/8/6pp/Q3K2k w - -", true},
        {"five queens beside four pawns", "QQQQ2nk/8/8/8/8/8/PPPP4/Q3K3 w - -", true},
        {"empty board", "8/8/8/8/8/8/8/8 w - -", false},
        {"no black king", "8/8/8/8/8/8/8/4K3 w - -", false},
        {"two white kings", "4k3/8/8/8/8/8/8/3KK3 w - -", false},
        {"two black kings", "3kk3/8/8/8/8/8/8/4K3 b - -", false},
        {"white pawn on the last rank", "P3k3/8/8/8/8/8/8/4K3 w - -", false},
        {"black pawn on the last rank", "4k3/8/8/8/8/8/8/p3K3 b - -", false},
        {"white pawn on its first rank", "4k3/8/8/8/8/8/8/P3K3 w - -", false},
        {"side not to move in check", "4k3/4R3/8/8/8/8/8/4K3 w - -", false},
        {"kings side by side", "8/8/8/8/8/8/3kK3/8 w - -", false},
        {"king capturable by a pawn", "8/8/8/8/8/3k4/4P3/4K3 w - -", false},
        {"king capturable by a knight", "4k3/8/3N4/8/8/8/8/4K3 w - -", false},
        {"nine pawns", "4k3/8/8/8/8/P7/PPPPPPPP/4K3 w - -", false},
        {"ten queens", "QQQQQQQQ/QQ6/8/8/8/8/6pp/4K2k w - -", false},
        {"five queens beside five pawns", "QQQQ2nk/8/8/8/8/8/PPPPP3/Q3K3 w - -", false},
        {"seventeen white men", "RNBQKBNR/PPPPPPPP/N7/8/8/8/8/7k w - -", false},
        {"third black knight beside eight pawns", "rnbqkbnr/pppppppp/n7/8/8/8/8/4K3 b - -", false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(position_playable(*game->pos), r.playable);
    }
}

TEST(Playable, SetupDropsRightsThePlacementCannotBack) {
    struct Row {
        const char* name;
        const char* fen;
        const char* saved;
    };
    const Row rows[] = {
        {"all four rights backed", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -"},
        {"no rooks at all", "4k3/8/8/8/8/8/8/4K3 w KQkq -", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"king off its home square", "r2k3r/8/8/8/8/8/8/R2K3R w KQkq -", "r2k3r/8/8/8/8/8/8/R2K3R w - -"},
        {"one corner empty", "r3k3/8/8/8/8/8/8/4K2R w KQkq -", "r3k3/8/8/8/8/8/8/4K2R w Kq -"},
        {"enemy knights in the corners", "N3k2r/8/8/8/8/8/8/n3K2R w KQkq -",
         "N3k2r/8/8/8/8/8/8/n3K2R w Kk -"},
        {"real double push kept", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - f6",
         "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - f6"},
        {"en passant square of the side to move", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR b - f6",
         "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR b - -"},
        {"pawn's starting square occupied", "rnbqkb1r/ppp1pnpp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - f6",
         "rnbqkb1r/ppp1pnpp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - -"},
        {"no pawn past the square", "4k3/8/8/3Pn3/8/8/8/4K3 w - e6", "4k3/8/8/3Pn3/8/8/8/4K3 w - -"},
        {"square off the board", "4k3/8/8/8/8/8/8/4K3 w - z9", "4k3/8/8/8/8/8/8/4K3 w - -"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(fen_of(*game->pos), r.saved);
        EXPECT_TRUE(position_playable(*game->pos));
    }
}

// Every position legal moves lead to from a playable one is playable again, so a guard at the root
// covers a whole search.
TEST(Playable, LegalMovesKeepPositionsPlayable) {
    int visited = 0;
    walk_suite(2, [&](SearchThread& t) {
        ++visited;
        ASSERT_TRUE(position_playable(*t.pos)) << fen_of(*t.pos);
    });
    EXPECT_GT(visited, 1000);
}
