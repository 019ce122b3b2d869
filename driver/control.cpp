#include "driver/control.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "board/fen.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "board/playable.h"
#include "driver/book.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "driver/shutdown.h"
#include "driver/timeman.h"
#include "driver/uci_input.h"
#include "eval/tables.h"
#include "platform/platform.h"
#include "search/output.h"
#include "search/tablebase.h"
#include "search/threads.h"
#include "search/tt.h"

constexpr int POLL_MS = 2;

// The search in progress: what it was asked, and how it is to end. A stop asked for (by the clock,
// the input, "stop" or "quit") waits until the first iteration is complete: that takes
// microseconds, and its move is a searched one, never just the first legal move. A UCI answer
// waits for "stop" or "ponderhit" (go infinite, go ponder); a ponder search gets its clock limits
// at the ponderhit.
struct RunningSearch {
    const SearchRequest* request = nullptr;
    bool stop_wanted             = false;
    SearchEnd stop_reason        = SearchEnd::depth;
    bool line_held               = false; // XBoard analysis: the line that ended it is in input_line
    bool answer_held             = false;
    bool ponder_until_hit        = false;
    TimeAllotment limits_at_ponderhit{};
};
static RunningSearch running;

// The first reason given is the one reported.
static void request_stop(SearchEnd why) {
    if (!running.stop_wanted) running.stop_reason = why;
    running.stop_wanted = true;
}

// The answer to "." during analysis: time, nodes, depth, moves left to search at the root, and
// the root move being searched.
static void print_status_line() {
    // Thread 0 may be printing through move_text's shared buffer at this very moment.
    char move[MOVE_TEXT_SIZE];
    write_move(move, sc.root_move.load(std::memory_order_relaxed));
    const int centis = static_cast<int>((get_ms() - sc.search_start) / 10);
    const int left =
        static_cast<int>(game_history.legal_count) - sc.root_move_index.load(std::memory_order_relaxed);
    char text[160];
    std::snprintf(text, sizeof text, "stat01: %d %" PRId64 " %d %d %d %s\n", centis,
                  static_cast<int64_t>(total_nodes()), sc.best_depth.load(std::memory_order_relaxed), left,
                  static_cast<int>(game_history.legal_count), move);
    std::fputs(text, stdout);
    std::fflush(stdout);
}

// XBoard analysis: the line that arrived is read now. "." and "bk" are answered without leaving
// the analysis; any other line ends it and stays in input_line for the command loop.
static void analysis_input(SearchThread& game) {
    if (!read_line(input_line, INPUT_SIZE)) {
        // The threads must be gone before the process ends under them.
        sc.stop.store(1, std::memory_order_relaxed);
        join_search();
        end_of_input();
    }
    input_line[std::strcspn(input_line, "\r\n")] = '\0';
    if (std::strcmp(input_line, ".") == 0) {
        if (protocol.post) print_status_line();
    } else if (std::strcmp(input_line, "bk") == 0) {
        print_book_listing(game);
    } else {
        running.line_held = true;
        request_stop(SearchEnd::input);
    }
}

static void input_check(SearchThread& game) {
    const SearchRequest& rq = *running.request;
    if (rq.dialect == Dialect::xboard) {
        if (!protocol.input_ready.load(std::memory_order_relaxed)) return;
        protocol.input_ready.store(0, std::memory_order_relaxed);
        // The watcher may have seen a line that the command loop read just before this search
        // began; only input still waiting (or the end of it) counts.
        if (!input_pending()) return;
        // Outside analysis the line stays unread: the command loop takes it after the move.
        if (rq.analysis)
            analysis_input(game);
        else
            request_stop(SearchEnd::input);
    } else if (rq.dialect == Dialect::console && rq.analysis) {
        if (key_waiting()) {
            const int c = read_key();
            std::printf("#interupt abort kbhit %c\n", c);
            request_stop(SearchEnd::input);
        } else if (!input_is_console() && input_pending()) {
            // Console lines through a pipe have no keyboard behind them: a waiting line (or the
            // end of the input) ends the analysis instead and is left for the loop to read.
            request_stop(SearchEnd::input);
        }
    }
}

