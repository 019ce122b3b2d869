// The two ways the program ends: in order (the input watcher joined, the tables freed) or at once
// at the end of the input, whatever threads still run.

#include "driver/shutdown.h"

#include <cstdio>
#include <cstdlib>

#include "driver/book.h"
#include "driver/engine_state.h"
#include "driver/watcher.h"
#include "eval/pawns.h"
#include "search/threads.h"
#include "search/tt.h"

void quit_path() {
    protocol.watcher_quit = 1;
    join_input_watcher();
    delete game_record;
    game_record = nullptr;
    hash_free();
    free_threads();
    pawn_hash_free();
    book_close();
    std::exit(0);
}

#ifdef MORVAINE_COVERAGE
extern "C" void __gcov_dump();
#endif

void end_of_input() {
    std::puts("found exit EXIT_FAILURE");
    std::fflush(stdout);
#ifdef MORVAINE_COVERAGE
    // _Exit skips the exit handlers, among them the one that writes the line counts.
    __gcov_dump();
#endif
    // Search threads may still be running: end at once, without destructors.
    std::_Exit(0);
}
