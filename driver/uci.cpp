#include "driver/uci.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "board/fen.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "board/playable.h"
#include "driver/control.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "driver/tablebases.h"
#include "driver/uci_input.h"
#include "driver/version.h"
#include "platform/platform.h"
#include "search/tablebase.h"
#include "search/threads.h"
#include "search/tt.h"

constexpr int DEFAULT_HASH_MB    = 128;
constexpr int MOST_MOVE_OVERHEAD = 5000;
constexpr int MAX_TB_PROBE_DEPTH = 100;
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

// A spin option's value: digits, clamped into the option's range; anything else leaves it as it was.
static void set_spin(const char* value, int lo, int hi, int& option) {
    if (std::isdigit(static_cast<unsigned char>(*value))) option = std::clamp(std::atoi(value), lo, hi);
}

// A check option's value: "true" or "false"; anything else leaves it as it was.
static void set_check(const char* value, bool& option) {
    if (match_prefix(&value, "true"))
        option = true;
    else if (match_prefix(&value, "false"))
        option = false;
}

static bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The legal move whose text is exactly this token, or 0.
static Move legal_move_named(SearchThread& game, const char* token, size_t length) {
    if (length < 4 || length > 5) return 0;
    char text[6] = {};
    std::memcpy(text, token, length);
    const Move word = text_to_move(text) & MOVE_WORD_BITS;
    generate_legal_moves(game, false);
    const Move m = find_legal_move(word);
    if (m != 0 && std::strcmp(move_text(m), text) == 0) return m;
    // Castling written in another GUI's form (e1g1 in Chess960, e1h1 in standard chess).
    const Move castle = text_to_castle(*game.pos, text);
    return castle ? find_legal_move(castle) : 0;
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

constexpr const char* BLANKS = " \t\r\n";

// The value token after a "go" keyword, read by the leading-digits rule; 0 when there is none.
static int64_t next_number(const char*& p) {
    p += std::strspn(p, BLANKS);
    const int64_t v = std::atoll(p);
    p += std::strcspn(p, BLANKS);
    return v;
}

// A 32-bit clock field from a value that may be anything.
static int32_t clamped(int64_t v) {
    return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

void parse_go(SearchThread& game, const char* text) {
    clock_inputs.clear_request();
    const bool white = game.pos->side == WHITE;
    const char* p    = text;
    // After "searchmoves", every token that is a legal move joins the list; the first that is not
    // is read as a word again.
    bool listing = false;
    for (;;) {
        p += std::strspn(p, BLANKS);
        if (*p == '\0') break;
        const size_t length = std::strcspn(p, BLANKS);
        if (listing) {
            const Move m = legal_move_named(game, p, length);
            if (m != 0 && clock_inputs.go_move_count < MAX_MOVES) {
                clock_inputs.go_moves[clock_inputs.go_move_count++] = m;
                p += length;
                continue;
            }
            listing = false;
        }
        auto is = [&](const char* word) {
            return length == std::strlen(word) && std::strncmp(p, word, length) == 0;
        };
        int32_t* field = nullptr;
        if (is(white ? "wtime" : "btime"))
            field = &clock_inputs.time_left;
        else if (is(white ? "winc" : "binc"))
            field = &clock_inputs.increment;
        else if (is("movestogo"))
            field = &clock_inputs.moves_to_go;
        else if (is("depth"))
            field = &clock_inputs.depth_limit;
        else if (is("movetime"))
            field = &clock_inputs.move_time;
        else if (is("mate"))
            field = &clock_inputs.go_mate;
        const bool nodes = is("nodes");
        clock_inputs.go_infinite |= is("infinite");
        clock_inputs.go_ponder |= is("ponder");
        listing = is("searchmoves");
        p += length;
        if (field) *field = clamped(next_number(p));
        if (nodes) clock_inputs.go_nodes = next_number(p);
    }
    // No mate lies beyond the deepest ply; a count that is not positive asks for none.
    clock_inputs.go_mate        = std::clamp(clock_inputs.go_mate, 0, MAX_PLY);
    clock_inputs.measured.fresh = clock_inputs.time_left > 0;
}

static void start_position(SearchThread& game) {
    setboard(game, START_FEN, protocol.chess960);
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
        setboard(game, cursor, protocol.chess960);
        new_game(game);
        play_move_list(game, cursor);
    } else if (match_prefix(&cursor, "position startpos")) {
        setboard(game, START_FEN, protocol.chess960);
        play_move_list(game, cursor);
    } else if (match_prefix(&cursor, "go")) {
        parse_go(game, cursor);
        think(game, search_request(false));
        return !protocol.uci_quit;
    } else if (match_prefix(&cursor, "setoption name Hash value")) {
        const int mb = std::atoi(cursor);
        if (mb > 0) hash_alloc(mb);
    } else if (match_prefix(&cursor, "setoption name Threads value")) {
        set_threads(std::atoi(cursor));
    } else if (match_prefix(&cursor, "setoption name MultiPV value")) {
        set_spin(cursor, 1, MAX_MULTIPV, protocol.multipv);
    } else if (match_prefix(&cursor, "setoption name Move Overhead value")) {
        set_spin(cursor, 0, MOST_MOVE_OVERHEAD, protocol.move_overhead);
    } else if (match_prefix(&cursor, "setoption name Clear Hash")) {
        hash_clear();
    } else if (match_prefix(&cursor, "setoption name SyzygyPath value")) {
        set_tablebase_path(cursor);
    } else if (match_prefix(&cursor, "setoption name SyzygyProbeDepth value")) {
        set_spin(cursor, 1, MAX_TB_PROBE_DEPTH, tb_settings.probe_depth);
    } else if (match_prefix(&cursor, "setoption name Syzygy50MoveRule value")) {
        set_check(cursor, tb_settings.rule50);
    } else if (match_prefix(&cursor, "setoption name SyzygyProbeLimit value")) {
        set_spin(cursor, 0, TB_MAX_MEN, tb_settings.probe_limit);
    } else if (match_prefix(&cursor, "setoption name UCI_Chess960 value")) {
        // Takes effect with the next position command, as GUIs send it before one.
        set_check(cursor, protocol.chess960);
    }
    return true;
}

void uci_loop(SearchThread& game) {
    free_threads();
    set_threads(1);
    hash_alloc(DEFAULT_HASH_MB);
    protocol.chess960 = false;
    start_position(game);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::printf("id name %s %s %s\n", ENGINE_NAME, VERSION, BUILD_TEXT);
    std::printf("id author %s\n", "the Morvaine authors");
    std::printf("option name Hash type spin default %d min 1 max 32768\n", DEFAULT_HASH_MB);
    std::printf("option name Threads type spin default 1 min 1 max %d\n", MAX_THREADS);
    std::printf("option name Ponder type check default false\n");
    std::printf("option name MultiPV type spin default 1 min 1 max %d\n", MAX_MULTIPV);
    std::printf("option name Move Overhead type spin default %d min 0 max %d\n", DEFAULT_MOVE_OVERHEAD,
                MOST_MOVE_OVERHEAD);
    std::printf("option name Clear Hash type button\n");
    std::printf("option name SyzygyPath type string default <empty>\n");
    std::printf("option name SyzygyProbeDepth type spin default 1 min 1 max %d\n", MAX_TB_PROBE_DEPTH);
    std::printf("option name Syzygy50MoveRule type check default true\n");
    std::printf("option name SyzygyProbeLimit type spin default %d min 0 max %d\n", TB_MAX_MEN, TB_MAX_MEN);
    std::printf("option name UCI_Chess960 type check default false\n");
    std::printf("uciok\n");

    uci_input_start();
    for (;;) {
        // A GUI that has gone away cannot read the answers: end quietly.
        exit_if_output_lost();
        // The end of the input ends the dialect, and with it the program, like "quit".
        std::string line;
        if (!uci_input_next(line)) return;
        // The line keeps a line end, so that a word's separator is always there to step over.
        std::snprintf(uci_line, sizeof uci_line, "%s\n", line.c_str());
        if (!uci_command(game, uci_line)) return;
    }
}
