#include "board/keys.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// A board built straight from the first four FEN fields, without the engine's FEN reader, so the
// key functions are tested on their own.
Position board_from(const char* placement, char side, const char* castling, const char* ep) {
    Position p{};
    std::memset(p.board, EMPTY, sizeof p.board);
    const char* letters = "PNBRQK  pnbrqk";
    int rank = 7, file = 0;
    for (const char* c = placement; *c; ++c) {
        if (*c == '/') {
            --rank;
            file = 0;
        } else if (*c >= '1' && *c <= '8') {
            file += *c - '0';
        } else {
            p.board[file + 8 * rank] = static_cast<uint8_t>(std::strchr(letters, *c) - letters);
            ++file;
        }
    }
    p.side = side == 'w' ? WHITE : BLACK;
    for (const char* c = castling; *c; ++c)
        p.cflag |= *c == 'Q' ? 1 : *c == 'K' ? 2 : *c == 'q' ? 4 : *c == 'k' ? 8 : 0;
    p.epsq = ep[0] == '-' ? NO_SQUARE : static_cast<uint8_t>((ep[0] - 'a') + 8 * (ep[1] - '1'));
    return p;
}

class Keys : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { keys_init(); }
};

constexpr const char* START = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR";

} // namespace

TEST_F(Keys, EmbeddedNumbersMatchTheDataFile) {
    const std::string path = std::string(MORVAINE_SOURCE_DIR) + "/tests/data/polyglot_random64.txt";
    FILE* f                = std::fopen(path.c_str(), "r");
    ASSERT_NE(f, nullptr) << path;
    std::vector<uint64_t> numbers;
    char line[256];
    while (std::fgets(line, sizeof line, f))
        if (line[0] == '0') numbers.push_back(std::strtoull(line, nullptr, 16));
    std::fclose(f);
    ASSERT_EQ(numbers.size(), 781u);
    for (size_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(Random64[i], numbers[i]) << "entry " << i;
}

TEST_F(Keys, CastleAndTurnKeys) {
    struct Row {
        const char* name;
        uint64_t got, want;
    };
    const Row rows[] = {
        {"none", castle_keys[0], 0},
        {"white queen side", castle_keys[1], 0xF165B587DF898190ULL},
        {"white king side", castle_keys[2], 0x31D71DCE64B2C310ULL},
        {"black queen side", castle_keys[4], Random64[771]},
        {"black king side", castle_keys[8], Random64[770]},
        {"all four", castle_keys[15], 0x7B3A2DABD781AFE9ULL},
        {"white both", castle_keys[3], 0xF165B587DF898190ULL ^ 0x31D71DCE64B2C310ULL},
        {"Q and k", castle_keys[9], castle_keys[1] ^ castle_keys[8]},
        {"turn", turn_key, 0xF8D626AAAF278509ULL},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.got, r.want);
    }
}

TEST_F(Keys, PieceKeysFollowTheBookKinds) {
    struct Row {
        const char* name;
        int code, sq, index;
    };
    const Row rows[] = {
        {"black pawn a1", piece_code(BLACK, PAWN), A1, 0},
        {"white pawn e2", piece_code(WHITE, PAWN), 12, 64 + 12},
        {"black knight g8", piece_code(BLACK, KNIGHT), G8, 128 + G8},
        {"white knight b1", piece_code(WHITE, KNIGHT), B1, 192 + B1},
        {"black bishop c8", piece_code(BLACK, BISHOP), C8, 256 + C8},
        {"white bishop f1", piece_code(WHITE, BISHOP), F1, 320 + F1},
        {"black rook h8", piece_code(BLACK, ROOK), H8, 384 + H8},
        {"white rook a1", piece_code(WHITE, ROOK), A1, 448},
        {"black queen d8", piece_code(BLACK, QUEEN), D8, 512 + D8},
        {"white queen d1", piece_code(WHITE, QUEEN), D1, 576 + D1},
        {"black king e8", piece_code(BLACK, KING), E8, 640 + E8},
        {"white king h8", piece_code(WHITE, KING), H8, 767},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(piece_key(r.code, r.sq), Random64[r.index]);
    }
    EXPECT_EQ(ep_key(20), Random64[772 + 4]);
}

