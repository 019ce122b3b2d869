// Console and diagnostic words: what a person at a terminal uses to look at and test the engine.
// Nothing here runs while a search does, except "bk", which analysis may hand over.

#include "driver/console.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "board/castling.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "board/perft.h"
#include "board/playable.h"
#include "driver/book.h"
#include "driver/display.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "driver/tokens.h"
#include "eval/report.h"
#include "eval/tables.h"
#include "platform/platform.h"
#include "search/threads.h"
#include "search/tt.h"

int cmd_beep(SearchThread&) {
    return protocol.xboard_mode;
}

// Loads the bench position named by the argument (1..6) and shows the game position.
int cmd_bench(SearchThread& game) {
    if (!has_argument()) {
        std::puts("Usage: Bench <test number 1 - 6 >");
    } else {
        const int n = int_argument();
        if (n >= 1 && n <= 6) {
            setboard(game, bench_positions[n - 1]);
            new_game(game);
        }
        show_board(game.pos->board);
    }
    savepos(*game.pos);
    return CMD_POSITION;
}

int cmd_bk(SearchThread& game) {
    print_book_listing(game);
    return protocol.xboard_mode;
}

int cmd_bogus(SearchThread&) {
    return protocol.xboard_mode;
}

int cmd_cls(SearchThread&) {
    clear_screen();
    return CMD_DONE;
}

int cmd_display(SearchThread&) {
    if (has_argument()) {
        protocol.display_depth = int_argument();
        std::printf("Display minimum depth %d\n", protocol.display_depth);
    } else {
        std::puts("usage:  display <PV minimum depth>");
        protocol.display_depth = 0;
    }
    return CMD_DONE;
}

int cmd_d(SearchThread& game) {
    show_board(game.pos->board);
    return CMD_DONE;
}

int cmd_eval(SearchThread& game) {
    if (!protocol.searching && !protocol.pondering) eval_report(*game.pos);
    return CMD_DONE;
}

// Clears the game record and rebuilds slot 0 from a placement, keeping the given state fields.
static void rebuild_game_position(SearchThread& game, const uint8_t board[64], uint8_t side, uint8_t epsq,
                                  uint8_t cflag, const uint8_t castle_rook[4], uint8_t chess960,
                                  uint8_t phase) {
    std::memset(static_cast<void*>(&game), 0, sizeof game);
    game.pos    = &game.stack[0];
    Position& p = *game.pos;
    for (int sq = 0; sq < 64; ++sq) {
        const uint8_t code = board[sq];
        p.board[sq]        = code;
        if (code == EMPTY) continue;
        p.colour_bb[piece_colour(code)] |= bit(sq);
        if (piece_type(code) == KING)
            (piece_colour(code) == WHITE ? p.wking : p.bking) = static_cast<uint8_t>(sq);
        else
            p.type_bb[piece_type(code)] |= bit(sq);
    }
    p.side     = side;
    p.epsq     = epsq;
    p.cflag    = cflag;
    p.chess960 = chess960;
    for (int i = 0; i < 4; ++i)
        p.castle_rook[i] = castle_rook[i];
    p.phase = phase;
    new_game(game);
    pawn_key(p);
    pst_init(p);
    set_pins(p);
    show_board(p.board);
}

static bool inside_ep_ranks(int sq) {
    return sq >= 8 && sq < 56;
}

int cmd_flip(SearchThread& game) {
    const Position old = *game.pos;
    uint8_t board[64];
    for (int sq = 0; sq < 64; ++sq) {
        const uint8_t code = old.board[sq];
        board[sq ^ 56]     = code == EMPTY ? EMPTY : static_cast<uint8_t>(code ^ 8);
    }
    const uint8_t epsq = inside_ep_ranks(old.epsq) ? static_cast<uint8_t>(old.epsq ^ 56) : old.epsq;
    // Exchange the white and black castling rights.
    const uint8_t cflag =
        static_cast<uint8_t>(((old.cflag & CASTLE_WHITE) << 2) | ((old.cflag & CASTLE_BLACK) >> 2));
    const uint8_t rooks[4] = {
        static_cast<uint8_t>(old.castle_rook[2] ^ 56), static_cast<uint8_t>(old.castle_rook[3] ^ 56),
        static_cast<uint8_t>(old.castle_rook[0] ^ 56), static_cast<uint8_t>(old.castle_rook[1] ^ 56)};
    rebuild_game_position(game, board, static_cast<uint8_t>(old.side ^ 1), epsq, cflag, rooks, old.chess960,
                          old.phase);
    return CMD_POSITION;
}

int cmd_flop(SearchThread& game) {
    const Position old = *game.pos;
    // Castling rights do not survive exchanging the king and queen sides.
    if (old.cflag != 0) {
        show_board(old.board);
        return CMD_POSITION;
    }
    uint8_t board[64];
    for (int sq = 0; sq < 64; ++sq)
        board[sq ^ 7] = old.board[sq];
    const uint8_t epsq = inside_ep_ranks(old.epsq) ? static_cast<uint8_t>(old.epsq ^ 7) : old.epsq;
    rebuild_game_position(game, board, old.side, epsq, 0, standard_castle_rook, old.chess960, old.phase);
    return CMD_POSITION;
}

