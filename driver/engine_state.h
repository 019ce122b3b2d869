#pragma once
// What the driver keeps between commands, in four records: the protocol flags and options, the
// game's history, the clock inputs of the next search, and the book settings; with the game record
// and the shared input line beside them. The main thread owns them all; the flags the input
// watcher or the search threads read are relaxed atomics or are only changed while no search runs.
// Every field starts at its start-up value, so start-up and a reset (reset_engine_state) agree.

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

// The dialect, the modes, and the options the protocols and the console set.
struct ProtocolFlags {
    std::atomic<int> xboard_mode{0};
    std::atomic<int> uci_mode{0};
    int uci_done     = 0;
    int analyze_mode = 0;
    int force_mode   = 0;
    int searching    = 0;
    int pondering    = 0;
    std::atomic<int> input_ready{0};
    // The last analysis completed the deepest iteration: the next line dispatched only notes that.
    bool analysis_exhausted = false;
    // A ponder search may start: set by each regeneration of the legal moves, cleared when a
    // search ends and by "exit" and "?", so that one search is pondered at most once.
    bool ponder_ready = true;
    std::atomic<int> watcher_quit{0};
    // Thinking lines: on for a person at the console, off from "xboard" on until the GUI sends "post".
    int post          = 1;
    int ponder        = 0;
    int display_depth = 0;
    int ping_pending  = 0;
    bool uci_quit     = false; // "quit" arrived during a search: the UCI loop ends after it
    // Taken off every clock budget for the time the answer takes to reach the GUI's clock.
    int32_t move_overhead = DEFAULT_MOVE_OVERHEAD;
    int32_t multipv       = 1; // UCI MultiPV: lines searched and shown
    int cores             = 0;
    int trace = -1, xtrace = 0;
    // The game is Chess960 ("variant fischerandom" until "new", or UCI_Chess960): castling is
    // written as the king taking its rook (O-O and O-O-O to xboard), FEN KQkq read as X-FEN.
    bool chess960 = false;
};

// The game so far: its moves and the positions before them, and the legal moves of the position now.
struct GameHistory {
    int ply       = 0;
    int game_over = 0;
    MoveList legal_moves{};
    uint32_t legal_count = 0;
    Move single_reply    = 0;
    Move move_history[GAME_HISTORY]{};
    Position position_history[GAME_HISTORY]{};
};

// The clock of the last timed search against what the GUI reports next: the difference, beyond the
// search itself, is the time each move loses on its way to the GUI and back (the lag).
struct ClockRecord {
    int32_t time_left   = 0;     // the clock the last timed search was planned on, ms (0: none)
    int32_t spent       = 0;     // what that search took by our own clock, ms
    int32_t moves_to_go = 0;     // its moves to the control (after the last one the clock is refilled)
    bool fresh          = false; // the GUI has reported the clock since that search
    int32_t lag         = 0;     // the lag measured, decaying slowly, ms
};

// What the next search is given: the clock, the control, a depth or move time, and UCI's "go"
// beyond the clock (search until "stop", ponder until "ponderhit", the node and mate limits, and
// the root moves the search may choose from; none: all).
struct ClockInputs {
    int32_t time_left = 0, increment = 0, moves_to_go = 0, level_moves = 0, depth_limit = 0, move_time = 0;
    // The depth limit an analysis replaced with its own; the console gives it back at the end.
    int32_t depth_before_analysis = 0;
    bool go_infinite = false, go_ponder = false;
    int64_t go_nodes      = 0;
    int32_t go_mate       = 0;
    int32_t go_move_count = 0;
    Move go_moves[MAX_MOVES]{};
    ClockRecord measured;

    // A UCI "go" starts from nothing but the lag measured in the game and the control's length.
    void clear_request();
};

struct BookSettings {
    int mode        = 0;
    FILE* file      = nullptr;
    char name[1024] = "book.bin";
    int pickbest = 0, random = 0, depth = 0;
};

extern ProtocolFlags protocol;
extern GameHistory game_history;
extern ClockInputs clock_inputs;
extern BookSettings book_settings;
extern SearchThread* game_record; // slot 0 is the game position
extern char input_line[INPUT_SIZE];

// Every record back to its start-up value (the book file is not closed; the game record stays).
void reset_engine_state();
