#include "board/makemove.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include "board_helpers.h"

namespace {

// The generated entry for a move text (so promotions and sort keys are as the generators give them).
Move find_move(const Position& p, const char* text) {
    MoveList list;
    uint32_t n = 0;
    gen_captures(p, list.moves, &list.count, 1);
    gen_quiets(p, list.moves + list.count, &n);
    list.count += n;
    for (uint32_t i = 0; i < list.count; ++i)
        if (std::string(move_text(list.moves[i])) == text) return list.moves[i];
    ADD_FAILURE() << text << " is not generated in " << fen_of(p);
    return 0;
}

std::vector<Move> pseudo_moves(const Position& p) {
    MoveList list;
    uint32_t n = 0;
    gen_captures(p, list.moves, &list.count, 1);
    gen_quiets(p, list.moves + list.count, &n);
    list.count += n;
    return {list.moves, list.moves + list.count};
}

// The castling term that make-move keeps in place of the rook's own square values.
struct CastleDrift {
    int mg = 0, eg = 0;
};

CastleDrift castle_drift(const Position& before, Move m) {
    const int from = move_from(m), to = move_to(m);
    if (piece_type(before.board[from]) != KING || (to - from != 2 && from - to != 2)) return {};
    const int side   = before.side;
    const int corner = side == WHITE ? (to < from ? A1 : H1) : (to < from ? A8 : H8);
    const int r      = (from + to) / 2;
    const int rook   = piece_code(side, ROOK);
    const int sign   = side == WHITE ? 1 : -1;
    return {sign * (CASTLE_BONUS - (pst_mg[rook][r] - pst_mg[rook][corner])),
            sign * -(pst_eg[rook][r] - pst_eg[rook][corner])};
}

// Everything make-move keeps incrementally, against values computed from scratch.
void expect_consistent(const SearchThread& t, CastleDrift drift, int phase) {
    Position scratch  = *t.pos;
    const Position& p = *t.pos;
    ASSERT_EQ(t.keyhist[t.histidx], t.key);
    ASSERT_EQ(full_key(scratch), t.key) << fen_of(p);
    ASSERT_EQ(scratch.epsq, p.epsq) << fen_of(p);
    pawn_key(scratch);
    ASSERT_EQ(scratch.pawnkey, p.pawnkey) << fen_of(p);
    pst_init(scratch);
    ASSERT_EQ(static_cast<int16_t>(scratch.mg + drift.mg), p.mg) << fen_of(p);
    ASSERT_EQ(static_cast<int16_t>(scratch.eg + drift.eg), p.eg) << fen_of(p);
    ASSERT_EQ(p.phase, phase) << fen_of(p);

    uint64_t colour[2] = {0, 0}, type[6] = {0, 0, 0, 0, 0, 0};
    for (int s = 0; s < 64; ++s) {
        const int code = p.board[s];
        if (code == EMPTY) continue;
        colour[piece_colour(code)] |= bit(s);
        type[piece_type(code)] |= bit(s);
    }
    ASSERT_EQ(p.colour_bb[WHITE], colour[WHITE]) << fen_of(p);
    ASSERT_EQ(p.colour_bb[BLACK], colour[BLACK]) << fen_of(p);
    for (int ty = PAWN; ty <= QUEEN; ++ty)
        ASSERT_EQ(p.type_bb[ty], type[ty]) << fen_of(p) << " type " << ty;
    ASSERT_EQ(type[KING], bit(p.wking) | bit(p.bking)) << fen_of(p);
    ASSERT_EQ(king_of(p, WHITE), p.wking);
    ASSERT_EQ(king_of(p, BLACK), p.bking);

    // Check and pins, found square by square: a piece is pinned when lifting it uncovers an attack
    // on its king that was not there.
    const int k = king_square(p, p.side);
    ASSERT_EQ(p.incheck, attacked_by(p, k, p.side ^ 1) ? 1 : 0) << fen_of(p);
    uint64_t pinned = 0;
    if (!p.incheck) {
        for (int s = 0; s < 64; ++s) {
            if (s == k || p.board[s] == EMPTY || piece_colour(p.board[s]) != p.side) continue;
            Position lifted = p;
            lifted.board[s] = EMPTY;
            if (attacked_by(lifted, k, p.side ^ 1)) pinned |= bit(s);
        }
        ASSERT_EQ(p.pinned, pinned) << fen_of(p);
    }
}

void walk_consistent(SearchThread& t, int depth, CastleDrift drift, int phase) {
    expect_consistent(t, drift, phase);
    if (testing::Test::HasFatalFailure() || depth == 0) return;
    for (Move m : pseudo_moves(*t.pos)) {
        if (!legal(*t.pos, m)) continue;
        Position before;
        std::memcpy(&before, t.pos, sizeof before); // bytes, padding included, for the comparison
        const uint64_t key     = t.key;
        const uint32_t idx     = t.histidx;
        const CastleDrift step = castle_drift(before, m);
        int captured_weight    = 0;
        if (before.board[move_to(m)] != EMPTY)
            captured_weight = phase_weight[piece_type(before.board[move_to(m)])];
        Position* const prev = t.pos;
        Position* next       = make_move(t, m);
        EXPECT_EQ(next, prev + 1);
        EXPECT_EQ(next, t.pos);
        EXPECT_EQ(next->lastmove, m);
        walk_consistent(t, depth - 1, {drift.mg + step.mg, drift.eg + step.eg}, phase + captured_weight);
        unmake_move(t);
        ASSERT_EQ(t.key, key);
        ASSERT_EQ(t.histidx, idx);
        ASSERT_EQ(std::memcmp(t.pos, &before, sizeof before), 0);
        if (testing::Test::HasFatalFailure()) return;
    }
}

// legal() against the plain rule: the mover's king is not attacked once the move is made (and
// castling neither starts in check nor passes an attacked square).
void walk_legality(SearchThread& t, int depth, int& tested) {
    const Position p = *t.pos;
    for (Move m : pseudo_moves(p)) {
        const int from = move_from(m), to = move_to(m);
        bool want = true;
        if (piece_type(p.board[from]) == KING && (to - from == 2 || from - to == 2))
            want = !p.incheck && !attacked_by(p, (from + to) / 2, p.side ^ 1);
        make_move(t, m);
        want = want && !attacked_by(*t.pos, king_of(*t.pos, p.side), p.side ^ 1);
        if (want && depth > 0) walk_legality(t, depth - 1, tested);
        unmake_move(t);
        ++tested;
        ASSERT_EQ(legal(p, m), want) << fen_of(p) << " " << move_text(m);
    }
}

} // namespace

