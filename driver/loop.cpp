// Start-up, the settings file, new game, the command loop and the ways out of the program.
// The loop runs on the main thread and owns the shared input line between searches.

#include "driver/loop.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "board/attacks.h"
#include "board/fen.h"
#include "driver/book.h"
#include "driver/commands.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "driver/game_position.h"
#include "driver/shutdown.h"
#include "driver/version.h"
#include "driver/watcher.h"
#include "eval/pawns.h"
#include "platform/platform.h"
#include "search/threads.h"
#include "search/tt.h"

static constexpr const char* SETTINGS_FILE = "mo.ini";
static constexpr int SETTINGS_PIECE        = 128; // 127 characters and the terminator

// Cuts a line at its first newline and its first carriage return.
static void cut_line(char* line) {
    line[std::strcspn(line, "\r\n")] = '\0';
}

void startup() {
    platform_init();

    // Process-wide tables, all before any other thread exists.
    tables_init();
    if (!pawn_hash_alloc()) {
        std::puts(" pawn hash allocation error - exiting ...");
        std::exit(1);
    }

    std::printf("%s v%s\n", ENGINE_NAME, VERSION);

    start_input_watcher();

    game_record = new (std::nothrow) SearchThread();
    if (game_record == nullptr) {
        std::puts(" game record allocation error - exiting ...");
        std::exit(1);
    }
    game_record->pos = &game_record->stack[0];
    set_threads(1);
    hash_alloc(128);
    start_new_game(*game_record);
}

void read_settings_file() {
    std::FILE* f = std::fopen(SETTINGS_FILE, "r");
    if (f == nullptr) {
        std::printf("#%s file not present\n", SETTINGS_FILE);
        return;
    }
    // Each line is a command, read in pieces of at most 127 characters.
    while (std::fgets(input_line, SETTINGS_PIECE, f) != nullptr) {
        cut_line(input_line);
        parse_command(*game_record);
    }
    std::fclose(f);
}

void start_new_game(SearchThread& game) {
    protocol.trace    = -1;
    protocol.chess960 = false;
    setboard(game, START_FEN);
    new_game(game);
    protocol.force_mode    = 0;
    game_history.game_over = 0;
    // The lag measured so far still holds; the last game's clock does not.
    clock_inputs.measured.time_left = 0;
    game_history.ply                = 0;
    read_settings_file();
    generate_legal_moves(game, true);
}

static void print_prompt(const Position& p) {
    std::printf("#%s%s%d%s: ", p.side == WHITE ? "White" : "Black", "(", (game_history.ply + 2) / 2, ")");
}

int before_prompt(SearchThread& game, int last) {
    exit_if_output_lost();
    if (protocol.ping_pending != 0) {
        std::printf("pong %d\n", protocol.ping_pending);
        protocol.ping_pending = 0;
    }
    return ponder_check(game, last) ? CMD_POSITION : last;
}

// Steps 2 to 7 of a cycle: answer a ping, maybe ponder, prompt, and read a non-empty line.
// Returns the last result code as the ponder check leaves it.
static int read_command(SearchThread& game, int last) {
    for (;;) {
        last = before_prompt(game, last);
        if (!protocol.xboard_mode) print_prompt(*game.pos);
        if (!read_line(input_line, INPUT_SIZE)) end_of_input();
        cut_line(input_line);
        if (input_line[0] != '\0') break;
    }
    // Type-ahead on the console keyboard is dropped.
    while (key_waiting())
        read_key();
    return last;
}

static bool line_is(const char* text) {
    return std::strcmp(input_line, text) == 0;
}

LoopStep dispatch_line(SearchThread& game, int& last) {
    protocol.input_ready = 0;
    last                 = parse_command(game);

    if (protocol.analyze_mode) {
        // The last analysis ran to the end of its depth: this line only resets that.
        if (protocol.analysis_exhausted) {
            protocol.analysis_exhausted = false;
            return LoopStep::regenerate;
        }
        generate_legal_moves(game, false);
        if (line_is("undo")) {
            // Already taken back by the interpreter: analyse the position reached.
            input_line[0] = '\0';
            return engine_thinks(game);
        }
    }
    if (last == CMD_POSITION) return LoopStep::regenerate;
    std::fflush(stdout);
    if (line_is("go")) {
        protocol.force_mode = 0;
        return engine_thinks(game);
    }
    if (input_line[0] == 'q' || protocol.uci_done) return LoopStep::quit;
    if (line_is("new")) {
        start_new_game(game);
        last = CMD_NONE;
        return LoopStep::read;
    }
    if (line_is("analyze") || protocol.analyze_mode) {
        std::printf("#analyzing %d\n", protocol.analyze_mode);
        if (last == CMD_DONE) return engine_thinks(game);
        if (line_is("force")) return LoopStep::regenerate;
        return received_move(game, input_line);
    }
    if (line_is("force")) return LoopStep::regenerate;
    if (last == CMD_DONE) return LoopStep::read;
    return received_move(game, input_line);
}

void command_loop() {
    SearchThread& game = *game_record;
    int last           = CMD_NONE;
    LoopStep step      = LoopStep::read;
    for (;;) {
        if (step == LoopStep::regenerate) generate_legal_moves(game, true);
        if (step != LoopStep::redispatch) last = read_command(game, last);
        step = dispatch_line(game, last);
        if (step == LoopStep::quit) quit_path();
    }
}