// The published book keys of the start position and the first moves of one game.
TEST_F(Keys, FullKeysOfKnownPositions) {
    struct Row {
        const char* name;
        const char* placement;
        char side;
        const char* castling;
        const char* ep;
        uint64_t key;
        int epsq_after;
    };
    const Row rows[] = {
        {"start", START, 'w', "KQkq", "-", 0x463B96181691FC9CULL, NO_SQUARE},
        {"e2e4 (e3 unusable)", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR", 'b', "KQkq", "e3",
         0x823C9B50FD114196ULL, NO_SQUARE},
        {"e2e4 d7d5", "rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR", 'w', "KQkq", "d6",
         0x0756B94461C50FB0ULL, NO_SQUARE},
        {"e2e4 d7d5 e4e5", "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR", 'b', "KQkq", "-",
         0x662FAFB965DB29D4ULL, NO_SQUARE},
        {"e2e4 d7d5 e4e5 f7f5", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR", 'w', "KQkq", "f6",
         0x22A48B5A8E47FF78ULL, 45},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        Position p = board_from(r.placement, r.side, r.castling, r.ep);
        EXPECT_EQ(full_key(p), r.key);
        EXPECT_EQ(p.epsq, r.epsq_after);
    }
}

TEST_F(Keys, UnusableEnPassantSquareKeysLikeNone) {
    struct Row {
        const char* name;
        const char* placement;
        char side;
        const char* ep;
        bool kept;
    };
    const Row rows[] = {
        {"black takes on c3 from b4", "4k3/8/8/8/1pP5/8/8/4K3", 'b', "c3", true},
        {"black takes on c3 from d4", "4k3/8/8/8/2Pp4/8/8/4K3", 'b', "c3", true},
        {"white takes on f6 from e5", "4k3/8/8/4Pp2/8/8/8/4K3", 'w', "f6", true},
        {"white takes on f6 from g5", "4k3/8/8/5pP1/8/8/8/4K3", 'w', "f6", true},
        {"a3 with a black pawn on b4", "4k3/8/8/8/Pp6/8/8/4K3", 'b', "a3", true},
        {"h6 with a white pawn on g5", "4k3/8/8/6Pp/8/8/8/4K3", 'w', "h6", true},
        {"no neighbour", "4k3/8/8/8/2P5/8/8/4K3", 'b', "c3", false},
        {"neighbour of the wrong colour", "4k3/8/8/8/1PP5/8/8/4K3", 'b', "c3", false},
        {"knight beside the pawn", "4k3/8/8/8/1nP5/8/8/4K3", 'b', "c3", false},
        {"h3 does not wrap to a5", "4k3/8/8/p7/7P/8/8/4K3", 'b', "h3", false},
        {"a6 does not wrap to h4", "4k3/8/8/p7/7P/8/8/4K3", 'w', "a6", false},
        {"h6 does not wrap to a6", "4k3/8/P7/7p/8/8/8/4K3", 'w', "h6", false},
        {"a3 does not wrap to h3", "4k3/8/8/8/P7/7p/8/4K3", 'b', "a3", false},
        {"square off ranks 3 and 6", "4k3/8/8/8/2Pp4/8/8/4K3", 'b', "c4", false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        Position with         = board_from(r.placement, r.side, "", r.ep);
        Position none         = board_from(r.placement, r.side, "", "-");
        const uint64_t k_with = full_key(with), k_none = full_key(none);
        if (r.kept) {
            EXPECT_EQ(k_with, k_none ^ ep_key(with.epsq));
            EXPECT_NE(with.epsq, NO_SQUARE);
        } else {
            EXPECT_EQ(k_with, k_none);
            EXPECT_EQ(with.epsq, NO_SQUARE);
        }
    }
}

TEST_F(Keys, PawnKeyHoldsPawnsAndKingsOnly) {
    struct Row {
        const char* name;
        const char* a;
        const char* b;
        bool same;
    };
    const Row rows[] = {
        {"pieces other than pawns and kings do not count", START, "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3", true},
        {"side and castling do not count", "4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/4K3", true},
        {"a pawn moved", START, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR", false},
        {"a king moved", "4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/3K4", false},
        {"pawn colour matters", "4k3/8/8/8/4P3/8/8/4K3", "4k3/8/8/8/4p3/8/8/4K3", false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        Position a = board_from(r.a, 'w', "KQkq", "-");
        Position b = board_from(r.b, 'b', "", "-");
        pawn_key(a);
        pawn_key(b);
        EXPECT_EQ(a.pawnkey == b.pawnkey, r.same);
    }
    Position lone = board_from("4k3/8/8/8/4P3/8/8/4K3", 'w', "", "-");
    pawn_key(lone);
    EXPECT_EQ(lone.pawnkey, piece_key(piece_code(BLACK, KING), E8) ^ piece_key(piece_code(WHITE, PAWN), 28) ^
                                piece_key(piece_code(WHITE, KING), E1));
}