TEST(MakeMove, KeysOfKnownLines) {
    struct Row {
        const char* name;
        std::vector<const char*> moves;
        uint64_t key;
    };
    const Row rows[] = {
        {"e2e4", {"e2e4"}, 0x823C9B50FD114196ULL},
        {"e2e4 d7d5", {"e2e4", "d7d5"}, 0x0756B94461C50FB0ULL},
        {"e2e4 d7d5 e4e5", {"e2e4", "d7d5", "e4e5"}, 0x662FAFB965DB29D4ULL},
        {"e2e4 d7d5 e4e5 f7f5", {"e2e4", "d7d5", "e4e5", "f7f5"}, 0x22A48B5A8E47FF78ULL},
        {"... e1e2", {"e2e4", "d7d5", "e4e5", "f7f5", "e1e2"}, 0x652A607CA3F242C1ULL},
        {"... e1e2 e8f7", {"e2e4", "d7d5", "e4e5", "f7f5", "e1e2", "e8f7"}, 0x00FDD303C946BDD9ULL},
        {"a2a4 b7b5 h2h4 b5b4 c2c4", {"a2a4", "b7b5", "h2h4", "b5b4", "c2c4"}, 0x3C8123EA7B067637ULL},
        {"... b4c3 a1a3", {"a2a4", "b7b5", "h2h4", "b5b4", "c2c4", "b4c3", "a1a3"}, 0x5C3F9B829B279560ULL},
        {"knight out and back", {"g1f3", "g8f6", "f3g1", "f6g8"}, 0x463B96181691FC9CULL},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(START_FEN);
        for (const char* text : r.moves)
            make_move(*game, find_move(*game->pos, text));
        EXPECT_EQ(game->key, r.key);
        EXPECT_EQ(game->keyhist[game->histidx], r.key);
        EXPECT_EQ(game->histidx, r.moves.size());
        Position scratch = *game->pos;
        EXPECT_EQ(full_key(scratch), r.key);
    }
}