static void stop_now() {
    std::lock_guard<std::mutex> hold(sc.search_lock);
    sc.stop.store(1, std::memory_order_relaxed);
}

// UCI during a search: the commands answered at once are taken out of the waiting input; every
// other line waits for the search to end. Lines behind a waiting "go" belong to that next search.
static void uci_search_input() {
    static const char* const words[] = {"stop", "ponderhit", "isready", "quit"};
    std::string line;
    while (uci_input_take(words, 4, "go", line)) {
        auto is = [&](const char* word) { return line.compare(0, std::strlen(word), word) == 0; };
        if (is("stop")) {
            running.answer_held = running.ponder_until_hit = false;
            request_stop(SearchEnd::stop);
        } else if (is("ponderhit")) {
            if (!running.ponder_until_hit) continue;
            running.ponder_until_hit = false;
            apply_limits(running.limits_at_ponderhit, get_ms());
            running.answer_held = running.request->clock.go_infinite;
        } else if (is("isready")) {
            std::printf("readyok\n");
        } else {
            protocol.uci_quit   = true;
            running.answer_held = false;
            request_stop(SearchEnd::stop);
        }
    }
    // The input has ended: the GUI has gone, and the search ends as at "stop" and "quit". Commands
    // piped in ahead of the end with further searches among them are carried out first.
    if (!protocol.uci_quit && uci_input_ended("go")) {
        protocol.uci_quit   = true;
        running.answer_held = running.ponder_until_hit = false;
        request_stop(SearchEnd::stop);
    }
}

// The reply the answer expects: the variation's second move, or else (a variation cut short by the
// table) the table's move for the position after the best move, when it is legal there.
static Move expected_reply(const SearchThread& game, Move best) {
    if (sc.pv_table[0][1] != 0) return sc.pv_table[0][1];
    if ((best & SQUARE_BITS) == 0) return 0;
    // The search is over: thread 0's record is free to play the move on.
    SearchThread& r = search_record(0);
    prepare_record(r, game, 0);
    make_move(r, best);
    HashHit hit{};
    if (!hash_probe(r.key, 0, hit) || hit.move == 0) return 0;
    Move moves[MAX_MOVES];
    const uint32_t n = legal_moves(*r.pos, moves);
    for (uint32_t i = 0; i < n; ++i)
        if ((moves[i] & MOVE_WORD_BITS) == (hit.move & MOVE_WORD_BITS)) return moves[i];
    return 0;
}

// "bestmove", with the reply it expects when there is one.
static void print_bestmove(const SearchThread& game) {
    const Move best  = sc.pv_table[0][0];
    const Move reply = expected_reply(game, best);
    char text[8];
    std::strcpy(text, move_text(best));
    if (reply != 0)
        std::printf("bestmove %s ponder %s\n", text, move_text(reply));
    else
        std::printf("bestmove %s\n", text);
}

// The answer in the dialect's form: UCI gets the final info line and "bestmove"; the others get
// "move" unless the search was a ponder search or an analysis.
static void print_result(const SearchThread& game, const SearchRequest& rq) {
    const Move best = sc.pv_table[0][0];
    if (rq.dialect == Dialect::uci) {
        print_info();
        print_bestmove(game);
    } else if (!rq.pondering && !rq.analysis) {
        std::printf("move %s\n", xboard_move_text(*game.pos, best));
    }
}

// Whether this search is the engine's own move on a running clock.
static bool timed_move(const SearchRequest& rq) {
    return rq.clock.depth_limit <= 0 && rq.clock.move_time <= 0 &&
           (rq.clock.time_left > 0 || rq.clock.increment > 0) && !rq.pondering && !rq.analysis &&
           !rq.clock.go_ponder && !rq.clock.go_infinite;
}

