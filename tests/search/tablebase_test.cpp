// The root's use of the endgame tables under the 50-move rule: a win or loss that the counter
// already gone by puts out of reach is a draw when the rule counts, and a win or loss otherwise.

#include "board/syzygy.h"
#include "search/tablebase.h"
#include "search/threads.h"
#include "support.h"

TEST(TablebaseRoot, FiftyMoveCounterDecides) {
    harness_tables_init();
    tb_load(MORVAINE_SYZYGY_DIR, ':');
    struct Row {
        const char* fen;
        int rule50;
        bool rule_counts;
        int score;
    };
    const Row rows[] = {
        {"5B2/4K3/2k5/1N6/8/8/8/8 w - -", 0, true, TB_WIN_SCORE - 1},   // bishop and knight mate in time
        {"5B2/4K3/2k5/1N6/8/8/8/8 w - -", 75, true, TB_CURSED_SCORE},   // not any more
        {"5B2/4K3/2k5/1N6/8/8/8/8 w - -", 75, false, TB_WIN_SCORE - 1}, // unless the rule is off
        {"4R3/8/8/8/2K5/5k2/8/8 b - -", 84, true, -TB_CURSED_SCORE},    // the rook mates too late
        {"4R3/8/8/8/2K5/5k2/8/8 b - -", 84, false, 1 - TB_WIN_SCORE},
        {"8/8/8/8/8/2k5/2P5/2K5 b - -", 0, true, 0}, // the pawn is held
    };
    auto game = game_from(START_FEN);
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fen);
        setboard(*game, r.fen);
        game->pos->rule50  = static_cast<uint8_t>(r.rule50);
        tb_settings.rule50 = r.rule_counts;
        sc.root_move_count = 0;
        tb_prepare_search(*game);
        EXPECT_TRUE(tb_root_known);
        EXPECT_EQ(tb_root_score, r.score);
        EXPECT_GT(sc.root_move_count, 0);
    }
    tb_settings        = TbSettings{};
    sc.root_move_count = 0;
    tb_load("", ':');
}
