#pragma once
// The one process-wide record of driver settings and game state: dialect flags, modes, the game's
// move and position histories, clock inputs and book settings. The main thread owns it; the flags
// the input watcher or the search threads read are relaxed atomics or are only changed while no
// search runs.

#include <atomic>
#include <cstdint>
#include <cstdio>

#include "board/types.h"
#include "search/thread.h"

constexpr int CMD_NONE = 0, CMD_DONE = 1, CMD_POSITION = 2, CMD_FORCE = 3;
constexpr int INPUT_SIZE            = 2048;
constexpr int GAME_HISTORY          = 1024;
constexpr int MAX_GAME_PLY          = 768;
constexpr int DEFAULT_MOVE_OVERHEAD = 50; // ms

// The clock of the last timed search against what the GUI reports next: the difference, beyond the
// search itself, is the time each move loses on its way to the GUI and back (the lag).
struct ClockRecord {
    int32_t time_left   = 0;     // the clock the last timed search was planned on, ms (0: none)
    int32_t spent       = 0;     // what that search took by our own clock, ms
    int32_t moves_to_go = 0;     // its moves to the control (after the last one the clock is refilled)
    bool fresh          = false; // the GUI has reported the clock since that search
    int32_t lag         = 0;     // the lag measured, decaying slowly, ms
};

struct EngineState {
    std::atomic<int> xboard_mode;
    std::atomic<int> uci_mode;
    int uci_done;
    int analyze_mode;
    int force_mode;
    int game_over;
    int ply;
    MoveList legal_moves;
    uint32_t legal_count;
    Move single_reply;
    int searching;
    int pondering;
    std::atomic<int> input_ready;
    int held_line; // engine.line holds a line that ended an analysis and is still to be dispatched
    std::atomic<int> watcher_quit;
    int post;
    int ponder;
    int display_depth;
    int ping_pending;
    int32_t time_left, increment, moves_to_go, level_moves, depth_limit, move_time;
    // UCI "go" beyond the clock: search until "stop", ponder until "ponderhit", the node and mate
    // limits, and the root moves the search may choose from (none: all).
    bool go_infinite, go_ponder;
    int64_t go_nodes;
    int32_t go_mate;
    int32_t go_move_count;
    Move go_moves[MAX_MOVES];
    bool uci_quit; // "quit" arrived during a search: the UCI loop ends after it
    // Taken off every clock budget for the time the answer takes to reach the GUI's clock.
    int32_t move_overhead = DEFAULT_MOVE_OVERHEAD;
    int32_t multipv       = 1; // UCI MultiPV: lines searched and shown
    ClockRecord clock;
    int cores;
    int trace, xtrace;
    int book_mode;
    FILE* book_file;
    char book_name[1024];
    int pickbest, book_random, bookdepth;
    Move move_history[GAME_HISTORY];
    Position position_history[GAME_HISTORY];
    SearchThread* game;    // the game record: slot 0 is the game position
    char line[INPUT_SIZE]; // the shared input line
};
extern EngineState engine;
