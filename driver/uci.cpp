#include "driver/uci.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "board/fen.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "board/playable.h"
#include "driver/control.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "driver/platform.h"
#include "search/threads.h"
#include "search/tt.h"

constexpr int UCI_LINE_SIZE   = 32758;
constexpr int DEFAULT_HASH_MB = 128;
constexpr int EOF_RETRY_MS    = 10;
// The deepest root whose search still finds room for its 120 plies in the key history.
constexpr uint32_t MAX_ROOT_HISTIDX = KEY_HISTORY - 1 - MAX_PLY;

static char uci_line[UCI_LINE_SIZE];

bool match_prefix(const char** cursor, const char* word) {
    const size_t n = std::strlen(word);
    if (std::strncmp(*cursor, word, n) != 0) return false;
    // Step over the separator, whatever it is, but never over the end of the text.
    *cursor += (*cursor)[n] != '\0' ? n + 1 : n;
    return true;
}

static bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The legal move whose text is exactly this token, or 0.
static Move legal_move_named(SearchThread& game, const char* token, size_t length) {
    if (length < 4 || length > 5) return 0;
    char text[6] = {};
    std::memcpy(text, token, length);
    const Move word = text_to_move(text) & 0xFFFF;
    generate_legal_moves(game, false);
    for (uint32_t i = 0; i < engine.legal_count; ++i) {
        const Move m = engine.legal_moves.moves[i];
        if (m != 0 && (m & 0xFFFF) == word && std::strcmp(move_text(m), text) == 0) return m;
    }
    return 0;
}

// The moves after "moves", played on the game record while each one is legal where it stands;
// the first token that is not ends the list, and so does a key history with no room left for a
// search or a position set up from broken text, where a "legal" move could take a king.
static void play_move_list(SearchThread& game, const char* cursor) {
    const char* p = std::strstr(cursor, "moves");
    if (!p) return;
    p += std::strcspn(p, " \t\r\n");
    for (;;) {
        while (is_blank(*p))
            ++p;
        if (*p == '\0') return;
        const size_t length = std::strcspn(p, " \t\r\n");
        if (game.histidx >= MAX_ROOT_HISTIDX || !position_playable(*game.pos)) return;
        const Move m = legal_move_named(game, p, length);
        if (m == 0) return;
        commit_move(game, m);
        p += length;
    }
}

// The value token after a "go" keyword, read by the leading-digits rule; 0 when there is none.
static int next_number(const char*& p) {
    while (*p == ' ')
        ++p;
    const int v = std::atoi(p);
    p += std::strcspn(p, " ");
    return v;
}

void parse_go(const char* text, int side) {
    reset_search_control();
    const bool white = side == WHITE;
    const char* p    = text;
    for (;;) {
        while (*p == ' ')
            ++p;
        if (*p == '\0') break;
        const size_t length = std::strcspn(p, " ");
        auto is             = [&](const char* word) {
            return length == std::strlen(word) && std::strncmp(p, word, length) == 0;
        };
        int32_t* field = nullptr;
        if (is(white ? "wtime" : "btime"))
            field = &engine.time_left;
        else if (is(white ? "winc" : "binc"))
            field = &engine.increment;
        else if (is("movestogo"))
            field = &engine.moves_to_go;
        else if (is("depth"))
            field = &engine.depth_limit;
        else if (is("movetime"))
            field = &engine.move_time;
        p += length;
        if (field) *field = next_number(p);
    }
    engine.clock.fresh = engine.time_left > 0;
}

static void start_position(SearchThread& game) {
    setboard(game, START_FEN);
    new_game(game);
}

bool uci_command(SearchThread& game, const char* line) {
    const char* cursor = line;
    if (match_prefix(&cursor, "isready")) {
        std::printf("readyok\n");
    } else if (match_prefix(&cursor, "quit")) {
        return false;
    } else if (match_prefix(&cursor, "ucinewgame")) {
        start_position(game);
    } else if (match_prefix(&cursor, "position fen")) {
        setboard(game, cursor);
        new_game(game);
        play_move_list(game, cursor);
    } else if (match_prefix(&cursor, "position startpos")) {
        setboard(game, START_FEN);
        play_move_list(game, cursor);
    } else if (match_prefix(&cursor, "go")) {
        parse_go(cursor, game.pos->side);
        think(game);
    } else if (match_prefix(&cursor, "setoption name Hash value")) {
        const int mb = std::atoi(cursor);
        if (mb > 0) hash_alloc(mb);
    } else if (match_prefix(&cursor, "setoption name Threads value")) {
        set_threads(std::atoi(cursor));
    }
    return true;
}

void uci_loop(SearchThread& game) {
    free_threads();
    set_threads(1);
    hash_alloc(DEFAULT_HASH_MB);
    start_position(game);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::printf("id name %s %s\n", "Morvaine 2.0.34", "SSE POPCNT");
    std::printf("id author %s\n", "the Morvaine authors");
    std::printf("option name Hash type spin default %d min 1 max 32768\n", DEFAULT_HASH_MB);
    std::printf("option name Threads type spin default 1 min 1 max %d\n", MAX_THREADS);
    std::printf("uciok\n");

    for (;;) {
        // A GUI that has gone away cannot read the answers: end quietly.
        exit_if_output_lost();
        // Input never ends for this loop: at the end of input it waits and tries again.
        if (!read_line(uci_line, UCI_LINE_SIZE - 1)) {
            sleep_ms(EOF_RETRY_MS);
            continue;
        }
        // The line keeps a line end, so that a word's separator is always there to step over.
        std::strcat(uci_line, "\n");
        if (!uci_command(game, uci_line)) return;
    }
}
