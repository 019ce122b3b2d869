// Properties over many positions from games: the score does not depend on which colour plays which
// side, and the incrementally kept material sums match a recount.

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "board/keys.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "eval/evaluate.h"
#include "eval_fixture.h"

static uint32_t legal_moves(const Position& p, Move* out) {
    MoveList list;
    uint32_t n = 0;
    if (p.incheck) {
        gen_evasions(p, list.moves, &n, 1);
    } else {
        uint32_t quiets = 0;
        gen_captures(p, list.moves, &n, 1);
        gen_quiets(p, list.moves + n, &quiets);
        n += quiets;
    }
    uint32_t k = 0;
    for (uint32_t i = 0; i < n; ++i)
        if (legal(p, list.moves[i])) out[k++] = list.moves[i];
    return k;
}

static std::vector<std::string> suite_fens() {
    std::ifstream in(MORVAINE_SOURCE_DIR "/tests/data/perft_suite.epd");
    std::vector<std::string> fens;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        fens.push_back(line.substr(0, line.find(';')));
    }
    return fens;
}

constexpr int PLAYOUTS_PER_START = 6;
constexpr int PLAYOUT_PLIES      = 300;

// What the incremental material sums carry that a recount does not: every castling adds 20 to mg for
// White (subtracts for Black) in place of its rook's square-value change.
struct CastlingDrift {
    int mg, eg, castlings;
};

static void add_castling(CastlingDrift& d, const Position& p, int from, int to) {
    const int corner = to < from ? (from & 56) : (from & 56) + 7;
    const int r      = (from + to) / 2;
    const int rook   = piece_code(p.side, ROOK);
    const int sign   = p.side == WHITE ? 1 : -1;
    d.mg += sign * (CASTLE_BONUS - (pst_mg[rook][r] - pst_mg[rook][corner]));
    d.eg -= sign * (pst_eg[rook][r] - pst_eg[rook][corner]);
    ++d.castlings;
}

// Plays pseudo-random legal games (fixed seed) from every start; calls visit(game record, drift)
// after each move.
template <class Visit> static void playouts(const std::vector<std::string>& starts, Visit visit) {
    std::mt19937 rng(20240611);
    Move moves[MAX_MOVES];
    for (const auto& fen : starts) {
        for (int g = 0; g < PLAYOUTS_PER_START; ++g) {
            auto game = record_from_fen(fen.c_str());
            CastlingDrift drift{0, 0, 0};
            for (int ply = 0; ply < PLAYOUT_PLIES; ++ply) {
                const Position& p = game->stack[0];
                const uint32_t n  = legal_moves(p, moves);
                if (n == 0 || p.rule50 >= 100) break;
                const Move m   = moves[rng() % n];
                const int from = move_from(m), to = move_to(m);
                if (piece_type(p.board[from]) == KING && (to - from == 2 || from - to == 2))
                    add_castling(drift, p, from, to);
                commit_move(*game, m);
                visit(*game, drift);
            }
        }
    }
}

// The board turned over: ranks reversed, colours, side to move and castling rights exchanged.
static Position flip_position(const Position& p) {
    Position q         = p;
    q.side             = static_cast<uint8_t>(p.side ^ 1);
    q.epsq             = p.epsq == NO_SQUARE ? p.epsq : static_cast<uint8_t>(p.epsq ^ 56);
    q.cflag            = static_cast<uint8_t>((p.cflag & 3) << 2 | (p.cflag >> 2));
    q.wking            = static_cast<uint8_t>(p.bking ^ 56);
    q.bking            = static_cast<uint8_t>(p.wking ^ 56);
    q.colour_bb[WHITE] = __builtin_bswap64(p.colour_bb[BLACK]);
    q.colour_bb[BLACK] = __builtin_bswap64(p.colour_bb[WHITE]);
    for (int t = PAWN; t <= QUEEN; ++t)
        q.type_bb[t] = __builtin_bswap64(p.type_bb[t]);
    for (int s = 0; s < 64; ++s)
        q.board[s ^ 56] = p.board[s] == EMPTY ? EMPTY : p.board[s] ^ 8;
    pawn_key(q);
    pst_init(q);
    set_pins(q);
    return q;
}

// The endgame scaling shifts the material sum right, rounding toward minus infinity from White's
// view; with a multiple of 8 both twins round alike, so only then can they be compared exactly.
static void expect_same_as_twin(Position a, const char* label) {
    Position b = flip_position(a);
    ASSERT_EQ(b.mg, -a.mg) << label;
    ASSERT_EQ(b.eg, -a.eg) << label;
    if (popcount(occupancy(a)) <= 5 && a.eg % 8 != 0) {
        a.eg = static_cast<int16_t>(a.eg & ~7);
        b.eg = static_cast<int16_t>(-a.eg);
    }
    EXPECT_EQ(evaluate(a), evaluate(b)) << label;
}

TEST(EvaluateProperties, FlippedBoardIsTheFlippedText) {
    for (const auto& fen : suite_fens()) {
        SCOPED_TRACE(fen);
        const Position turned = flip_position(record_from_fen(fen.c_str())->stack[0]);
        const auto twin       = record_from_fen(flip_fen(fen).c_str());
        const Position& t     = twin->stack[0];
        EXPECT_EQ(std::memcmp(turned.board, t.board, sizeof t.board), 0);
        EXPECT_EQ(turned.colour_bb[WHITE], t.colour_bb[WHITE]);
        EXPECT_EQ(turned.colour_bb[BLACK], t.colour_bb[BLACK]);
        EXPECT_EQ(turned.pawnkey, t.pawnkey);
        EXPECT_EQ(turned.cflag, t.cflag);
        EXPECT_EQ(turned.epsq, t.epsq);
        EXPECT_EQ(turned.side, t.side);
        EXPECT_EQ(turned.mg, t.mg);
        EXPECT_EQ(turned.eg, t.eg);
        EXPECT_EQ(turned.phase, t.phase);
    }
}

TEST(EvaluateProperties, ColourFlippedTwinScoresAlike) {
    const std::vector<std::string> suite = suite_fens();
    ASSERT_GE(suite.size(), 100u);
    for (const auto& fen : suite)
        expect_same_as_twin(record_from_fen(fen.c_str())->stack[0], fen.c_str());

    int positions = 0, endings = 0;
    char text[128];
    playouts(suite, [&](const SearchThread& game, const CastlingDrift&) {
        if (HasFailure()) return; // one broken position is enough to read
        Position p = game.stack[0];
        pst_init(p);
        ++positions;
        if (popcount(occupancy(p)) <= 5) ++endings;
        fen_text(p, text);
        expect_same_as_twin(p, text);
    });
    EXPECT_GE(positions, 50000);
    EXPECT_GE(endings, 100);
}

TEST(EvaluateProperties, IncrementalMaterialMatchesRecount) {
    int castled_positions = 0;
    playouts(suite_fens(), [&](const SearchThread& game, const CastlingDrift& drift) {
        if (HasFailure()) return;
        Position recount = game.stack[0];
        pst_init(recount);
        char text[128];
        fen_text(game.stack[0], text);
        EXPECT_EQ(game.stack[0].mg, static_cast<int16_t>(recount.mg + drift.mg)) << text;
        EXPECT_EQ(game.stack[0].eg, static_cast<int16_t>(recount.eg + drift.eg)) << text;
        if (drift.castlings > 0) ++castled_positions;
    });
    EXPECT_GT(castled_positions, 500);
}
