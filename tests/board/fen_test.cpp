#include "board/fen.h"

#include <cstring>
#include <gtest/gtest.h>

#include "board/makemove.h"
#include "board_helpers.h"
#include "search/tt.h"

namespace {

// The text in a heap block of exactly its own size, so that a sanitizer build catches any read
// beyond the terminating zero.
std::unique_ptr<SearchThread> game_from_exact(const std::string& fen) {
    init_board_tables();
    std::unique_ptr<char[]> text(new char[fen.size() + 1]);
    std::memcpy(text.get(), fen.c_str(), fen.size() + 1);
    auto game = std::make_unique<SearchThread>();
    setboard(*game, text.get());
    return game;
}

} // namespace

TEST(Fen, SavedTextOfWhatSetboardBuilt) {
    struct Row {
        const char* name;
        const char* fen;
        const char* saved;
    };
    const Row rows[] = {
        {"start", START_FEN, START_FEN},
        {"usable en passant kept", "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", "4k3/8/8/8/3pP3/8/8/4K3 b - e3"},
        {"unusable en passant dropped", "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - -"},
        {"en passant after a dash", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - f6",
         "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w - f6"},
        {"white pawn beside on the other side", "4k3/8/8/5Pp1/8/8/8/4K3 w - g6",
         "4k3/8/8/5Pp1/8/8/8/4K3 w - g6"},
        {"rank 6 target without a white pawn", "4k3/8/8/6p1/8/8/8/4K3 w - g6", "4k3/8/8/6p1/8/8/8/4K3 w - -"},
        {"castling letters in any order", "r3k2r/8/8/8/8/8/8/R3K2R w qkQK -",
         "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -"},
        {"some castling letters", "r3k2r/8/8/8/8/8/8/R3K2R b qK -", "r3k2r/8/8/8/8/8/8/R3K2R b Kq -"},
        {"other castling characters ignored", "r3k2r/8/8/8/8/8/8/R3K2R w KxQ -",
         "r3k2r/8/8/8/8/8/8/R3K2R w KQ -"},
        {"clock fields ignored", "4k3/8/8/8/8/8/8/4K3 w - - 37 80", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"side other than w is black", "4k3/8/8/8/8/8/8/4K3 x - -", "4k3/8/8/8/8/8/8/4K3 b - -"},
        {"placement only", "4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/4K3 b - -"},
        {"ends after a space", "4k3/8/8/8/8/8/8/4K3 ", "4k3/8/8/8/8/8/8/4K3 b - -"},
        {"ends after the side", "4k3/8/8/8/8/8/8/4K3 w", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"ends after the side and a space", "4k3/8/8/8/8/8/8/4K3 w ", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"ends after castling", "r3k2r/8/8/8/8/8/8/R3K2R w Qk", "r3k2r/8/8/8/8/8/8/R3K2R w Qk -"},
        {"ends after the castling dash", "4k3/8/8/8/8/8/8/4K3 w -", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"a dash ends the castling field", "4k3/8/8/8/3pP3/8/8/4K3 b -Ke3", "4k3/8/8/8/3pP3/8/8/4K3 b - e3"},
        {"ends after the castling field's space", "4k3/8/8/8/8/8/8/4K3 w - ", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"en passant cut to one character", "4k3/8/8/8/3pP3/8/8/4K3 b - e", "4k3/8/8/8/3pP3/8/8/4K3 b - -"},
        {"en passant letters out of range", "4k3/8/8/8/3pP3/8/8/4K3 b - z9", "4k3/8/8/8/3pP3/8/8/4K3 b - -"},
        {"nine empty squares", "k9K/8/8/8/8/8/8/8 w - -", "k7/2K5/8/8/8/8/8/8 w - -"},
        {"zero empty squares", "k0K6/8/8/8/8/8/8/8 w - -", "kK6/8/8/8/8/8/8/8 w - -"},
        {"unknown character takes a square", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBN? w - -",
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBN1 w - -"},
        {"nothing beyond the 64th square", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNRRRRR w - -",
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w - -"},
        {"slashes are not counted", "4k3//8/8/8/8/8/8/4K3 w - -", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"empty text", "", "8/8/8/8/8/8/8/8 b - -"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_exact(r.fen);
        EXPECT_EQ(fen_of(*game->pos), r.saved);
        EXPECT_EQ(game->pos->rule50, 0);
        // Nothing is written past the first slot.
        Position zero;
        std::memset(&zero, 0, sizeof zero);
        EXPECT_EQ(std::memcmp(&game->stack[1], &zero, sizeof zero), 0);
        // The saved text reads back as the same position.
        auto again = game_from(r.saved);
        EXPECT_EQ(fen_of(*again->pos), r.saved);
        EXPECT_EQ(again->key, game->key);
        EXPECT_EQ(again->pos->mg, game->pos->mg);
        EXPECT_EQ(again->pos->pinned, game->pos->pinned);
    }
}

TEST(Fen, SaveposPrintsTheLine) {
    auto game = game_from("r3k2r/8/8/8/3pP3/8/8/R3K2R b Qk e3 5 9");
    testing::internal::CaptureStdout();
    savepos(*game->pos);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "r3k2r/8/8/8/3pP3/8/8/R3K2R b Qk e3\n");
}

TEST(Fen, FieldsOfTheStartPosition) {
    auto game         = game_from(START_FEN);
    const Position& p = *game->pos;
    EXPECT_EQ(game->pos, &game->stack[0]);
    EXPECT_EQ(p.side, WHITE);
    EXPECT_EQ(p.epsq, NO_SQUARE);
    EXPECT_EQ(p.cflag, 15);
    EXPECT_EQ(p.incheck, 0);
    EXPECT_EQ(p.rule50, 0);
    EXPECT_EQ(p.phase, 0);
    EXPECT_EQ(p.wking, E1);
    EXPECT_EQ(p.bking, E8);
    EXPECT_EQ(p.lastmove, 0u);
    EXPECT_EQ(p.eval, 0);
    EXPECT_EQ(p.mg, 0);
    EXPECT_EQ(p.eg, 0);
    EXPECT_EQ(p.pinned, 0u);
    EXPECT_EQ(p.colour_bb[WHITE], 0x000000000000FFFFULL);
    EXPECT_EQ(p.colour_bb[BLACK], 0xFFFF000000000000ULL);
    EXPECT_EQ(p.type_bb[PAWN], 0x00FF00000000FF00ULL);
    EXPECT_EQ(p.type_bb[KNIGHT], bit(B1) | bit(G1) | bit(B8) | bit(G8));
    EXPECT_EQ(p.type_bb[QUEEN], bit(D1) | bit(D8));
    EXPECT_EQ(game->histidx, 0u);
    EXPECT_EQ(game->keyhist[0], game->key);
}

TEST(Fen, SetboardClearsTheWholeRecord) {
    auto game                = game_from(START_FEN);
    game->killers[1][7]      = 99;
    game->counter[3][12]     = 5;
    game->history[1][2][3]   = 400;
    game->cmhist[1][2][3][4] = -7;
    game->nodes              = 1234;
    game->keyhist[9]         = 77;
    game->stack[5].side      = 1;
    game->histidx            = 9;
    setboard(*game, "4k3/8/8/8/8/8/8/4K3 w - -");
    EXPECT_EQ(game->killers[1][7], 0u);
    EXPECT_EQ(game->counter[3][12], 0u);
    EXPECT_EQ(game->history[1][2][3], 0);
    EXPECT_EQ(game->cmhist[1][2][3][4], 0);
    EXPECT_EQ(game->nodes, 0u);
    EXPECT_EQ(game->keyhist[9], 0u);
    EXPECT_EQ(game->stack[5].side, 0);
    EXPECT_EQ(game->histidx, 0u);
}

TEST(Fen, KingSquaresAndChecks) {
    struct Row {
        const char* name;
        const char* fen;
        int wking, bking, incheck;
        uint64_t pinned;
    };
    const Row rows[] = {
        {"no kings", "8/8/8/8/8/8/8/8 w - -", 0, 0, 0, 0},
        {"white in check by a knight", "4k3/8/8/8/8/5n2/8/4K3 w - -", E1, E8, 1, 0},
        {"black in check by a pawn", "4k3/3P4/8/8/8/8/8/4K3 b - -", E1, E8, 1, 0},
        {"pinned rook and bishop", "4k3/4r3/8/b7/8/8/3BR3/4K3 w - -", E1, E8, 0,
         bit(sq("d2")) | bit(sq("e2"))},
        {"two pieces on the line pin nothing", "4k3/4r3/8/8/8/4N3/4R3/4K3 w - -", E1, E8, 0, 0},
        {"an enemy piece in front pins nothing", "4k3/4r3/8/8/8/4n3/4R3/4K3 w - -", E1, E8, 0, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(game->pos->wking, r.wking);
        EXPECT_EQ(game->pos->bking, r.bking);
        EXPECT_EQ(game->pos->incheck, r.incheck);
        EXPECT_EQ(game->pos->pinned, r.pinned);
    }
}

TEST(Fen, PhaseFromTheWeightsOnTheBoard) {
    struct Row {
        const char* name;
        const char* fen;
        int phase;
    };
    const Row rows[] = {
        {"all pieces", START_FEN, 0},
        {"kings and pawns", "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - -", 156},
        {"queens off", "rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR w KQkq -", 56},
        {"one rook and one knight", "4k3/8/8/8/8/8/8/RN2K3 w - -", 137},
        {"heavier than the start is limited at 0", "rnbqkbnr/pppppppp/8/8/8/QQ6/PPPPPPPP/RNBQKBNR w KQkq -",
         0},
        {"one knight too many", "rnbqkbnr/pppppppp/8/8/8/N7/PPPPPPPP/RNBQKBNR w KQkq -", 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(game->pos->phase, r.phase);
        EXPECT_EQ(compute_phase(*game->pos), r.phase);
    }
}

TEST(Fen, KeysOfKnownPositions) {
    struct Row {
        const char* name;
        const char* fen;
        uint64_t key;
    };
    // The published Polyglot key examples, each reached by the moves in its name.
    const Row rows[] = {
        {"start", START_FEN, 0x463B96181691FC9CULL},
        {"e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3", 0x823C9B50FD114196ULL},
        {"e2e4 d7d5", "rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6", 0x0756B94461C50FB0ULL},
        {"e2e4 d7d5 e4e5", "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR b KQkq -", 0x662FAFB965DB29D4ULL},
        {"e2e4 d7d5 e4e5 f7f5", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6",
         0x22A48B5A8E47FF78ULL},
        {"... e1e2", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR b kq -", 0x652A607CA3F242C1ULL},
        {"... e1e2 e8f7", "rnbq1bnr/ppp1pkpp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR w - -", 0x00FDD303C946BDD9ULL},
        {"a2a4 b7b5 h2h4 b5b4 c2c4", "rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3",
         0x3C8123EA7B067637ULL},
        {"... b4c3 a1a3", "rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq -", 0x5C3F9B829B279560ULL},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(game->key, r.key);
        EXPECT_EQ(game->keyhist[0], r.key);
    }
}

TEST(Fen, UnusableEnPassantSquareLeavesTheKeyAlone) {
    const char* pairs[][2] = {
        {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3",
         "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -"},
        {"4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - - 0 1"},
        {"4k3/8/8/8/8/8/8/4K3 w - a1", "4k3/8/8/8/8/8/8/4K3 w - -"},
        {"4k3/8/8/8/8/8/8/4K3 w - h9", "4k3/8/8/8/8/8/8/4K3 w - -"},
    };
    for (const auto& pair : pairs) {
        SCOPED_TRACE(pair[0]);
        auto with    = game_from(pair[0]);
        auto without = game_from(pair[1]);
        EXPECT_EQ(with->key, without->key);
        EXPECT_EQ(with->pos->epsq, NO_SQUARE);
    }
}

TEST(Fen, SquareSumsAndReportValues) {
    struct Row {
        const char* name;
        const char* fen;
        int mg, eg;
    };
    const Row rows[] = {
        {"start", START_FEN, 0, 0},
        {"white pawn on e4", "4k3/8/8/8/4P3/8/8/4K3 w - -", 90, 90},
        {"kings on e1 and g8", "6k1/8/8/8/8/8/8/4K3 w - -", -25, 5},
        {"black pawn on e5", "4k3/8/8/4p3/8/8/8/4K3 w - -", -90, -90},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(game->pos->mg, r.mg);
        EXPECT_EQ(game->pos->eg, r.eg);
    }

    // Each code shows the base values at the raw index of its highest square, for both colours:
    // white pawns h2 = 15, white king e1 = 4, black king e8 = 60, black rooks h8 = 63.
    auto game                                = game_from(START_FEN);
    pst_display_mg[piece_code(WHITE, QUEEN)] = 999; // stale values are cleared first
    game->pos->board[D1]                     = EMPTY;
    pst_init(*game->pos);
    EXPECT_EQ(pst_display_mg[piece_code(WHITE, QUEEN)], 0);
    EXPECT_EQ(pst_display_mg[piece_code(WHITE, PAWN)], pst_mg_base[PAWN][15]);
    EXPECT_EQ(pst_display_eg[piece_code(WHITE, PAWN)], 25);
    EXPECT_EQ(pst_display_mg[piece_code(WHITE, KING)], -20);
    EXPECT_EQ(pst_display_eg[piece_code(WHITE, KING)], 30);
    EXPECT_EQ(pst_display_mg[piece_code(BLACK, KING)], -5);
    EXPECT_EQ(pst_display_eg[piece_code(BLACK, KING)], -15);
    EXPECT_EQ(pst_display_mg[piece_code(BLACK, ROOK)], -10);
    EXPECT_EQ(pst_display_eg[piece_code(BLACK, ROOK)], -15);
    EXPECT_EQ(pst_display_mg[EMPTY], 0);
}

TEST(Fen, NewGameRestartsTheKeyHistory) {
    auto game = game_from(START_FEN);
    commit_move(*game, mv("e2e4"));
    commit_move(*game, mv("e7e5"));
    hash_age           = 17;
    const uint64_t key = new_game(*game);
    EXPECT_EQ(key, game->key);
    EXPECT_EQ(game->histidx, 0u);
    EXPECT_EQ(game->keyhist[0], key);
    EXPECT_EQ(hash_age, 0u);
    EXPECT_EQ(fen_of(*game->pos), "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -");
    auto fresh = game_from("rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -");
    EXPECT_EQ(key, fresh->key);
}
