// The command interpreter: FEN lines, folding, splitting, comments, and the one dispatch table of
// the XBoard protocol words, the console words (console.cpp) and the book words. A word's usage
// line sits in its handler. Handlers return CMD_DONE unless the position changed (CMD_POSITION)
// or the word is one the loop must see (CMD_NONE, CMD_FORCE).

#include "driver/commands.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "board/castling.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/playable.h"
#include "driver/book.h"
#include "driver/console.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "driver/tablebases.h"
#include "driver/tokens.h"
#include "driver/uci.h"
#include "driver/version.h"
#include "driver/watcher.h"
#include "search/threads.h"
#include "search/tt.h"

static constexpr int MAX_SEARCH_DEPTH = 120;

void take_back(SearchThread& game, int n) {
    for (int taken = 0; taken < n && game_history.ply > 0; ++taken) {
        *game.pos = game_history.position_history[game_history.ply];
        // A position set up from FEN mid-game restarted the key history; never step below it.
        if (game.histidx > 0) {
            --game.histidx;
            game.key = game.keyhist[game.histidx];
        } else {
            game.key        = full_key(*game.pos);
            game.keyhist[0] = game.key;
        }
        --game_history.ply;
    }
    game_history.game_over = 0;
}

// The side to move is part of the key and of the pin and check fields: keep them consistent.
static void set_side(SearchThread& game, int side) {
    Position& p = *game.pos;
    p.side      = static_cast<uint8_t>(side);
    // An en-passant square belongs to the side that was to move; the other side cannot use it.
    drop_unusable_rights(p);
    game.key                   = full_key(p);
    game.keyhist[game.histidx] = game.key;
    set_pins(p);
}

static int cmd_nothing(SearchThread&) {
    return CMD_DONE;
}

static int cmd_analyze(SearchThread&) {
    if (!protocol.analyze_mode) clock_inputs.depth_before_analysis = clock_inputs.depth_limit;
    clock_inputs.depth_limit = 99;
    protocol.force_mode      = 0;
    protocol.analyze_mode    = 1;
    return CMD_DONE;
}

static int cmd_back(SearchThread& game) {
    int n = has_argument() ? int_argument() : 1;
    if (n < 1) {
        game_history.game_over = 0;
        return CMD_POSITION;
    }
    take_back(game, n);
    return CMD_POSITION;
}

static int cmd_white(SearchThread& game) {
    set_side(game, WHITE);
    protocol.force_mode = 0;
    return CMD_POSITION;
}

static int cmd_black(SearchThread& game) {
    set_side(game, BLACK);
    protocol.force_mode = 0;
    return CMD_POSITION;
}

static int cmd_book(SearchThread&) {
    if (!has_argument() || std::strcmp(tokens[1], "help") == 0 || std::strcmp(tokens[1], "?") == 0) {
        std::puts("usage:  Book 0  - no book");
        std::puts("        Book 1  - PolyGlot book {best move}");
        std::printf("Current Book #  - %d\n", book_settings.mode);
    } else if (std::strcmp(tokens[1], "off") == 0 || std::strcmp(tokens[1], "0") == 0) {
        if (book_settings.file != nullptr) book_close();
        book_settings.mode = 0;
    } else {
        book_settings.mode = int_argument();
    }
    if (book_settings.mode != 0 && book_settings.file == nullptr) {
        book_close();
        if (book_open()) {
            book_settings.mode = 1;
            std::printf("found %s\n", book_settings.name);
        } else {
            std::printf("book_open: can't open %s\n", book_settings.name);
            book_settings.mode = 0;
        }
    }
    return CMD_DONE;
}

static int cmd_pickbest(SearchThread&) {
    set_from_argument(book_settings.pickbest, "usage: pickbest 0 or 1");
    return CMD_DONE;
}

static int cmd_bookdepth(SearchThread&) {
    set_from_argument(book_settings.depth, "usage: bookdepth <args> - default 48 half moves");
    std::printf("bookdepth=%d\n", book_settings.depth);
    return CMD_DONE;
}

