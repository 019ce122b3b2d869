#pragma once
// Fixed searches of the six bench positions, shared by the signature program, the search
// benchmark and the tests: the start-up tables without the rest of start-up, and one search of a
// position after a fresh new game, through think() exactly as a game would run it.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "driver/control.h"
#include "driver/display.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "eval/pawns.h"
#include "platform/platform.h"
#include "search/output.h"
#include "search/search.h"
#include "search/threads.h"
#include "search/tt.h"

// The signature: one thread, this depth, this table size, the six positions in order.
inline constexpr int SIGNATURE_DEPTH   = 13;
inline constexpr int SIGNATURE_HASH_MB = 16;

// The tables and the pawn cache start-up makes before any position exists; done once.
inline void harness_tables_init() {
    static bool done = false;
    if (done) return;
    tables_init();
    if (!pawn_hash_alloc()) {
        std::printf("pawn hash allocation failed\n");
        std::exit(1);
    }
    done = true;
}

struct FixedSearch {
    uint64_t nodes;
    int64_t ms;
    Move best;
    int score;
    int depth;
};

// Sets the game record to the position, starts a new game (the table is cleared) and searches to
// the depth in the console dialect with the thinking lines held back. think prints the move.
inline FixedSearch fixed_depth_search(SearchThread& game, const char* fen, int depth) {
    setboard(game, fen);
    new_game(game);
    clock_inputs.clear_request();
    reset_search_state();
    protocol.xboard_mode     = 0;
    protocol.uci_mode        = 0;
    protocol.analyze_mode    = 0;
    protocol.pondering       = 0;
    protocol.display_depth   = MAX_DEPTH + 1;
    clock_inputs.depth_limit = depth;
    const int64_t start      = get_ms();
    think(game);
    FixedSearch r{};
    r.ms    = get_ms() - start;
    r.nodes = total_nodes();
    r.best  = sc.pv_table[0][0];
    r.score = sc.best_score.load(std::memory_order_relaxed);
    r.depth = sc.best_depth.load(std::memory_order_relaxed);
    return r;
}

// A fresh set of thread records (the move-ordering history starts empty), a table of the given
// size, and each of the six bench positions searched in order. Returns the summed node count.
inline uint64_t run_bench_positions(int threads, int hash_mb, int depth, FixedSearch out[6]) {
    harness_tables_init();
    free_threads();
    set_threads(threads);
    hash_alloc(hash_mb);
    SearchThread* game = new SearchThread{};
    uint64_t total     = 0;
    for (int i = 0; i < 6; ++i) {
        out[i] = fixed_depth_search(*game, bench_positions[i], depth);
        total += out[i].nodes;
    }
    delete game;
    return total;
}