int cmd_help(SearchThread&) {
    if (protocol.xboard_mode) return CMD_DONE;
    std::fputs(" Morvaine v2 Commands\n"
               " --------------------------\n"
               " analyze   - continuous\n"
               " book      - change book mode\n"
               " cores []  - CPU's\n"
               " display   - PV depth\n"
               " go        - start engine thinking\n"
               " hash []   - size in Mb\n"
               " new       - new game, default\n"
               " ponder    - on/off\n"
               " quit      - exit\n"
               " undo []   - undo last move[s]\n\n"
               "xboard commands: [default mode]\n"
               " sd, level, setboard, ics, etc.\n"
               "uci commands: [Type \"uci\" to enter uci mode]\n\n"
               "Debug and console commands:\n"
               " bench[b ] - bench test number\n"
               " black     - black to move\n"
               " white     - white to move\n"
               " d         - display board\n"
               " dhash     - display hashing statistics\n"
               " eval      - assess root position\n"
               " flip      - invert board\n"
               " flop      - mirror board\n"
               " list      - display list of possible moves\n"
               " list game - list game\n"
               " perft []  - performance test [depth]\n"
               " savepos   - display FEN position\n",
               stdout);
    return CMD_DONE;
}

int cmd_list(SearchThread& game) {
    const Position& p = *game.pos;
    std::fputs(" #  Move   Value  Capture  mv:", stdout);
    for (uint32_t i = 0; i < game_history.legal_count; ++i) {
        Move& m = game_history.legal_moves.moves[i];
        if (!legal(p, m)) {
            std::printf("# %s illegal\n", move_text(m));
            m = 0;
        }
        std::printf("\n%2d  %2s %6d %6d %u", static_cast<int>(i + 1), move_text(m), static_cast<int>(m >> 16),
                    p.board[move_to(m)], m & MOVE_WORD_BITS);
    }
    std::putchar('\n');
    return CMD_DONE;
}

int cmd_list_game(SearchThread&) {
    for (int n = 1; n <= game_history.ply; ++n) {
        if (n % 2 == 1)
            std::printf("%d.%s ", (n - 1) / 2 + 1, move_text(game_history.move_history[n]));
        else
            std::printf("%s ", move_text(game_history.move_history[n]));
    }
    std::putchar('\n');
    return CMD_DONE;
}

int cmd_dhash(SearchThread&) {
    hash_stats(thread_count());
    return CMD_DONE;
}

// The console command: resets the totals, times the run and prints the four total lines.
static void perft_command(PositionStack& game, int depth) {
    // Every ply needs a stack slot and a key-history entry beyond the current ones.
    const int slots = STACK_SIZE - 1 - static_cast<int>(game.pos - game.stack);
    const int keys  = KEY_HISTORY - 1 - static_cast<int>(game.histidx);
    const int room  = slots < keys ? slots : keys;
    if (depth < 1 || depth > room) {
        std::printf("usage: perft <maxply>\n");
        return;
    }
    perft_totals        = PerftTotals{};
    const int64_t start = get_ms();
    // A position no game can reach (two kings of a colour, a capturable king...) has nothing the
    // generators could count safely: its totals stay 0.
    if (position_playable(*game.pos)) perft(game, depth);
    const double seconds   = static_cast<double>(get_ms() - start) / 1000.0;
    const PerftTotals& tot = perft_totals;
    std::printf(" total moves = %" PRId64 " time = %.6f\n", tot.moves, seconds);
    std::printf(" total captures %" PRId64 "\ttotal en passant %" PRId64 "\n", tot.captures + tot.en_passant,
                tot.en_passant);
    std::printf(" total castles  %" PRId64 "\ttotal checks %" PRId64 "\n", tot.castles, tot.checks);
    std::printf(" total promotes %" PRId64 "\ttotal checkmates %" PRId64 "\n", tot.promotes, tot.checkmates);
}

int cmd_perft(SearchThread& game) {
    if (!has_argument()) {
        std::puts("usage: perft <depth>");
        return CMD_DONE;
    }
    const int depth = int_argument();
    if (depth < 1) {
        std::puts("usage: perft <maxply>");
        return CMD_DONE;
    }
    perft_command(game, depth);
    return CMD_DONE;
}

int cmd_ponder(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: ponder off|on");
    } else if (std::strcmp(input_line, "ponder on") == 0 || std::strcmp(tokens[1], "1") == 0) {
        protocol.ponder = 1;
        std::puts("pondering enabled");
    } else if (std::strcmp(input_line, "ponder off") == 0 || std::strcmp(tokens[1], "0") == 0) {
        protocol.ponder = 0;
        std::puts("pondering disabled");
    }
    return CMD_DONE;
}

int cmd_savepos(SearchThread& game) {
    savepos(*game.pos);
    return CMD_DONE;
}

int cmd_trace(SearchThread&) {
    if (has_argument()) {
        protocol.trace = int_argument();
        std::printf("Trace = %d\n", protocol.trace);
        return CMD_DONE;
    }
    std::puts("usage: trace <display to depth>");
    if (protocol.trace == 0) {
        protocol.trace = 32;
        std::printf("Trace On = %d\n", protocol.trace);
    } else {
        protocol.trace = -1;
        std::puts("Trace Off");
    }
    return CMD_DONE;
}

int cmd_xtrace(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: xtrace <display @ depth>");
        return CMD_DONE;
    }
    if (protocol.xtrace == 0) {
        protocol.xtrace = int_argument();
        std::printf("xTrace = %d\n", protocol.xtrace);
    } else {
        protocol.xtrace = -1;
        std::puts("xTrace Off");
    }
    return CMD_DONE;
}