static int cmd_bookname(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: bookname <file name>");
        std::printf("       current book %s\n", book_settings.name);
        return CMD_DONE;
    }
    book_close();
    // The name is quoted on the (already folded) line, so it may hold blanks and slashes.
    if (const char* open = std::strchr(input_line, '"')) {
        ++open;
        const char* close = std::strchr(open, '"');
        size_t len        = close != nullptr ? static_cast<size_t>(close - open) : std::strlen(open);
        if (len > sizeof book_settings.name - 1) len = sizeof book_settings.name - 1;
        std::memcpy(book_settings.name, open, len);
        book_settings.name[len] = '\0';
    }
    std::printf("book = %s\n", book_settings.name);
    return CMD_DONE;
}

static int cmd_book_random(SearchThread&) {
    set_from_argument(book_settings.random, "usage: book_random [move number]");
    std::printf("book_random=%d\n", book_settings.random);
    return CMD_DONE;
}

static int cmd_cores(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage:  cores <processors available>");
        return CMD_DONE;
    }
    set_threads(int_argument());
    protocol.cores = thread_count();
    std::printf("CPUs available %d\n", protocol.cores);
    return CMD_DONE;
}

static int cmd_easy(SearchThread&) {
    protocol.ponder = 0;
    std::puts("pondering disabled.");
    return CMD_DONE;
}

static int cmd_exit(SearchThread&) {
    if (protocol.analyze_mode) {
        protocol.analyze_mode    = 0;
        protocol.ponder_ready    = false;
        clock_inputs.depth_limit = 14;
        std::putchar('\n');
    }
    return CMD_DONE;
}

static int cmd_force(SearchThread&) {
    protocol.force_mode = 1;
    return protocol.xboard_mode ? CMD_FORCE : CMD_DONE;
}

static int cmd_hard(SearchThread&) {
    protocol.ponder = 1;
    std::puts("pondering enabled.");
    return CMD_DONE;
}

static int cmd_ics(SearchThread&) {
    if (!has_argument()) {
        std::puts("Usage: ICS <hostname>");
        return CMD_DONE;
    }
    if (std::strcmp(tokens[1], "-") != 0)
        std::printf("tellicsnoalias kibitz Hello from %s v%s %s%d cpus%s\n", ENGINE_NAME, VERSION, "(",
                    protocol.cores > 0 ? protocol.cores : 1, ")");
    return CMD_DONE;
}

// Clock values arrive from the GUI as they are; anything beyond the 32-bit milliseconds fields
// is held at their limits instead of overflowing.
static int32_t saturated(double ms) {
    if (!(ms > INT32_MIN)) return ms < 0 ? INT32_MIN : 0; // NaN counts as 0
    return ms < INT32_MAX ? static_cast<int32_t>(ms) : INT32_MAX;
}

static int cmd_level(SearchThread&) {
    if (token_count < 4) {
        std::puts("usage: level <nmoves> <stime> <inc>");
        return CMD_DONE;
    }
    int moves                = std::atoi(tokens[1]);
    clock_inputs.moves_to_go = moves;
    // Base time in minutes, optionally minutes:seconds.
    int64_t seconds = static_cast<int64_t>(std::atoi(tokens[2])) * 60;
    if (const char* colon = std::strchr(tokens[2], ':')) seconds += std::atoi(colon + 1);
    clock_inputs.time_left   = saturated(static_cast<double>(seconds) * 1000.0);
    clock_inputs.increment   = saturated(std::atof(tokens[3]) * 1000.0);
    clock_inputs.level_moves = moves != 0 ? moves : 1000;
    // A control replaces a fixed time per move: the last of "level" and "st" decides.
    clock_inputs.move_time = 0;
    return CMD_DONE;
}

static int cmd_memory(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: memory <size>");
        return CMD_DONE;
    }
    int mb = int_argument();
    if (mb >= 1) hash_alloc(mb);
    return CMD_DONE;
}

static int cmd_name(SearchThread&) {
    if (!has_argument()) std::puts("usage: name <name>");
    return CMD_DONE;
}

static int cmd_otim(SearchThread&) {
    if (!has_argument()) std::puts("usage: otime <time(unit=.01 secs)>");
    return CMD_DONE;
}

static int cmd_ping(SearchThread&) {
    protocol.ping_pending = has_argument() ? int_argument() : 0;
    return CMD_DONE;
}

static int cmd_post(SearchThread&) {
    protocol.post = 1;
    return CMD_DONE;
}

