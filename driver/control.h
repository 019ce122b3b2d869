#pragma once
// Search control: each search runs through one think call, from a request to an outcome: limits
// from the time manager, the threads started and joined, the clock and the input polled every 2 ms,
// the answer printed. Callers neither fill nor reset the search record for it.

#include <cstdint>

#include "board/types.h"
#include "driver/engine_state.h"
#include "search/thread.h"

enum class Dialect { console, xboard, uci };

// A display depth no search reaches: no XBoard or console thinking line is printed.
constexpr int NO_THINKING_LINES = MAX_DEPTH + 1;

// What one search is asked for. Built from the driver's state by search_request; think reads
// nothing else of it but the lag record of the time manager.
struct SearchRequest {
    Dialect dialect   = Dialect::console;
    bool analysis     = false; // searches until a line ends it (or its depth, "sd" during analysis)
    bool pondering    = false; // the opponent's time: no move is printed, the clock does not end it
    int display_depth = 0;     // least depth of the XBoard and console thinking lines
    int32_t overhead  = 0;     // ms the answer takes to reach the GUI's clock
    // A depth, a time per move, or the clock with its moves to the next control; UCI's go beyond
    // the clock (until "stop" or "ponderhit", node and mate limits, root moves).
    ClockInputs clock{};
    int32_t multipv = 1;
};

// How a search ended.
enum class SearchEnd {
    depth, // it ran to its depth limit (or had nothing to search)
    input, // a line (XBoard), a key or a piped line (console analysis) ended it
    clock, // its time was up
    stop,  // UCI "stop" or "quit", or the end of UCI input
};

struct SearchOutcome {
    SearchEnd end       = SearchEnd::depth;
    Move best           = 0;     // the answer; 0 when there is none
    int completed_depth = 0;     // the last iteration completed
    bool exhausted      = false; // it completed the deepest iteration there is (MAX_DEPTH)
    bool line_held      = false; // XBoard analysis: the line that ended it waits in input_line
};

// The request the driver's state makes now: dialect, modes, display depth, clock inputs, UCI's go.
SearchRequest search_request(bool pondering);
// Runs one search to its end: limits from the request, threads started and joined, input and clock
// watched, the answer printed in the dialect's form. Clears what the search before left behind.
SearchOutcome think(SearchThread& game, const SearchRequest& request);
// An answer the driver chose without a search (a book move, a single reply, no move at all), shown
// by the thinking line as a search of no nodes; as_depth_zero: at depth 0, not the last search's.
void show_unsearched_answer(Move m, int64_t start, bool as_depth_zero);
