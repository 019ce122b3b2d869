#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/search_harness.h"
#include "book/polyglot.h"
#include "driver/book.h"
#include "driver/game_position.h"
#include "fuzz/fuzz_platform.h"
#include "search/threads.h"
#include "search/tt.h"

// libFuzzer calls this once before the first input, in every target.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    harness_tables_init();
    game_record      = new SearchThread();
    game_record->pos = &game_record->stack[0];
    set_threads(1);
    hash_alloc(HARNESS_HASH_MB);
    harness_reset();
    return 0;
}

// The searches counted at the last reset: while the count stands, no search has written the
// ordering memory or the table since, and clearing them again would only cost time.
static uint64_t searches_at_reset = 0;

void harness_reset() {
    book_close();
    SearchThread* game = game_record;
    reset_engine_state();
    book_rand_state = 1;
    // One thread with fresh ordering memory, so that a run does not depend on the runs before it.
    if (thread_count() != 1) set_threads(1);
    const bool searched = searches_started() != searches_at_reset;
    searches_at_reset   = searches_started();
    if (searched) std::memset(static_cast<void*>(&search_record(0)), 0, sizeof(SearchThread));
    // A new size comes zero-filled; the same size is cleared only when a search has written it.
    if (hash_size != static_cast<uint64_t>(HARNESS_HASH_MB) << 20)
        hash_alloc(HARNESS_HASH_MB);
    else if (searched)
        hash_clear();
    reset_search_state();
    nodes_searched.store(0, std::memory_order_relaxed);
    // The start position with its key history begun, as a new game has it.
    setboard(*game, START_FEN);
    generate_legal_moves(*game, true);
    fuzz_input_set({});
}

std::vector<std::string> split_lines(const uint8_t* data, size_t size) {
    std::vector<std::string> lines;
    std::string line;
    for (size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == '\r' || c == '\n') {
            lines.push_back(line);
            line.clear();
            if (c == '\r' && i + 1 < size && data[i + 1] == '\n') ++i;
        } else {
            line += c;
        }
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

std::string c_text(const uint8_t* data, size_t size) {
    const void* nul  = std::memchr(data, 0, size);
    const size_t len = nul ? static_cast<size_t>(static_cast<const uint8_t*>(nul) - data) : size;
    return std::string(reinterpret_cast<const char*>(data), len);
}

void finding(const char* what) {
    std::fprintf(stderr, "finding: %s\n", what);
    std::abort();
}
