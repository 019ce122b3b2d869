#include "search/search.h"

#include <gtest/gtest.h>

#include <string>

#include "eval/evaluate.h"
#include "search/search_helpers.h"

namespace {

// Record 0 standing at the given ply on the game position, with distinct keys behind it so that
// nothing repeats by accident.
SearchThread& record_at_ply(const SearchThread& game, int ply) {
    SearchThread& t = search_record(0);
    prepare_record(t, game, 0);
    for (int i = 1; i <= ply; ++i) {
        t.stack[i]               = t.stack[0];
        t.keyhist[t.histidx + i] = 0x9E3779B97F4A7C15ULL * static_cast<uint64_t>(i);
    }
    t.pos = &t.stack[ply];
    t.histidx += static_cast<uint32_t>(ply);
    t.keyhist[t.histidx] = t.key;
    set_thread_nodes(t, 0);
    return t;
}

struct LmrRow {
    int depth, moves, reduction;
};

TEST(Search, ReductionTable) {
    init_search_tables();
    const LmrRow rows[] = {{3, 8, 1},   {10, 20, 5}, {1, 7, 0}, {99, 383, 68},
                           {0, 383, 0}, {50, 0, 0},  {8, 2, 1}};
    for (const auto& r : rows) {
        SCOPED_TRACE(std::to_string(r.depth) + "/" + std::to_string(r.moves));
        EXPECT_EQ(lmr_table[r.depth][r.moves], r.reduction);
    }
}

TEST(Search, AspirationWindowWidens) {
    struct Step {
        int score, alpha, beta, delta;
        bool retry;
    };
    struct Row {
        const char* name;
        int alpha, beta, delta;
        Step steps[4];
        int step_count;
    };
    const Row rows[] = {
        {"fail low twice, then inside",
         25,
         45,
         10,
         {{25, 5, 45, 20, true}, {-3, -43, 45, 40, true}, {0, -43, 45, 40, false}},
         3},
        {"fail high widens beta only", 25, 45, 10, {{50, 25, 70, 20, true}, {95, 25, 135, 40, true}}, 2},
        {"bounds stop at the mate scores", -32700, 32700, 32767, {{-32767, -32767, 32700, 65534, true}}, 1},
        {"exact score leaves everything alone", -10, 10, 10, {{0, -10, 10, 10, false}}, 1},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        int alpha = r.alpha, beta = r.beta, delta = r.delta;
        for (int i = 0; i < r.step_count; ++i) {
            SCOPED_TRACE(i);
            const Step& s = r.steps[i];
            EXPECT_EQ(widen_window(s.score, alpha, beta, delta), s.retry);
            EXPECT_EQ(alpha, s.alpha);
            EXPECT_EQ(beta, s.beta);
            EXPECT_EQ(delta, s.delta);
        }
    }
}

TEST(Search, TwelveFailsExhaustTheWindow) {
    int alpha = 25, beta = 45, delta = 10, fails = 0;
    while (widen_window(alpha, alpha, beta, delta)) {
        ++fails;
        if (delta > MATE) break;
    }
    EXPECT_EQ(fails, 12);
    EXPECT_EQ(beta, 45);
    EXPECT_EQ(alpha, -MATE);
}

struct MateRow {
    const char* name;
    const char* fen;
    int depth;
    int score;
    const char* first_move;
};

TEST(Search, FindsMates) {
    const MateRow rows[] = {
        {"back-rank mate in one", "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1", 3, MATE - 1, "a1a8"},
        {"knight sacrifice, mate in two", "r2qkb1r/pp2nppp/3p4/2pNN1B1/2BnP3/3P4/PPP2PPP/R2bK2R w KQkq - 1 1",
         5, MATE - 3, "d5f6"},
        {"king and rook, mate in two", "k7/8/2K5/8/8/8/8/1R6 w - - 0 1", 5, MATE - 3, "c6c7"},
        {"black mates in two", "1r6/8/8/8/8/2k5/8/K7 b - - 0 1", 5, MATE - 3, "c3c2"},
        {"king and rook, mate in three", "k7/8/8/2K5/8/8/8/1R6 w - - 0 1", 8, MATE - 5, "c5b6"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_fen(r.fen);
        fresh_records(1);
        search_fixed_depth(*game, r.depth);
        EXPECT_EQ(sc.best_score.load(), r.score);
        EXPECT_EQ(sc.best_depth.load(), r.depth);
        EXPECT_STREQ(move_text(sc.pv_table[0][0]), r.first_move);
    }
}

struct NoMoveRow {
    const char* name;
    const char* fen;
    int score; // the last iteration's root score
};

// Without a legal move no root move raises alpha: no variation, and the record keeps the values
// the driver set.
TEST(Search, RootWithoutMoves) {
    const NoMoveRow rows[] = {
        {"stalemate", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", 0},
        {"checkmate", "R6k/6pp/8/8/8/8/8/6K1 b - - 0 1", -MATE},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_fen(r.fen);
        fresh_records(1);
        search_fixed_depth(*game, 4);
        EXPECT_EQ(sc.pv_table[0][0], 0u);
        EXPECT_EQ(sc.best_depth.load(), 0);
        EXPECT_EQ(sc.best_score.load(), 0);
        reset_search_control(99);
        SearchThread& t = search_record(0);
        prepare_record(t, *game, 0);
        EXPECT_EQ(search_root(t, -MATE, MATE, 3), r.score);
    }
}

// Down a queen, White can only draw: the knight's return repeats the position of two moves ago.
TEST(Search, RepetitionScoresZero) {
    auto game = game_from_fen("7k/8/3q4/8/8/8/8/K5N1 w - - 0 1");
    for (const char* m : {"g1f3", "h8g8", "f3g1", "g8h8"})
        play(*game, m);
    fresh_records(1);
    search_fixed_depth(*game, 6);
    EXPECT_EQ(sc.best_score.load(), 0);
    EXPECT_STREQ(move_text(sc.pv_table[0][0]), "g1f3");
}

struct DrawRow {
    const char* name;
    const char* fen;
    const char* moves; // blank-separated game moves played first, or ""
    int rule50;        // set on the position afterwards (FEN set-up leaves it 0), or -1
    bool draw;
};

TEST(Search, DrawTests) {
    const DrawRow rows[] = {
        {"fifty-move rule", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "", 100, true},
        {"one ply short of it", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "", 99, false},
        {"bare kings", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", "", -1, true},
        {"king and knight", "4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "", -1, true},
        {"king and bishop", "4k3/8/8/8/8/8/8/4KB2 w - - 0 1", "", -1, true},
        {"two knights", "4k3/8/8/8/8/8/8/3NKN2 w - - 0 1", "", -1, true},
        {"knight against knight", "4k1n1/8/8/8/8/8/8/4KN2 w - - 0 1", "", -1, true},
        {"bishop against bishop is played out", "4kb2/8/8/8/8/8/8/4KB2 w - - 0 1", "", -1, false},
        {"knight and bishop are played out", "4k3/8/8/8/8/8/8/3BKN2 w - - 0 1", "", -1, false},
        {"a pawn is played out", "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", "", -1, false},
        {"a rook is played out", "4k3/8/8/8/8/8/8/4KR2 w - - 0 1", "", -1, false},
        {"repetition within the reversible plies", "4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "a1a2 e8d8 a2a1 d8e8",
         -1, true},
        {"repetition further back than the clock", "4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "a1a2 e8d8 a2a1 d8e8", 3,
         false},
        {"a clock larger than the game's history", "4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "", 60, false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game         = game_from_fen(r.fen);
        std::string moves = r.moves;
        for (size_t i = 0; i + 4 <= moves.size(); i += 5)
            play(*game, moves.substr(i, 4).c_str());
        if (r.rule50 >= 0) game->pos->rule50 = static_cast<uint8_t>(r.rule50);
        SearchThread& t = search_record(0);
        prepare_record(t, *game, 0);
        EXPECT_EQ(is_draw(t), r.draw);
    }
}

TEST(Search, QuiescenceEdges) {
    // White is a rook up and to move; black has no defence worth a search.
    auto rook_up    = game_from_fen("4k3/8/8/8/8/8/8/R3K3 w - - 0 1");
    SearchThread& t = record_at_ply(*rook_up, 120);
    EXPECT_EQ(qsearch(t, 0, -5, 5, -3, 120), evaluate(*t.pos));

    auto fifty         = game_from_fen("4k3/8/8/8/8/8/8/R3K3 w - - 0 1");
    fifty->pos->rule50 = 100;
    record_at_ply(*fifty, 2);
    EXPECT_EQ(qsearch(search_record(0), 0, -100, 100, 0, 2), 0);

    auto mated = game_from_fen("R6k/6pp/8/8/8/8/8/6K1 b - - 0 1");
    record_at_ply(*mated, 7);
    EXPECT_EQ(qsearch(search_record(0), 0, -MATE, MATE, 0, 7), 7 - MATE);
    record_at_ply(*mated, 7);
    EXPECT_EQ(qsearch(search_record(0), 0, MATE - 6, MATE, 0, 7), MATE - 6);
}

struct SkipRow {
    const char* name;
    const char* fen;
    int depth;
    bool searched;
};

// Moves that lose material by exchange are not tried at all: no node is made.
TEST(Search, QuiescenceSkipsLosingMoves) {
    const SkipRow rows[] = {
        {"queen takes a pawn defended by a pawn", "4k3/8/2p5/3p4/8/8/8/3QK3 w - - 0 1", -1, false},
        {"queen takes an undefended pawn", "4k3/8/8/3p4/8/8/8/3QK3 w - - 0 1", -1, true},
        {"quiet check onto a square a pawn guards", "4k3/6p1/8/8/6N1/8/8/4K3 w - - 0 1", 0, false},
        {"quiet check onto a safe square", "4k3/p7/8/8/6N1/8/8/4K3 w - - 0 1", 0, true},
        {"quiet checks only on the first ply", "4k3/p7/8/8/6N1/8/8/4K3 w - - 0 1", -1, false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_fen(r.fen);
        new_search_table();
        SearchThread& t = record_at_ply(*game, 2);
        qsearch(t, 0, -30000, 30000, r.depth, 2);
        EXPECT_EQ(thread_nodes(t) > 0, r.searched);
    }
}

// A stored result ends a node without a move being made, unless the node is on the principal
// variation or the stored depth is too shallow for it.
TEST(Search, TableCutoffs) {
    struct Row {
        const char* name;
        bool main_search;
        int pv, stored_depth, depth;
        bool cut;
    };
    const Row rows[] = {
        {"exact entry of the node's depth", true, 0, 6, 6, true},
        {"principal-variation node searches", true, 1, 6, 6, false},
        {"entry one ply too shallow", true, 0, 5, 6, false},
        {"quiescence: entry of depth -1 serves depth -3", false, 0, -1, -3, true},
        {"quiescence: not on the principal variation", false, 1, -1, -3, false},
        {"quiescence: entry of depth -1 does not serve depth 0", false, 0, -1, 0, false},
    };
    // Black to move can win a pawn back at once, so every search that goes on makes a move.
    auto game = game_from_fen("r1bqkbnr/pppp1ppp/2n5/4p3/3PP3/5N2/PPP2PPP/RNBQKB1R b KQkq - 0 3");
    fresh_records(1);
    reset_search_control(99);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        new_search_table();
        SearchThread& t = record_at_ply(*game, 2);
        hash_store(t, 0, 33, 12, r.stored_depth, 2, BOUND_EXACT);
        const int score = r.main_search ? search(t, r.pv, -1000, 1000, r.depth, 2, 1, 0)
                                        : qsearch(t, r.pv, -1000, 1000, r.depth, 2);
        EXPECT_EQ(thread_nodes(t) == 0, r.cut);
        if (r.cut) {
            EXPECT_EQ(score, 33);
        }
    }
}

TEST(Search, NodesWithoutMoves) {
    struct Row {
        const char* name;
        const char* fen;
        const char* excluded;
        int score;
    };
    const Row rows[] = {
        {"stalemate at ply 3", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", nullptr, 0},
        {"checkmate at ply 3", "R6k/6pp/8/8/8/8/8/6K1 b - - 0 1", nullptr, 3 - MATE},
        {"singular test without another move", "7k/8/6K1/8/8/8/8/1R6 b - - 0 1", "h8g8", 3 - MATE},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        auto game = game_from_fen(r.fen);
        reset_search_control(99);
        SearchThread& t     = record_at_ply(*game, 3);
        const Move excluded = r.excluded ? text_to_move(r.excluded) | QUIET_MARK : 0;
        EXPECT_EQ(search(t, 0, -MATE, MATE, 4, 3, 1, excluded), r.score);
    }
}

// The same search from the same state makes the same nodes: nothing depends on the clock or on
// memory left over.
TEST(Search, FixedDepthIsDeterministic) {
    const char* fens[] = {
        START_FEN,
        "r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3",
        "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1",
    };
    for (const char* fen : fens) {
        SCOPED_TRACE(fen);
        auto game = game_from_fen(fen);
        uint64_t nodes[2];
        uint32_t best[2];
        for (int run = 0; run < 2; ++run) {
            fresh_records(1);
            nodes[run] = search_fixed_depth(*game, 7);
            best[run]  = sc.pv_table[0][0];
        }
        EXPECT_EQ(nodes[0], nodes[1]);
        EXPECT_EQ(best[0], best[1]);
        EXPECT_GT(nodes[0], 0u);
    }
}

} // namespace
