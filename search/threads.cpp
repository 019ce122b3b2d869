#include "search/threads.h"

#include <atomic>
#include <condition_variable>
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

// One worker per record, kept alive between searches: creating and joining a thread for every
// search is time that a short search notices (under the sanitizers most of all), and a game or a
// test run starts thousands of searches. A worker sleeps until the next search's generation, runs
// search_thread on its record and reports back. The pool is never destroyed, so that an exit with
// workers still asleep neither joins nor terminates anything. A slot is not joinable when its
// thread could not be created; the searches then go on with the workers that did start.
struct WorkerPool {
    std::thread workers[MAX_THREADS];
    std::mutex lock;
    std::condition_variable wake; // workers: a new generation, or fewer workers wanted
    std::condition_variable done; // the driver: every worker of the search is back
    uint64_t generation = 0;      // searches handed to the workers so far
    int keep            = 0;      // workers 0 .. keep - 1 stay; the others leave
    int running         = 0;      // workers still inside the current search
};
static WorkerPool& pool = *new WorkerPool;

static void worker_loop(int i, uint64_t seen) {
    std::unique_lock<std::mutex> hold(pool.lock);
    for (;;) {
        pool.wake.wait(hold, [&] { return i >= pool.keep || pool.generation != seen; });
        if (i >= pool.keep) return;
        seen = pool.generation;
        hold.unlock();
        search_thread(*records[i]);
        hold.lock();
        if (--pool.running == 0) pool.done.notify_all();
    }
}

// Creates the missing workers of records 0 .. record_count - 1 (no search is running). Returns
// false when worker 0 is missing.
static bool start_workers() {
    {
        std::lock_guard<std::mutex> hold(pool.lock);
        pool.keep = record_count;
    }
    for (int i = 0; i < record_count; ++i) {
        if (pool.workers[i].joinable()) continue;
        try {
            pool.workers[i] = std::thread(worker_loop, i, pool.generation);
        } catch (const std::system_error&) {
            // Left out of this search; the next one tries again.
        }
    }
    return pool.workers[0].joinable();
}

// Workers from `first` on leave and are joined, before their records go.
static void stop_workers(int first) {
    {
        std::lock_guard<std::mutex> hold(pool.lock);
        pool.keep = first;
    }
    pool.wake.notify_all();
    for (int i = first; i < MAX_THREADS; ++i)
        if (pool.workers[i].joinable()) pool.workers[i].join();
}

int thread_count() {
    return record_count;
}

SearchThread& search_record(int i) {
    return *records[i];
}

void set_threads(int n) {
    if (n < 1) n = 1;
    if (n > MAX_THREADS) n = MAX_THREADS;
    stop_workers(n);
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
    start_workers();
    printf("threads=%d\n", record_count);
}

void free_threads() {
    stop_workers(0);
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
    for (int i = 0; i < record_count; ++i)
        prepare_record(*records[i], game, static_cast<uint32_t>(i));
    // The search goes on with the workers there are. Without worker 0 nobody would end it, so
    // the others are told to stop and the search reports no move.
    if (!start_workers()) sc.stop.store(1, std::memory_order_relaxed);
    {
        std::lock_guard<std::mutex> hold(pool.lock);
        ++pool.generation;
        pool.running = 0;
        for (int i = 0; i < record_count; ++i)
            pool.running += pool.workers[i].joinable() ? 1 : 0;
    }
    pool.wake.notify_all();
}

void join_search() {
    std::unique_lock<std::mutex> hold(pool.lock);
    pool.done.wait(hold, [] { return pool.running == 0; });
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
