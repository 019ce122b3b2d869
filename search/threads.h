#pragma once
// Search threads and the values they share with the driver. Thread 0 alone writes the principal
// variation and the best-move record; search_lock only guards the decision to stop.

#include <atomic>
#include <cstdint>
#include <mutex>

#include "search/thread.h"

struct SearchControl {
    std::atomic<int> stop;
    int max_depth;              // last iteration the deepening may start
    int64_t search_start;       // get_ms() at the start of the search
    uint64_t hard_limit;        // ms of elapsed time after which the search is stopped
    int limit_depth;            // the time limits apply once an iteration of this depth is complete
    uint64_t time_limits[10];   // soft limits, chosen by time_slot; 0 = none
    std::atomic<int> time_slot; // 0..9
    std::atomic<int> best_depth;
    std::atomic<int> best_score;
    double elapsed; // last elapsed time measured by the polling loop
    std::atomic<uint32_t> root_move;
    std::atomic<int> root_move_index;
    uint32_t pv_table[STACK_SIZE][STACK_SIZE];
    std::mutex search_lock;
};
extern SearchControl sc;

constexpr int MAX_THREADS = 128;
int thread_count();
SearchThread& search_record(int i);
// Clamps to 1..128, keeps existing records' contents, prints "threads=%d".
void set_threads(int n);
// Releases every record (the next set_threads starts from an empty set).
void free_threads();
// Record r takes its root from the game record: id, slot 0, key, key history; killers cleared.
void prepare_record(SearchThread& r, const SearchThread& game, uint32_t id);
// Advances the table age, clears pv_table and starts one thread per record from the game record.
void start_search(const SearchThread& game);
// Joins the threads in order 0..n-1.
void join_search();
// Thread 0's end of deepening: sets stop under search_lock.
void stop_search_locked();