TEST(MakeMove, FieldsAfterOneMove) {
    struct Row {
        const char* name;
        const char* fen;
        const char* move;
        const char* after; // savepos text
        int rule50, phase_change, mg_change;
    };
    init_board_tables(); // the rows read the square tables
    const int wk     = piece_code(WHITE, KING);
    const Row rows[] = {
        {"double push without a taker", START_FEN, "e2e4",
         "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -", 0, 0,
         pst_mg[0][sq("e4")] - pst_mg[0][sq("e2")]},
        {"double push beside a pawn", "4k3/8/8/8/3p4/8/4P3/4K3 w - -", "e2e4",
         "4k3/8/8/8/3pP3/8/8/4K3 b - e3", 0, 0, pst_mg[0][sq("e4")] - pst_mg[0][sq("e2")]},
        {"white castles king side", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1g1",
         "r3k2r/8/8/8/8/8/8/R4RK1 b kq -", 1, 0, 20 + pst_mg[wk][G1] - pst_mg[wk][E1]},
        {"white castles queen side", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1c1",
         "r3k2r/8/8/8/8/8/8/2KR3R b kq -", 1, 0, 20 + pst_mg[wk][C1] - pst_mg[wk][E1]},
        {"black castles queen side", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "e8c8",
         "2kr3r/8/8/8/8/8/8/R3K2R w KQ -", 1, 0,
         -(20 + pst_mg[piece_code(BLACK, KING)][C8] - pst_mg[piece_code(BLACK, KING)][E8])},
        {"rook leaves h1", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "h1h2", "r3k2r/8/8/8/8/8/7R/R3K3 b Qkq -", 1,
         0, pst_mg[3][sq("h2")] - pst_mg[3][H1]},
        {"capture on h1", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "h8h1", "r3k3/8/8/8/8/8/8/R3K2r w Qq -", 0, 13,
         -(pst_mg[11][H1] - pst_mg[11][H8] + pst_mg[3][H1])},
        {"capture on a8", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "a1a8", "R3k2r/8/8/8/8/8/8/4K2R b Kk -", 0, 13,
         pst_mg[3][A8] - pst_mg[3][A1] + pst_mg[11][A8]},
        {"king move drops both rights", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "e8d8",
         "r2k3r/8/8/8/8/8/8/R3K2R w KQ -", 1, 0, -(pst_mg[13][D8] - pst_mg[13][E8])},
        {"promotion keeps the phase", "k7/4P3/8/8/8/8/8/K7 w - -", "e7e8q", "k3Q3/8/8/8/8/8/8/K7 b - -", 0, 0,
         pst_mg[4][E8] - pst_mg[0][sq("e7")]},
        {"under-promotion with capture", "k4r2/4P3/8/8/8/8/8/K7 w - -", "e7f8n", "k4N2/8/8/8/8/8/8/K7 b - -",
         0, 13, pst_mg[1][F8] - pst_mg[0][sq("e7")] + pst_mg[11][F8]},
        {"queen captured", "k7/8/8/3q4/4P3/8/8/K7 w - -", "e4d5", "k7/8/8/3P4/8/8/8/K7 b - -", 0, 28,
         pst_mg[0][sq("d5")] - pst_mg[0][sq("e4")] + pst_mg[12][sq("d5")]},
        {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", "e5d6", "4k3/8/3P4/8/8/8/8/4K3 b - -", 0, 0,
         pst_mg[0][sq("d6")] - pst_mg[0][sq("e5")] + pst_mg[8][sq("d5")]},
        {"black en passant", "4k3/8/8/8/3pP3/8/8/4K3 b - e3", "d4e3", "4k3/8/8/8/8/4p3/8/4K3 w - -", 0, 0,
         -(pst_mg[8][sq("e3")] - pst_mg[8][sq("d4")] + pst_mg[0][sq("e4")])},
        {"quiet knight move", START_FEN, "g1f3", "rnbqkbnr/pppppppp/8/8/8/5N2/PPPPPPPP/RNBQKB1R b KQkq -", 1,
         0, pst_mg[1][sq("f3")] - pst_mg[1][G1]},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game             = game_from(r.fen);
        const Position before = *game->pos;
        const Move m          = find_move(before, r.move) | 0xABCD0000u;
        const Position* p     = make_move(*game, m);
        EXPECT_EQ(fen_of(*p), r.after);
        EXPECT_EQ(p->rule50, r.rule50);
        EXPECT_EQ(p->phase, before.phase + r.phase_change);
        EXPECT_EQ(p->mg, before.mg + r.mg_change);
        EXPECT_EQ(p->lastmove, m);
        EXPECT_EQ(p, &game->stack[1]);
        EXPECT_EQ(game->histidx, 1u);
        auto fresh = game_from(r.after);
        EXPECT_EQ(game->key, fresh->key);
        EXPECT_EQ(p->pawnkey, fresh->pos->pawnkey);
        const CastleDrift drift = castle_drift(before, m);
        EXPECT_EQ(p->mg, fresh->pos->mg + drift.mg);
        EXPECT_EQ(p->eg, fresh->pos->eg + drift.eg);
    }
}

