#pragma once
// Search threads and the values they share with the driver. Thread 0 alone writes the principal
// variation and the best-move record; search_lock only guards the decision to stop.

#include <atomic>
#include <cstdint>
#include <mutex>

#include "search/thread.h"

constexpr int MAX_MULTIPV = 256;
// Soft time limits, one per slot: a new best move takes the last, most generous one, and each
// iteration that confirms it steps one slot down.
constexpr int TIME_SLOTS = 10;

struct SearchControl {
    std::atomic<int> stop;
    // What the driver asks of this search, set before the threads start.
    bool analysis;      // an analysis: underpromotions at every ply, widened windows reported
    bool show_root;     // the root move being searched is published (XBoard analysis, for ".")
    bool pondering;     // a ponder search: wider aspiration windows
    bool uci_output;    // progress lines in UCI form, else thinking lines from display_depth on
    bool xboard_output; // thinking lines in XBoard form: mates as 100000 + N moves, plain moves
    int display_depth;
    int max_depth;        // last iteration the deepening may start
    int64_t search_start; // get_ms() at the start of the search
    // The time limits count from here: the search start, or the moment a ponder search became the
    // engine's own (the driver may move it, and the limits below, while the search runs).
    std::atomic<int64_t> clock_start;
    uint64_t hard_limit;                           // ms of elapsed time after which the search is stopped
    std::atomic<int> limit_depth;                  // the time limits apply once this depth is complete
    std::atomic<uint64_t> time_limits[TIME_SLOTS]; // soft limits, chosen by time_slot; 0 = none
    uint64_t node_limit;                           // nodes each thread may search (UINT64_MAX: no limit)
    int mate_limit;                                // stop once a mate in this many moves is found (0: no)
    int multipv;                                   // lines searched at the root, best first
    int root_move_count;                           // moves the root may search (0: all)
    uint32_t root_moves[MAX_MOVES];
    std::atomic<int> time_slot; // 0 .. TIME_SLOTS - 1
    std::atomic<int> best_depth;
    std::atomic<int> completed_depth; // the last iteration thread 0 finished (0: none yet)
    std::atomic<int> best_score;
    double elapsed; // last elapsed time measured by the polling loop
    std::atomic<uint32_t> root_move;
    std::atomic<int> root_move_index;
    uint32_t pv_table[STACK_SIZE][STACK_SIZE];
    // MultiPV: the lines after the best one, as the last complete iteration left them.
    int extra_lines;
    int extra_scores[MAX_MULTIPV];
    uint32_t extra_pvs[MAX_MULTIPV][STACK_SIZE];
    std::mutex search_lock;
};
extern SearchControl sc;

constexpr int MAX_THREADS = 128;
int thread_count();
SearchThread& search_record(int i);
// Clamps to 1..128, keeps existing records' contents, prints "threads=%d". Each record has a
// worker thread that waits between searches; those of released records are joined first.
void set_threads(int n);
// Joins every worker and releases every record (the next set_threads starts from an empty set).
void free_threads();
// Record r takes its root from the game record: id, slot 0, key, key history; killers cleared.
void prepare_record(SearchThread& r, const SearchThread& game, uint32_t id);
// Advances the table age, clears pv_table and sets each record's worker searching from the game
// record (a worker missing since set_threads is created now).
void start_search(const SearchThread& game);
// Searches started since start-up: the records' ordering memory and the table are unchanged
// while this count stands.
uint64_t searches_started();
// Waits until every worker of the search has left it: afterwards none touches the records or the
// shared values until the next start_search.
void join_search();
// Every value one search leaves behind (stop, limits, soft-limit slot, best depth and score, the
// root move shown), cleared before the next one begins.
void reset_search_state();
// Thread 0's end of deepening: sets stop under search_lock.
void stop_search_locked();
