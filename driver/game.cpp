// The game driver: keeps the legal moves of the game position, plays received moves, lets the
// engine answer (book, single reply or search through think), records the game, ponders and
// analyses. Every game move goes through record_move so the histories can never overflow.

#include "driver/game.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "board/makemove.h"
#include "board/notation.h"
#include "board/playable.h"
#include "driver/book.h"
#include "driver/control.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "platform/platform.h"
#include "search/output.h"
#include "search/threads.h"

// When the engine began to handle the current move request.
static int64_t think_start;

// Appends the move to the game's histories and plays it on the game record. False, after the
// overflow message, when the game is too long to record it: the program then ends.
[[nodiscard]] static bool record_move(SearchThread& game, Move m) {
    // The guard keeps the histories and the key history (game plus a whole search) in bounds.
    if (game_history.ply > MAX_GAME_PLY) {
        std::puts("ERROR (Overflow)");
        return false;
    }
    const Position& before = *game.pos;
    ++game_history.ply;
    game_history.move_history[game_history.ply]     = m;
    game_history.position_history[game_history.ply] = before;
    // Black's move completes a move of the time control.
    if (clock_inputs.moves_to_go != 0 && before.side == BLACK && --clock_inputs.moves_to_go == 0)
        clock_inputs.moves_to_go = clock_inputs.level_moves;
    commit_move(game, m);
    return true;
}

LoopStep received_move(SearchThread& game, const char* line) {
    // Only the first five characters matter; nothing after the line's end is looked at.
    char text[6] = {};
    for (int i = 0; i < 5 && line[i] != '\0'; ++i)
        text[i] = line[i];
    const Move word = find_legal_text(*game.pos, text) & MOVE_WORD_BITS;
    if (word == 0) {
        std::printf("Illegal move: %s\n", line);
        return LoopStep::read;
    }
    std::printf("#move_number = %d   %s%d%s\n", game_history.ply, "(", (game_history.ply + 3) / 2, ")");
    if (!record_move(game, word)) return LoopStep::quit;
    if (protocol.force_mode) return LoopStep::regenerate;

    const int was_over    = game_history.game_over;
    Move only             = 0;
    const uint32_t passed = fill_legal_moves(*game.pos, only);
    if (game_history.legal_count == 0) {
        no_legal_move();
        return LoopStep::read;
    }
    if (was_over) return LoopStep::read;
    if (passed == 0) {
        // Mated or stalemated: the search still runs and reports no move.
        no_legal_move();
    } else {
        game_history.single_reply = passed == 1 ? only : 0;
    }
    return engine_thinks(game);
}

// After the engine's answer (searched or not). line_held: an XBoard analysis was ended by a line
// that waits in input_line.
static LoopStep after_move(SearchThread& game, Move best, bool line_held) {
    protocol.searching = 0;
    if (game_history.game_over) {
        std::puts("tellics kibitz Good Game!");
        // A line that ended an analysis of the finished game is still to be carried out.
        return line_held ? LoopStep::redispatch : LoopStep::read;
    }
    // Counted before the move is played into the game, which makes a move of its own.
    const uint64_t nodes = nodes_searched.load(std::memory_order_relaxed);
    if (!protocol.analyze_mode) {
        if ((best & SQUARE_BITS) != 0 && !record_move(game, best)) return LoopStep::quit;
    }
    double elapsed = static_cast<double>(get_ms() - think_start) / 1000.0;
    if (elapsed == 0.0) elapsed = 1.0;
    if (!protocol.xboard_mode) {
        std::printf("elap: %1.6f\n", elapsed);
        std::printf("Total Nodes=%" PRId64 " nps: %d\n", static_cast<int64_t>(nodes),
                    static_cast<int>(static_cast<double>(nodes) / elapsed));
    }
    if (!protocol.analyze_mode) return LoopStep::regenerate;
    // The line that ended the analysis waits in the shared buffer. An analysis that completed the
    // deepest iteration goes there too, where the loop's reset rule takes it; one that ended at a
    // lower limit ("sd" during analysis) left nothing new, and the line it would find has been
    // handled already: dispatching it again would restart the same analysis for ever.
    if (protocol.xboard_mode)
        return line_held || protocol.analysis_exhausted ? LoopStep::redispatch : LoopStep::read;
    protocol.analyze_mode    = 0;
    clock_inputs.depth_limit = clock_inputs.depth_before_analysis;
    return LoopStep::read;
}

// A search for the engine's move or an analysis.
static LoopStep search_and_answer(SearchThread& game) {
    protocol.force_mode = 0;
    protocol.searching  = 1;
    if (!protocol.xboard_mode) std::puts("depth score time nodes pv");
    const SearchOutcome outcome = think(game, search_request(false));
    protocol.ponder_ready       = false;
    protocol.analysis_exhausted = protocol.analyze_mode && outcome.exhausted;
    return after_move(game, outcome.best, outcome.line_held);
}

LoopStep engine_thinks(SearchThread& game) {
    think_start = get_ms();
    nodes_searched.store(0, std::memory_order_relaxed);
    protocol.analysis_exhausted = false;

    if (!position_playable(*game.pos) && !protocol.analyze_mode) {
        // Nothing to search: answered as a position without a legal move. An analysis goes on to
        // think, which waits there for the line that ends it.
        show_unsearched_answer(0, think_start, false);
        if (!protocol.pondering) std::printf("move %s\n", move_text(0));
        return after_move(game, 0, false);
    }
    if (book_settings.mode) {
        const Move m = book_probe(game);
        // In analysis a book move is only listed (by the probe) and the position is searched.
        if (m != 0 && !protocol.analyze_mode) {
            std::printf("move %s\n", xboard_move_text(*game.pos, m));
            show_unsearched_answer(m, think_start, false);
            if (protocol.post) print_thinking();
            return after_move(game, m, false);
        }
    }
    if (game_history.single_reply != 0 && !protocol.analyze_mode && !protocol.pondering) {
        show_unsearched_answer(game_history.single_reply, think_start, true);
        if (protocol.post) print_thinking();
        std::printf("move %s\n", xboard_move_text(*game.pos, game_history.single_reply));
        return after_move(game, game_history.single_reply, false);
    }
    return search_and_answer(game);
}

bool ponder_check(SearchThread& game, int last_result) {
    if (last_result == CMD_POSITION || game_history.ply <= 1) return false;
    if (!protocol.ponder || protocol.force_mode || game_history.game_over || !protocol.ponder_ready)
        return false;
    if (!protocol.xboard_mode) std::puts("#pondering ...");
    const int post     = protocol.post;
    protocol.searching = 1;
    protocol.pondering = 1;
    think(game, search_request(true));
    protocol.pondering = 0;
    protocol.searching = 0;
    protocol.post      = post;
    if (!protocol.xboard_mode) std::puts("#ponder complete");
    // Nothing starts another ponder search before the next regeneration.
    protocol.ponder_ready = false;
    return true;
}