// UCI: a search with no time limit at all, until its depth, nodes or mate are reached or "stop"
// (or "ponderhit") arrives; "go nodes" and "go mate" without a clock or move time are such too.
static bool open_ended(const SearchRequest& rq) {
    const bool clock = rq.clock.move_time > 0 || rq.clock.time_left > 0 || rq.clock.increment > 0;
    return rq.clock.go_infinite || rq.clock.go_ponder ||
           ((rq.clock.go_nodes > 0 || rq.clock.go_mate > 0) && !clock);
}

// What the search is for: analysis, pondering, the dialect of its progress lines; and what UCI's
// "go" asked beyond the clock: the root moves, lines, node and mate limits. Every other dialect
// searches every move, one line, without either limit.
static void set_search_kind(const SearchRequest& rq) {
    const bool uci     = rq.dialect == Dialect::uci;
    sc.analysis        = rq.analysis;
    sc.show_root       = rq.dialect == Dialect::xboard && rq.analysis;
    sc.pondering       = rq.pondering;
    sc.uci_output      = uci;
    sc.xboard_output   = rq.dialect == Dialect::xboard;
    sc.display_depth   = rq.display_depth;
    sc.root_move_count = uci ? rq.clock.go_move_count : 0;
    if (sc.root_move_count > 0)
        std::copy(rq.clock.go_moves, rq.clock.go_moves + rq.clock.go_move_count, sc.root_moves);
    sc.multipv     = uci ? rq.multipv : 1;
    sc.extra_lines = 0;
    sc.mate_limit  = rq.clock.go_mate;
    sc.node_limit  = rq.clock.go_nodes > 0
                         ? std::max<uint64_t>(static_cast<uint64_t>(rq.clock.go_nodes) / thread_count(), 1)
                         : UINT64_MAX;
}

SearchRequest search_request(bool pondering) {
    SearchRequest rq;
    rq.dialect   = protocol.uci_mode.load(std::memory_order_relaxed)      ? Dialect::uci
                   : protocol.xboard_mode.load(std::memory_order_relaxed) ? Dialect::xboard
                                                                          : Dialect::console;
    rq.analysis  = protocol.analyze_mode != 0;
    rq.pondering = pondering;
    // Without "post" no thinking line reaches the depth from which they are shown.
    rq.display_depth = protocol.post ? protocol.display_depth : NO_THINKING_LINES;
    rq.overhead      = protocol.move_overhead;
    rq.clock         = clock_inputs;
    rq.multipv       = protocol.multipv;
    return rq;
}

void show_unsearched_answer(Move m, int64_t start, bool as_depth_zero) {
    sc.pv_table[0][0] = m;
    sc.pv_table[0][1] = 0;
    sc.search_start   = start;
    sc.xboard_output  = protocol.xboard_mode != 0;
    if (as_depth_zero) sc.best_depth.store(0, std::memory_order_relaxed);
    for (int i = 0; i < thread_count(); ++i)
        set_thread_nodes(search_record(i), 0);
}

