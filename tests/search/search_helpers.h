#pragma once
// Shared set-up for the search tests: the process-wide tables as start-up builds them, a game
// record on the heap, and a single-threaded fixed-depth search run on the caller's thread.

#include <cstring>
#include <memory>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "driver/engine_state.h"
#include "driver/platform.h"
#include "eval/pawns.h"
#include "eval/tables.h"
#include "search/search.h"
#include "search/threads.h"
#include "search/tt.h"

inline void init_search_tables() {
    static const bool done = [] {
        attack_init();
        pawn_masks_init();
        adjacent_files_init();
        pst_tables_init();
        lmr_init();
        keys_init();
        pawn_hash_alloc();
        hash_alloc(16);
        set_threads(1);
        return true;
    }();
    (void)done;
}

// A zeroed game record holding the position of the FEN text.
inline std::unique_ptr<SearchThread> game_from_fen(const char* fen) {
    init_search_tables();
    auto game = std::make_unique<SearchThread>();
    setboard(*game, fen);
    return game;
}

// Plays a move given as text on the game record (it must be legal there).
inline void play(SearchThread& game, const char* text) {
    const Move word = text_to_move(text);
    commit_move(game, word);
}

// The search values think() sets before starting threads, with thinking lines silenced.
inline void reset_search_control(int depth) {
    sc.stop.store(0);
    sc.max_depth = depth;
    sc.best_depth.store(0);
    sc.best_score.store(0);
    sc.time_slot.store(0);
    std::memset(sc.time_limits, 0, sizeof sc.time_limits);
    sc.search_start      = get_ms();
    engine.display_depth = 1000;
    engine.analyze_mode  = 0;
    engine.pondering     = 0;
    engine.uci_mode.store(0);
    engine.xboard_mode.store(0);
}

// An empty table for a new search: cleared, then aged as every search start does, so that stores of
// any depth replace the empty entries.
inline void new_search_table() {
    hash_clear();
    ++hash_age;
}

// Fixed-depth search of the game position by thread 0 on the calling thread, with a cleared
// table; returns the nodes it made.
inline uint64_t search_fixed_depth(SearchThread& game, int depth) {
    reset_search_control(depth);
    new_search_table();
    std::memset(sc.pv_table, 0, sizeof sc.pv_table);
    SearchThread& t = search_record(0);
    prepare_record(t, game, 0);
    search_thread(t);
    return thread_nodes(t);
}

// Fresh thread records: zero histories, so a search depends on nothing learnt before.
inline void fresh_records(int n) {
    free_threads();
    set_threads(n);
}