static int cmd_nopost(SearchThread&) {
    protocol.post = 0;
    return CMD_DONE;
}

static int cmd_protover(SearchThread&) {
    if (has_argument() && int_argument() == 2) {
        std::puts("feature ping=1 setboard=1 san=0 time=1 draw=0");
        std::puts("feature sigint=0 sigterm=0 reuse=0 analyze=1");
        std::puts("feature name=1 usermove=0");
        std::puts("feature playother=0 colors=0 memory=1 smp=1");
        std::puts("feature nps=0 ics=1 debug=1");
        std::puts("feature egt=\"syzygy\"");
        std::puts("feature variants=\"normal,fischerandom\"");
        std::puts("feature done=1");
    } else {
        std::puts("ERROR (bogus xboard protocol version received)");
    }
    return CMD_DONE;
}

// "variant fischerandom" makes the game a Chess960 game until "new"; "variant normal" ends it.
// Other variants are not offered, and their names change nothing.
static int cmd_variant(SearchThread& game) {
    if (token_count < 2) return CMD_DONE;
    if (std::strcmp(tokens[1], "fischerandom") == 0)
        protocol.chess960 = true;
    else if (std::strcmp(tokens[1], "normal") == 0)
        protocol.chess960 = false;
    else
        return CMD_DONE;
    set_castling_form(*game.pos, protocol.chess960);
    return CMD_POSITION;
}

static int cmd_result(SearchThread&) {
    if (has_argument()) game_history.game_over = 1;
    return CMD_DONE;
}

static int cmd_sd(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: sd <depth>");
        return CMD_DONE;
    }
    int depth                = int_argument();
    clock_inputs.depth_limit = depth > MAX_SEARCH_DEPTH ? MAX_SEARCH_DEPTH : depth;
    return CMD_DONE;
}

// A fixed time per move, in seconds (fractions too): each search ends by then, or sooner at the
// depth limit of "sd". "st 0" goes back to the clock.
static int cmd_st(SearchThread&) {
    if (!has_argument()) {
        std::puts("usage: st <seconds>");
        return CMD_DONE;
    }
    clock_inputs.move_time = std::max(saturated(std::atof(tokens[1]) * 1000.0), 0);
    return CMD_DONE;
}

static int cmd_time(SearchThread&) {
    if (!protocol.xboard_mode) return CMD_DONE;
    clock_inputs.time_left      = saturated((has_argument() ? int_argument() : 0) * 10.0);
    clock_inputs.measured.fresh = true;
    return CMD_DONE;
}

static int cmd_uci(SearchThread& game) {
    if (protocol.xboard_mode) return CMD_DONE;
    // The UCI loop reads stdin itself, so the watcher must end first; it is joined at once, so
    // that no way out of the program (a failed table allocation included) leaves it unjoined.
    protocol.watcher_quit = 1;
    join_input_watcher();
    protocol.uci_mode = 1;
    uci_loop(game);
    protocol.uci_done = 1;
    protocol.uci_mode = 0;
    return CMD_DONE;
}

static int cmd_undo(SearchThread& game) {
    int n = token_count == 2 ? int_argument() : 1;
    if (game_history.ply == 0) return CMD_POSITION;
    take_back(game, n);
    return CMD_POSITION;
}

static int cmd_xboard(SearchThread&) {
    if (!protocol.xboard_mode) {
        protocol.xboard_mode = 1;
        // A GUI asks for thinking lines with "post"; one that never does (or sends "nopost") must
        // not get them: some take any word that looks like a move for one.
        protocol.post = 0;
        std::putchar('\n');
    }
    return CMD_DONE;
}

// "?" (move now) arrives after the search it ended; no ponder search follows it.
static int cmd_query(SearchThread&) {
    protocol.ponder_ready = false;
    return CMD_DONE;
}