SearchOutcome think(SearchThread& game, const SearchRequest& rq) {
    const bool uci   = rq.dialect == Dialect::uci;
    const bool timed = timed_move(rq);
    if (timed) measure_lag(rq.clock.time_left, rq.clock.increment);
    reset_search_state();
    running         = RunningSearch{};
    running.request = &rq;
    // An analysis runs until it is told to end: a time per move set for games does not apply.
    const int move_time = rq.analysis ? 0 : rq.clock.move_time;
    TimeAllotment ta = compute_limits(rq.clock.depth_limit, move_time, rq.clock.time_left, rq.clock.increment,
                                      rq.clock.moves_to_go, rq.overhead, clock_inputs.measured.lag);
    running.answer_held         = uci && (rq.clock.go_infinite || rq.clock.go_ponder);
    running.ponder_until_hit    = uci && rq.clock.go_ponder;
    running.limits_at_ponderhit = ta;
    const int depth_asked       = rq.clock.depth_limit > 0 ? ta.max_depth : MAX_DEPTH;
    if (uci && open_ended(rq)) {
        ta.hard_limit      = NO_HARD_LIMIT;
        ta.max_depth       = depth_asked;
        ta.set_time_limits = true;
        std::fill(std::begin(ta.time_limits), std::end(ta.time_limits), 0);
    }
    // A ponder search runs until the opponent's move arrives, whatever the clock.
    if (rq.pondering) {
        ta.limit_depth = NO_TIME_LIMIT_DEPTH;
        ta.max_depth   = depth_asked;
    }
    sc.max_depth    = ta.max_depth;
    sc.search_start = get_ms();
    apply_limits(ta, sc.search_start);
    set_search_kind(rq);
    tb_prepare_search(game);
    pst_init(*game.pos);
    Move fallback       = 0;
    const bool searched = position_playable(*game.pos);
    if (searched) {
        Move moves[MAX_MOVES];
        if (legal_moves(*game.pos, moves) > 0)
            fallback = sc.root_move_count > 0 ? sc.root_moves[0] : moves[0];
        start_search(game);
    } else {
        // Nothing is searched: the answer is no move, with no nodes counted. An XBoard analysis
        // still waits for the line that ends it, as it would beside a search; all else ends now.
        std::memset(sc.pv_table[0], 0, sizeof sc.pv_table[0]);
        for (int i = 0; i < thread_count(); ++i) {
            set_thread_nodes(search_record(i), 0);
            search_record(i).seldepth = 0;
        }
        if (rq.dialect != Dialect::xboard || !rq.analysis) sc.stop.store(1, std::memory_order_relaxed);
    }

    while (!sc.stop.load(std::memory_order_relaxed)) {
        {
            std::lock_guard<std::mutex> hold(sc.search_lock);
            sc.elapsed = static_cast<double>(get_ms() - sc.clock_start.load(std::memory_order_relaxed));
            if (sc.elapsed >= static_cast<double>(sc.hard_limit) &&
                sc.best_depth.load(std::memory_order_relaxed) >=
                    sc.limit_depth.load(std::memory_order_relaxed))
                request_stop(SearchEnd::clock);
        }
        // Once a line has asked for the stop, the lines behind it wait for the command loop: read
        // now, the next one would take the place of the line held in input_line.
        if (uci)
            uci_search_input();
        else if (!running.stop_wanted)
            input_check(game);
        if (running.stop_wanted && (!searched || sc.completed_depth.load(std::memory_order_relaxed) >= 1))
            stop_now();
        // Once stopped, the threads are joined at once: a nap would only delay the answer.
        if (!sc.stop.load(std::memory_order_relaxed)) sleep_ms(POLL_MS);
    }
    join_search();
    // A search of "go infinite" or "go ponder" that ended by itself still answers only when told.
    while (running.answer_held) {
        uci_search_input();
        if (running.answer_held) sleep_ms(POLL_MS);
    }
    // A search stopped before its first iteration had a best move answers the fallback, and the
    // game plays it: any legal move beats none.
    if ((sc.pv_table[0][0] & SQUARE_BITS) == 0) {
        sc.pv_table[0][0] = fallback;
        sc.pv_table[0][1] = 0;
    }
    print_result(game, rq);
    if (timed)
        note_timed_move(rq.clock.time_left, rq.clock.moves_to_go,
                        static_cast<int32_t>(get_ms() - sc.search_start));
    SearchOutcome outcome;
    outcome.end             = running.stop_wanted ? running.stop_reason : SearchEnd::depth;
    outcome.best            = sc.pv_table[0][0];
    outcome.completed_depth = sc.completed_depth.load(std::memory_order_relaxed);
    outcome.line_held       = running.line_held;
    outcome.exhausted       = outcome.end == SearchEnd::depth && outcome.completed_depth >= MAX_DEPTH;
    running.request         = nullptr;
    return outcome;
}
