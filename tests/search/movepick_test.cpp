#include "search/movepick.h"

#include <gtest/gtest.h>

#include <string>

#include "search/search_helpers.h"

namespace {

Move word(const char* text) {
    return text_to_move(text);
}

struct SeeRow {
    const char* name;
    const char* fen;
    const char* move;
    int value;
};

TEST(See, ExchangeValues) {
    const SeeRow rows[] = {
        {"pawn takes defended knight returns early", "4k3/8/2p5/3n4/4P3/8/8/4K3 w - - 0 1", "e4d5", 0},
        {"queen takes pawn defended by pawn", "4k3/8/2p5/3p4/8/8/8/3QK3 w - - 0 1", "d1d5", -900},
        {"quiet knight move onto a pawn's square", "4k3/8/8/3p4/8/8/1N6/4K3 w - - 0 1", "b2c4", -310},
        {"rook takes undefended knight", "4k3/8/8/3n4/8/8/8/3RK3 w - - 0 1", "d1d5", 310},
        {"rook takes knight defended by pawn", "4k3/8/2p5/3n4/8/8/8/3RK3 w - - 0 1", "d1d5", -190},
        {"rook backed by rook takes pawn defended by rook", "3rk3/8/8/3p4/8/8/3R4/3RK3 w - - 0 1", "d2d5",
         100},
        {"queen behind the capturing bishop joins at once", "4k3/5b2/8/3p4/2B5/1Q6/8/4K3 w - - 0 1", "c4d5",
         100},
        {"bishop behind the recapturing pawn joins later", "4k3/5b2/4p3/3p4/2B5/1Q6/8/4K3 w - - 0 1", "c4d5",
         -230},
        {"en passant removes the pawn behind", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 100},
        {"free promotion counts a queen", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8q", 900},
        {"promotion taken by the king", "1k6/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8q", -100},
        {"black knight takes pawn defended by pawn", "4k3/8/8/4n3/2P5/1P1P4/8/4K3 b - - 0 1", "e5c4", -210},
        {"black queen takes rook defended by knight", "4k3/8/8/3q4/8/8/3R4/1N2K3 b - - 0 1", "d5d2", -500},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_fen(r.fen);
        EXPECT_EQ(see(*game->pos, word(r.move)), r.value);
    }
}

struct HistoryRow {
    const char* name;
    int before, bonus, after;
};

TEST(UpdateHistory, GravityAndTruncation) {
    const HistoryRow rows[] = {
        {"bonus fills up to the bound", 4000, 8192, 8192},
        {"malus at the lower bound stays there", -8192, -8192, -8192},
        {"small malus", 100, -32, 68},
        {"division truncates toward zero", -100, 32, -68},
        {"proportional damping", 5000, 1000, 5390},
        {"from zero the bonus is taken whole", 0, -2048, -2048},
    };
    auto game = game_from_fen(START_FEN);
    play(*game, "e2e4");
    SearchThread& t = search_record(0);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        prepare_record(t, *game, 0);
        const CmRow cmh = cm_row_of(t);
        ASSERT_NE(cmh, nullptr);
        const Move m                     = word("e7e5") | QUIET_MARK;
        t.history[BLACK][52][36]         = static_cast<int16_t>(r.before);
        cmh[piece_code(BLACK, PAWN)][36] = static_cast<int16_t>(r.before);
        update_history(t, cmh, m, r.bonus);
        EXPECT_EQ(t.history[BLACK][52][36], r.after);
        EXPECT_EQ(cmh[piece_code(BLACK, PAWN)][36], r.after);
        // The row belongs to the previous move: a white pawn now standing on e4.
        EXPECT_EQ(&cmh[0][0], &t.cmhist[piece_code(WHITE, PAWN)][28][0][0]);
    }
}

struct KeyRow {
    const char* name;
    const char* fen;
    const char* move;
    int key;
    bool quiet;
};

TEST(ScoreMoves, Keys) {
    const KeyRow rows[] = {
        {"white pawn takes black queen", "4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1", "e4d5", 400, false},
        {"black queen takes white pawn", "4k3/8/8/3q4/4P3/8/8/4K3 b - - 0 1", "d5e4", 4, false},
        {"white en passant", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 16, false},
        {"black en passant", "4k3/8/8/8/3Pp3/8/8/4K3 b - d3 0 1", "e4d3", 8, false},
        {"promotion by a push", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8q", 1, false},
        {"promotion with a capture", "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7b8n", 1, false},
        {"quiet move with empty history", "4k3/8/8/8/8/8/8/4K1N1 w - - 0 1", "g1f3", -16384, true},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game       = game_from_fen(r.fen);
        SearchThread& t = search_record(0);
        prepare_record(t, *game, 0);
        std::memset(t.history, 0, sizeof t.history);
        Move list[1] = {word(r.move)};
        score_moves(t, list, 1);
        EXPECT_EQ(move_key(list[0]), r.key);
        EXPECT_EQ((list[0] & QUIET_MARK) != 0, r.quiet);
        EXPECT_EQ(list[0] & 0xEFFF, word(r.move) & 0xEFFF);
    }
}

TEST(ScoreMoves, QuietKeyAddsBothHistories) {
    auto game = game_from_fen(START_FEN);
    play(*game, "e2e4");
    SearchThread& t = search_record(0);
    prepare_record(t, *game, 0);
    t.history[BLACK][62][45]                                             = 3000;
    t.cmhist[piece_code(WHITE, PAWN)][28][piece_code(BLACK, KNIGHT)][45] = -500;
    Move list[1]                                                         = {word("g8f6")};
    score_moves(t, list, 1);
    EXPECT_EQ(move_key(list[0]), 3000 - 500 - 16384);
    t.history[BLACK][62][45]                                             = 0;
    t.cmhist[piece_code(WHITE, PAWN)][28][piece_code(BLACK, KNIGHT)][45] = 0;
}

const char* const stage_names[] = {"evasion", "capture", "killer1", "killer2",
                                   "counter", "quiet",   "bad",     "end"};

struct PickRow {
    const char* name;
    const char* fen;
    const char* lastmove; // set on the position, or null
    const char* hash;     // hash move (quiet ones carry the quiet mark), or null
    const char* killer1;
    const char* killer2;
    const char* counter;
    const char* history_move; // white quiet move given history 500, or null
    const char* cm_move;      // white quiet move given counter-move history 600, or null
    bool full_mode;
    bool checks_first_ply;
    const char* expected; // "move:stage" items; the hash move reports the stage it preceded
};

// White: Ke1 Rd1 Nc3 Pc4; black: Ke8 Pd5 Pe6. cxd5 wins a pawn back, Nxd5 and Rxd5 lose material.
constexpr const char* PICK_FEN = "4k3/8/4p3/3p4/2P5/2N5/8/3RK3 w - - 0 1";

TEST(MovePicker, Order) {
    const PickRow rows[] = {
        {"all stages, counter equal to killer 1", PICK_FEN, "e7e6", "e1e2", "c3e4", "d1d2", "c3e4", nullptr,
         nullptr, true, false,
         "e1e2:capture c4d5:capture c3e4:killer1 d1d2:killer2 c3e4:counter c4c5:quiet c3b5:quiet c3a4:quiet "
         "c3e2:quiet c3a2:quiet c3b1:quiet e1f2:quiet e1d2:quiet e1f1:quiet d1d4:quiet d1d3:quiet d1c1:quiet "
         "d1b1:quiet d1a1:quiet c3d5:bad d1d5:bad"},
        {"history orders the quiets", PICK_FEN, "e7e6", nullptr, nullptr, nullptr, nullptr, "d1a1", "d1b1",
         true, false,
         "c4d5:capture d1b1:quiet d1a1:quiet c4c5:quiet c3b5:quiet c3e4:quiet c3a4:quiet c3e2:quiet "
         "c3a2:quiet "
         "c3b1:quiet e1f2:quiet e1e2:quiet e1d2:quiet e1f1:quiet d1d4:quiet d1d3:quiet d1d2:quiet d1c1:quiet "
         "c3d5:bad d1d5:bad"},
        {"hash capture first, impossible killer skipped", PICK_FEN, nullptr, "c4d5", "h1h2", nullptr, "c3e4",
         nullptr, "d1b1", true, false,
         "c4d5:capture c4c5:quiet c3b5:quiet c3e4:quiet c3a4:quiet c3e2:quiet c3a2:quiet c3b1:quiet "
         "e1f2:quiet "
         "e1e2:quiet e1d2:quiet e1f1:quiet d1d4:quiet d1d3:quiet d1d2:quiet d1c1:quiet d1b1:quiet d1a1:quiet "
         "c3d5:bad d1d5:bad"},
        {"quiescence: one capture stage, losing captures dropped", PICK_FEN, nullptr, "e1e2", nullptr,
         nullptr, nullptr, nullptr, nullptr, false, false, "e1e2:capture c4d5:capture"},
        {"captures by victim, en passant first, promotions last, losing push dropped",
         "r3k3/1P6/8/3pP3/8/8/8/R3K3 w - d6 0 1", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
         nullptr, false, false, "e5d6:capture a1a8:capture b7a8q:capture"},
        {"in check: evasions only, scored", "4k3/8/8/8/8/8/3q4/4K3 w - - 0 1", nullptr, nullptr, nullptr,
         nullptr, nullptr, nullptr, nullptr, true, false,
         "e1d2:evasion e1f2:evasion e1e2:evasion e1f1:evasion e1d1:evasion"},
        {"first quiescence ply: checks keyed by score_moves, unsafe checks dropped",
         "4k3/6p1/8/n7/6N1/8/8/R3K2R w - - 0 1", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
         nullptr, false, true, "a1a5:capture h1h8:capture"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game       = game_from_fen(r.fen);
        SearchThread& t = search_record(0);
        prepare_record(t, *game, 0);
        std::memset(t.history, 0, sizeof t.history);
        std::memset(t.cmhist, 0, sizeof t.cmhist);
        std::memset(t.counter, 0, sizeof t.counter);
        Position& p = *t.pos;
        if (r.lastmove) p.lastmove = word(r.lastmove);
        if (r.killer1) t.killers[0][0] = word(r.killer1) | QUIET_MARK;
        if (r.killer2) t.killers[1][0] = word(r.killer2) | QUIET_MARK;
        if (r.counter && r.lastmove) {
            const int lt               = move_to(p.lastmove);
            t.counter[p.board[lt]][lt] = word(r.counter) | QUIET_MARK;
        }
        if (r.history_move) {
            const Move m                               = word(r.history_move);
            t.history[WHITE][move_from(m)][move_to(m)] = 500;
        }
        if (r.cm_move && r.lastmove) {
            const Move m                                    = word(r.cm_move);
            cm_row_of(t)[p.board[move_from(m)]][move_to(m)] = 600;
        }
        Move hash = 0;
        if (r.hash) {
            hash = word(r.hash);
            if (p.board[move_to(hash)] == EMPTY && move_promo(hash) == 0) hash |= QUIET_MARK;
        }
        MovePicker mp;
        // Quiescence generates queen promotions only.
        picker_init(mp, t, hash, r.full_mode, r.full_mode ? 1 : 0, r.checks_first_ply, 0);
        std::string got;
        while (Move m = next_move(mp, t)) {
            if (!got.empty()) got += ' ';
            got += move_text(m);
            got += ':';
            got += stage_names[mp.stage];
        }
        EXPECT_EQ(got, r.expected);
        EXPECT_EQ(mp.stage, STAGE_END);
    }
    std::memset(search_record(0).history, 0, sizeof search_record(0).history);
    std::memset(search_record(0).cmhist, 0, sizeof search_record(0).cmhist);
    std::memset(search_record(0).counter, 0, sizeof search_record(0).counter);
}

TEST(MovePicker, BadCaptureKeysHoldExchangeValue) {
    auto game       = game_from_fen(PICK_FEN);
    SearchThread& t = search_record(0);
    prepare_record(t, *game, 0);
    MovePicker mp;
    picker_init(mp, t, 0, true, 1, false, 0);
    int bad_keys[4], n = 0;
    while (Move m = next_move(mp, t))
        if (mp.stage == STAGE_BAD_CAPTURES && n < 4) bad_keys[n++] = move_key(m);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(bad_keys[0], -110);
    EXPECT_EQ(bad_keys[1], -300);
}

TEST(MovePicker, KillersShiftOnlyForNewMoves) {
    auto game       = game_from_fen(PICK_FEN);
    SearchThread& t = search_record(0);
    prepare_record(t, *game, 0);
    const Move a = word("c3e4") | QUIET_MARK, b = word("d1d2") | QUIET_MARK;
    update_killers(t, 5, a);
    update_killers(t, 5, b);
    EXPECT_EQ(t.killers[0][5], b);
    EXPECT_EQ(t.killers[1][5], a);
    // The same squares with another key half are the same killer: nothing moves.
    update_killers(t, 5, b | 0x12340000u);
    EXPECT_EQ(t.killers[0][5], b);
    EXPECT_EQ(t.killers[1][5], a);
}

} // namespace