TEST(MakeMove, CountsNodesAndCommits) {
    auto game      = game_from(START_FEN);
    nodes_searched = 0;
    make_move(*game, mv("e2e4"));
    make_move(*game, mv("e7e5"));
    EXPECT_EQ(game->nodes, 2u);
    EXPECT_EQ(nodes_searched.load(), 2u);
    unmake_move(*game);
    unmake_move(*game);

    commit_move(*game, mv("d2d4"));
    commit_move(*game, mv("g8f6"));
    EXPECT_EQ(game->pos, &game->stack[0]);
    EXPECT_EQ(game->histidx, 2u);
    EXPECT_EQ(fen_of(*game->pos), "rnbqkb1r/pppppppp/5n2/8/3P4/8/PPP1PPPP/RNBQKBNR w KQkq -");
    auto fresh = game_from("rnbqkb1r/pppppppp/5n2/8/3P4/8/PPP1PPPP/RNBQKBNR w KQkq -");
    EXPECT_EQ(game->key, fresh->key);
    EXPECT_EQ(game->keyhist[2], game->key);
    EXPECT_NE(game->keyhist[1], game->keyhist[0]);
    EXPECT_EQ(game->keyhist[0], 0x463B96181691FC9CULL);
}

// Every position up to two plies from the suite: keys, bitboards, sums, phase, check and pins agree with
// their from-scratch values, and each unmake restores the record exactly.
TEST(MakeMove, IncrementalStateMatchesScratch) {
    for (const auto& e : read_perft_suite()) {
        SCOPED_TRACE(e.fen);
        auto game = game_from(e.fen.c_str());
        walk_consistent(*game, 2, {}, game->pos->phase);
        if (HasFatalFailure()) return;
    }
}

