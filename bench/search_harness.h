#pragma once
// Fixed searches of the six bench positions and of the perft suite's positions, shared by the
// signature program, the search benchmark and the tests: the start-up tables without the rest of
// start-up, and one search of a position after a fresh new game, through think() exactly as a
// game would run it.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

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

// The signature: one thread, this table size, the six bench positions in order to the first
// depth, then the positions of the perft suite in order to the second. The suite's endings,
// promotions, checks and transpositions reach parts of the search the six positions do not.
inline constexpr int SIGNATURE_DEPTH       = 13;
inline constexpr int SUITE_SIGNATURE_DEPTH = 7;
inline constexpr int SIGNATURE_HASH_MB     = 16;

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
    SearchRequest request;
    request.display_depth     = NO_THINKING_LINES;
    request.clock.depth_limit = depth;
    const int64_t start       = get_ms();
    think(game, request);
    FixedSearch r{};
    r.ms    = get_ms() - start;
    r.nodes = total_nodes();
    r.best  = sc.pv_table[0][0];
    r.score = sc.best_score.load(std::memory_order_relaxed);
    r.depth = sc.best_depth.load(std::memory_order_relaxed);
    return r;
}

// A fresh set of thread records (the move-ordering history starts empty) and a table of the given
// size, searching each position of `fens` in order into out. Returns the summed node count.
template <class Fens>
uint64_t run_positions(int threads, int hash_mb, int depth, const Fens& fens, FixedSearch* out) {
    harness_tables_init();
    free_threads();
    set_threads(threads);
    hash_alloc(hash_mb);
    SearchThread* game = new SearchThread{};
    uint64_t total     = 0;
    size_t i           = 0;
    for (const auto& fen : fens) {
        out[i] = fixed_depth_search(*game, fen, depth);
        total += out[i++].nodes;
    }
    delete game;
    return total;
}

inline uint64_t run_bench_positions(int threads, int hash_mb, int depth, FixedSearch out[6]) {
    return run_positions(threads, hash_mb, depth, bench_positions, out);
}

// The records of an EPD file, blank and '#' lines skipped; a record's position is its text before
// " ;", the operations (";D1 20" and so on) follow.
inline std::vector<std::string> epd_records(const char* path) {
    std::vector<std::string> records;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#') records.push_back(line);
    return records;
}
inline std::string epd_position(const std::string& record) {
    return record.substr(0, record.find(" ;"));
}

struct NodeSignature {
    uint64_t bench, suite; // 0 for the suite when its file cannot be read
};

// The node-count signature, with the perft suite read from suite_path.
inline NodeSignature node_signature(const char* suite_path) {
    FixedSearch bench[6];
    const uint64_t b = run_bench_positions(1, SIGNATURE_HASH_MB, SIGNATURE_DEPTH, bench);
    std::vector<std::string> suite;
    for (const std::string& record : epd_records(suite_path))
        suite.push_back(epd_position(record));
    std::vector<const char*> fens;
    for (const std::string& fen : suite)
        fens.push_back(fen.c_str());
    std::vector<FixedSearch> runs(fens.size());
    return {b,
            fens.empty() ? 0 : run_positions(1, SIGNATURE_HASH_MB, SUITE_SIGNATURE_DEPTH, fens, runs.data())};
}
