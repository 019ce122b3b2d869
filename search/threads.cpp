#include "search/threads.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <system_error>
#include <thread>

#include "board/makemove.h"
#include "search/search.h"
#include "search/tt.h"

SearchControl sc;

// Records are allocated one by one (each is about 2 MB, mostly the counter-move history) and
// survive changes of the thread count; only records beyond a lowered count are released.
static SearchThread* records[MAX_THREADS];
static int record_count = 0;

// Handles of the threads of the running search; a slot is not joinable when its thread could not
// be created, and the search then goes on with the threads that did start.
static std::thread handles[MAX_THREADS];

int thread_count() {
    return record_count;
}

SearchThread& search_record(int i) {
    return *records[i];
}

void set_threads(int n) {
    if (n < 1) n = 1;
    if (n > MAX_THREADS) n = MAX_THREADS;
    while (record_count > n) {
        --record_count;
        delete records[record_count];
        records[record_count] = nullptr;
    }
    while (record_count < n) {
        SearchThread* r = new (std::nothrow) SearchThread{};
        if (r == nullptr) break;
        records[record_count++] = r;
    }
    // A search cannot do without record 0; failing to get it is as fatal as any other allocation.
    if (record_count == 0) records[record_count++] = new SearchThread{};
    printf("threads=%d\n", record_count);
}

void free_threads() {
    while (record_count > 0) {
        --record_count;
        delete records[record_count];
        records[record_count] = nullptr;
    }
}

void prepare_record(SearchThread& r, const SearchThread& game, uint32_t id) {
    r.id       = id;
    r.pos      = &r.stack[0];
    r.stack[0] = *game.pos;
    r.key      = game.key;
    r.histidx  = game.histidx;
    std::memcpy(r.keyhist, game.keyhist, (static_cast<size_t>(game.histidx) + 1) * sizeof(uint64_t));
    std::memset(r.killers, 0, sizeof r.killers);
}

static uint64_t search_count = 0;

uint64_t searches_started() {
    return search_count;
}

void start_search(const SearchThread& game) {
    ++search_count;
    ++hash_age;
    std::memset(sc.pv_table, 0, sizeof sc.pv_table);
    sc.completed_depth.store(0, std::memory_order_relaxed);
    // Every counter starts from zero before any thread runs: thread 0 may print its first line
    // before a helper has begun, and that line must not count the helper's last search.
    for (int i = 0; i < record_count; ++i) {
        set_thread_nodes(*records[i], 0);
        std::atomic_ref<uint64_t>(records[i]->tbhits).store(0, std::memory_order_relaxed);
    }
    for (int i = 0; i < record_count; ++i) {
        prepare_record(*records[i], game, static_cast<uint32_t>(i));
        try {
            handles[i] = std::thread(search_thread, std::ref(*records[i]));
        } catch (const std::system_error&) {
            // The search goes on with the threads that did start. Without thread 0 nobody would
            // end it, so the others are told to stop and the search reports no move.
            if (i == 0) sc.stop.store(1, std::memory_order_relaxed);
        }
    }
}

void join_search() {
    for (int i = 0; i < record_count; ++i)
        if (handles[i].joinable()) handles[i].join();
}

void stop_search_locked() {
    std::lock_guard<std::mutex> lock(sc.search_lock);
    sc.stop.store(1, std::memory_order_relaxed);
}

void reset_search_state() {
    sc.stop.store(0, std::memory_order_relaxed);
    sc.max_depth    = 0;
    sc.search_start = 0;
    sc.hard_limit   = 0;
    for (auto& limit : sc.time_limits)
        limit.store(0, std::memory_order_relaxed);
    sc.time_slot.store(0, std::memory_order_relaxed);
    sc.best_depth.store(0, std::memory_order_relaxed);
    sc.completed_depth.store(0, std::memory_order_relaxed);
    sc.best_score.store(0, std::memory_order_relaxed);
    sc.elapsed = 0;
    sc.root_move.store(0, std::memory_order_relaxed);
    sc.root_move_index.store(0, std::memory_order_relaxed);
}