TEST(Legal, AgreesWithTheKingBeingAttackedAfterTheMove) {
    int tested = 0;
    for (const auto& e : read_perft_suite()) {
        auto game = game_from(e.fen.c_str());
        walk_legality(*game, 1, tested);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(tested, 40000);
}

// Every king step, captures included, is legal exactly when the danger map leaves its square free.
TEST(Legal, KingStepsAgreeWithTheDangerMap) {
    int steps = 0;
    walk_suite(2, [&](SearchThread& t) {
        const Position& p  = *t.pos;
        const int k        = king_square(p, p.side);
        const uint64_t map = king_danger(p);
        uint64_t targets   = king_attacks[k] & ~p.colour_bb[p.side];
        while (targets) {
            const int to = pop_lsb(targets);
            ++steps;
            ASSERT_EQ(legal(p, make_move_word(k, to)), !(map & bit(to))) << fen_of(p) << " to " << to;
        }
    });
    EXPECT_GT(steps, 100000);
}

TEST(Legal, KnownCases) {
    struct Row {
        const char* name;
        const char* fen;
        const char* move;
        bool legal;
    };
    const Row rows[] = {
        {"en passant exposing the king along the rank", "8/8/8/K2pP2r/8/8/8/7k w - d6", "e5d6", false},
        {"push beside it is fine", "8/8/8/K2pP2r/8/8/8/7k w - d6", "e5e6", true},
        {"black en passant exposing the king", "8/8/8/8/k2Pp2Q/8/8/4K3 b - d3", "e4d3", false},
        {"en passant taking the checker", "8/8/8/2k5/3Pp3/8/8/4K3 b - d3", "e4d3", true},
        {"en passant along a pin diagonal", "1b5k/8/8/3pP3/8/8/7K/8 w - d6", "e5d6", true},
        {"en passant off a pin diagonal", "k6b/8/8/3pP3/8/8/8/K7 w - d6", "e5d6", false},
        {"castling out of check", "4k3/8/8/8/8/8/4r3/R3K2R w KQ -", "e1g1", false},
        {"castling queen side out of check", "4k3/8/8/8/8/8/4r3/R3K2R w KQ -", "e1c1", false},
        {"castling through attacked f1", "4kr2/8/8/8/8/8/8/R3K2R w KQ -", "e1g1", false},
        {"other side still possible", "4kr2/8/8/8/8/8/8/R3K2R w KQ -", "e1c1", true},
        {"castling through attacked d1", "3rk3/8/8/8/8/8/8/R3K2R w KQ -", "e1c1", false},
        {"castling into attacked g1", "4k1r1/8/8/8/8/8/8/R3K2R w KQ -", "e1g1", false},
        {"castling into attacked c1", "2r1k3/8/8/8/8/8/8/R3K2R w KQ -", "e1c1", false},
        {"attacked b1 does not stop queen side", "1r2k3/8/8/8/8/8/8/R3K2R w KQ -", "e1c1", true},
        {"f1 attacked by a pawn", "4k3/8/8/8/8/8/4p3/R3K2R w KQ -", "e1g1", false},
        {"g1 next to the other king", "8/8/8/8/8/8/7k/R3K2R w KQ -", "e1g1", false},
        {"black castling through attacked f8", "r3k2r/8/8/8/8/8/8/4KR2 b kq -", "e8g8", false},
        {"black castling fine", "r3k2r/8/8/8/8/8/8/4K3 b kq -", "e8c8", true},
        {"pinned rook along the line", "4k3/4r3/8/8/8/8/4R3/4K3 w - -", "e2e5", true},
        {"pinned rook takes the pinner", "4k3/4r3/8/8/8/8/4R3/4K3 w - -", "e2e7", true},
        {"pinned rook off the line", "4k3/4r3/8/8/8/8/4R3/4K3 w - -", "e2d2", false},
        {"pinned knight", "4k3/4r3/8/8/8/8/4N3/4K3 w - -", "e2c3", false},
        {"pinned bishop takes the pinner", "7k/8/8/8/8/2b5/3B4/4K3 w - -", "d2c3", true},
        {"pinned bishop leaves the diagonal", "7k/8/8/8/8/2b5/3B4/4K3 w - -", "d2e3", false},
        {"king away along the checking rank", "4k3/8/8/8/8/8/8/r3K3 w - -", "e1f1", false},
        {"king off the checking rank", "4k3/8/8/8/8/8/8/r3K3 w - -", "e1e2", true},
        {"king takes a defended checker", "4k3/8/8/8/8/5n2/3q4/4K3 w - -", "e1d2", false},
        {"king steps aside", "4k3/8/8/8/8/5n2/3q4/4K3 w - -", "e1f1", true},
        {"king into the queen's rank", "4k3/8/8/8/8/5n2/3q4/4K3 w - -", "e1f2", false},
        {"knight move that does not block", "4k3/8/8/8/8/8/8/r3K1N1 w - -", "g1e2", false},
        {"block a check", "4k3/8/8/8/8/8/3N4/r3K3 w - -", "d2b1", true},
        {"capture the checker", "4k3/8/8/8/8/1N6/8/r3K3 w - -", "b3a1", true},
        {"double check: no block", "4k3/8/8/8/8/3n4/8/r3K1B1 w - -", "g1c5", false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(legal(*game->pos, find_move(*game->pos, r.move)), r.legal);
    }
}

TEST(PseudoLegal, QuietMovesOnly) {
    struct Row {
        const char* name;
        const char* fen;
        const char* move;
        bool possible;
    };
    const Row rows[] = {
        {"double push", START_FEN, "e2e4", true},
        {"single push", START_FEN, "e2e3", true},
        {"three squares", START_FEN, "e2e5", false},
        {"knight", START_FEN, "g1f3", true},
        {"knight onto its own pawn", START_FEN, "g1e2", false},
        {"blocked bishop", START_FEN, "f1c4", false},
        {"the other side's move", START_FEN, "e7e5", false},
        {"empty origin", START_FEN, "e4e5", false},
        {"king side castling", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQK2R w KQkq -", "e1g1", true},
        {"queen side through pieces", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQK2R w KQkq -", "e1c1", false},
        {"queen side with b1 taken", "r3k2r/8/8/8/8/8/8/RN2K2R w KQkq -", "e1c1", false},
        {"queen side", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1c1", true},
        {"black king side", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "e8g8", true},
        {"castling without the right", "r3k2r/8/8/8/8/8/8/R3K2R w Qkq -", "e1g1", false},
        {"castling with the other side's right", "r3k2r/8/8/8/8/8/8/R3K2R w kq -", "e1c1", false},
        {"capture", "4k3/8/8/3p4/4P3/8/8/4K3 w - -", "e4d5", false},
        {"promotion", "k7/4P3/8/8/8/8/8/4K3 w - -", "e7e8q", false},
        {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", "e5d6", false},
        {"pawn backwards", "4k3/8/8/8/4P3/8/8/4K3 w - -", "e4e3", false},
        {"black pawn backwards", "4k3/8/8/4p3/8/8/8/4K3 b - -", "e5e6", false},
        {"black double push", "4k3/4p3/8/8/8/8/8/4K3 b - -", "e7e5", true},
        {"black double push blocked", "4k3/4p3/4N3/8/8/8/8/4K3 b - -", "e7e5", false},
        {"double push from the third rank", "4k3/8/8/8/8/4P3/8/4K3 w - -", "e3e5", false},
        {"rook through a piece", "4k3/8/8/8/8/8/8/R1N1K3 w - -", "a1d1", false},
        {"queen diagonal", "4k3/8/8/8/8/8/8/Q3K3 w - -", "a1h8", true},
        {"king next door", "4k3/8/8/8/8/8/8/4K3 w - -", "e1f2", true},
        {"king two squares off its corner", "4k3/8/8/8/8/8/8/K7 w - -", "a1c1", false},
        {"knight on an impossible line", "4k3/8/8/8/8/8/8/N3K3 w - -", "a1a3", false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(pseudo_legal(*game->pos, mv(r.move)), r.possible);
    }
}

// For every move word, pseudo_legal accepts exactly the quiet moves the generator lists (any king
// step onto an empty square also counts: the generator leaves out attacked ones).
TEST(PseudoLegal, MatchesTheQuietGenerator) {
    int accepted = 0;
    walk_suite(1, [&](SearchThread& t) {
        const Position& p = *t.pos;
        MoveList quiets;
        gen_quiets(p, quiets.moves, &quiets.count);
        std::vector<bool> listed(4096);
        for (uint32_t i = 0; i < quiets.count; ++i)
            listed[quiets.moves[i]] = true;
        for (Move w = 0; w < 4096; ++w) {
            const int from = move_from(w), to = move_to(w);
            bool want = listed[w];
            if (p.board[from] == piece_code(p.side, KING) && to - from != 2 && from - to != 2)
                want = p.board[to] == EMPTY && (king_attacks[from] & bit(to));
            const bool got = pseudo_legal(p, w | QUIET_MARK | 0xBEEF0000u);
            accepted += got;
            ASSERT_EQ(got, want) << fen_of(p) << " " << move_text(w);
        }
    });
    EXPECT_GT(accepted, 10000);
}

// A stored word of any value is accepted exactly when the generators could give it.
TEST(MoveIsPseudoLegal, MatchesTheGenerators) {
    int accepted = 0;
    walk_suite(0, [&](SearchThread& t) {
        const Position& p = *t.pos;
        std::vector<bool> listed(65536);
        for (Move m : pseudo_moves(p))
            listed[m & 0xFFFF] = true;
        for (uint32_t w = 0; w < 65536; ++w) {
            const bool want = listed[w & ~QUIET_MARK];
            const bool got  = move_is_pseudo_legal(p, w | (w * 0x9E37u << 16));
            accepted += got;
            ASSERT_EQ(got, want) << fen_of(p) << " word " << w;
        }
    });
    EXPECT_GT(accepted, 4000);
}

TEST(MoveIsPseudoLegal, KnownCases) {
    struct Row {
        const char* name;
        const char* fen;
        Move word;
        bool possible;
    };
    const Row rows[] = {
        {"no move", START_FEN, 0, false},
        {"quiet move with its mark", START_FEN, mv("g1f3") | QUIET_MARK, true},
        {"promotion bits on a quiet move", START_FEN, mv("g1f3") | (4u << 13), false},
        {"capture", "4k3/8/8/3p4/4P3/8/8/4K3 w - -", mv("e4d5"), true},
        {"capturing its own piece", "4k3/8/8/8/8/8/3P4/4K3 w - -", mv("e1d2"), false},
        {"capturing the king", "8/8/8/8/8/8/3k4/3QK3 w - -", mv("d1d2"), false},
        {"promotion", "k7/4P3/8/8/8/8/8/4K3 w - -", mv("e7e8q"), true},
        {"under-promotion", "k7/4P3/8/8/8/8/8/4K3 w - -", mv("e7e8n"), true},
        {"promotion type 5", "k7/4P3/8/8/8/8/8/4K3 w - -", mv("e7e8") | (5u << 13), false},
        {"promotion without a piece type", "k7/4P3/8/8/8/8/8/4K3 w - -", mv("e7e8"), false},
        {"promoting capture", "k4r2/4P3/8/8/8/8/8/K7 w - -", mv("e7f8r"), true},
        {"en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", mv("e5d6"), true},
        {"diagonal onto an empty square", "4k3/8/8/3pP3/8/8/8/4K3 w - -", mv("e5d6"), false},
        {"castling", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", mv("e1g1"), true},
        {"castling through a piece", "r3k2r/8/8/8/8/8/8/RN2K2R w KQkq -", mv("e1c1"), false},
        {"castling without the right", "r3k2r/8/8/8/8/8/8/R3K2R w Qkq -", mv("e1g1"), false},
        {"king next to the other king", "8/8/8/8/8/3k4/8/4K3 w - -", mv("e1e2"), false},
        {"king beside a pawn", "4k3/8/8/8/8/8/3p4/4K3 w - -", mv("e1f2"), true},
        {"king onto a square a pawn guards", "4k3/8/8/8/8/4p3/8/4K3 w - -", mv("e1f2"), false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from(r.fen);
        EXPECT_EQ(move_is_pseudo_legal(*game->pos, r.word), r.possible);
    }
}