namespace {

struct Command {
    const char* word;
    bool whole_line; // compared with the whole folded line instead of the first token
    int (*handler)(SearchThread&);
};

// clang-format off
// The first match wins, so the order is part of the protocol.
constexpr Command commands[] = {
    {".",           false, cmd_nothing},
    {"accepted",    false, cmd_nothing},
    {"analyze",     false, cmd_analyze},
    {"back",        false, cmd_back},
    {"beep",        false, cmd_beep},
    {"bench",       false, cmd_bench},
    {"b",           false, cmd_bench},
    {"bk",          false, cmd_bk},
    {"white",       false, cmd_white},
    {"black",       false, cmd_black},
    {"bogus",       false, cmd_bogus},
    {"book",        false, cmd_book},
    {"pickbest",    false, cmd_pickbest},
    {"bookdepth",   false, cmd_bookdepth},
    {"bookname",    false, cmd_bookname},
    {"book_random", false, cmd_book_random},
    {"cls",         true,  cmd_cls},
    {"computer",    false, cmd_nothing},
    {"cores",       false, cmd_cores},
    {"display",     false, cmd_display},
    {"d",           true,  cmd_d},
    {"draw",        true,  cmd_nothing},
    {"easy",        false, cmd_easy},
    {"eval",        false, cmd_eval},
    {"exit",        false, cmd_exit},
    {"flag",        false, cmd_nothing},
    {"flip",        false, cmd_flip},
    {"flop",        false, cmd_flop},
    {"force",       false, cmd_force},
    {"hard",        false, cmd_hard},
    {"help",        false, cmd_help},
    {"ics",         false, cmd_ics},
    {"level",       false, cmd_level},
    {"list",        true,  cmd_list},
    {"list game",   true,  cmd_list_game},
    {"memory",      false, cmd_memory},
    {"hash",        false, cmd_memory},
    {"dhash",       false, cmd_dhash},
    {"name",        false, cmd_name},
    {"option",      false, cmd_nothing},
    {"otim",        false, cmd_otim},
    {"perft",       false, cmd_perft},
    {"ping",        false, cmd_ping},
    {"ponder",      false, cmd_ponder},
    {"post",        false, cmd_post},
    {"nopost",      false, cmd_nopost},
    {"protover",    false, cmd_protover},
    {"random",      false, cmd_nothing},
    {"rating",      false, cmd_nothing},
    {"rejected",    false, cmd_nothing},
    {"result",      false, cmd_result},
    {"savepos",     false, cmd_savepos},
    {"sd",          false, cmd_sd},
    {"st",          false, cmd_st},
    {"time",        false, cmd_time},
    {"trace",       false, cmd_trace},
    {"xtrace",      false, cmd_xtrace},
    {"uci",         false, cmd_uci},
    {"undo",        false, cmd_undo},
    {"takeback",    false, cmd_undo},
    {"variant",     false, cmd_variant},
    {"xboard",      false, cmd_xboard},
    {"winboard",    false, cmd_xboard},
    {"?",           false, cmd_query},
};
// clang-format on

} // namespace

bool is_fen_line(const char* line) {
    int slashes = 0;
    for (const char* c = line; *c != '\0'; ++c)
        slashes += *c == '/';
    return slashes > 6;
}

int parse_command(SearchThread& game) {
    char* line = input_line;
    // Folder names keep their case and their slashes: these words read the line as it came.
    if (tablebase_command(line)) return CMD_DONE;
    if (is_fen_line(line)) {
        split_line(line, " ;=");
        // "setboard" and one blank come before the position text.
        const bool prefixed = token_count > 0 && std::strcmp(tokens[0], "setboard") == 0;
        setboard(game, prefixed ? line + 9 : line, protocol.chess960);
        // Castling rights only the Chess960 rules allow (given by file letters) make the game a
        // Chess960 game, so that the X-FEN written for it reads back the same.
        if (game.pos->chess960) protocol.chess960 = true;
        new_game(game);
        game.pos->phase = compute_phase(*game.pos);
        // The end of the game before it (a result, a mate) is not this position's: the moves
        // generated next decide afresh whether it has ended.
        game_history.game_over = 0;
        return CMD_POSITION;
    }
    for (char* c = line; *c != '\0'; ++c)
        if (*c >= 'A' && *c <= 'Z') *c = static_cast<char>(*c - 'A' + 'a');
    if (split_line(line, " \t=/") == 0 || tokens[0][0] == '#') return CMD_DONE;
    for (const Command& c : commands) {
        const char* subject = c.whole_line ? line : tokens[0];
        if (std::strcmp(subject, c.word) == 0) return c.handler(game);
    }
    return CMD_NONE;
}
