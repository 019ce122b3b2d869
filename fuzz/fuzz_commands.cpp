// The command loop of the console and XBoard dialects fed arbitrary lines in sequence, exactly as
// the loop hands them to the interpreter and the game driver (no search deeper than a few plies
// outside analysis; analysis ends when the next line arrives). The run fails when the engine
// crashes, trips a sanitizer, or keeps dispatching without ever reading again.

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "driver/commands.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "driver/game_position.h"
#include "driver/loop.h"
#include "driver/tokens.h"
#include "fuzz/fuzz_platform.h"
#include "fuzz/harness.h"

namespace {

constexpr int MAX_THREADS_IN_RUN = 2;
constexpr int MAX_PERFT_DEPTH    = 3;
constexpr int MAX_SEARCH_NODES   = 1000; // all the threads of one search together
// Dispatches in a row that consumed no line (neither the loop nor an analysis read one): an
// analysis ended by a line gives one, its reset rule one more.
constexpr int MAX_DISPATCHES_WITHOUT_INPUT = 16;

// Rewrites or drops the lines a run must not carry out as they are: "uci" (its loop reads the real
// standard input until "quit"), tables and thread counts far beyond a fuzzing process, deep perft,
// and book names that could reach devices or files outside the working directory. Returns false
// to drop the line. Positions pass as the interpreter's own test finds them.
bool guard_line(char* line) {
    if (is_fen_line(line)) return true;
    char folded[INPUT_SIZE];
    std::strcpy(folded, line);
    for (char* c = folded; *c; ++c)
        if (*c >= 'A' && *c <= 'Z') *c = static_cast<char>(*c - 'A' + 'a');
    if (split_line(folded, " \t=/") == 0) return true;
    const char* word = tokens[0];
    const int arg    = token_count >= 2 ? std::atoi(tokens[1]) : 0;
    if (std::strcmp(word, "uci") == 0) return false;
    if (std::strcmp(word, "bookname") == 0 && std::strchr(line, '/')) return false;
    auto cap = [&](const char* name, int most) {
        if (std::strcmp(word, name) == 0 && arg > most) std::snprintf(line, INPUT_SIZE, "%s %d", name, most);
    };
    cap("hash", HARNESS_HASH_MB);
    cap("memory", HARNESS_HASH_MB);
    cap("cores", MAX_THREADS_IN_RUN);
    cap("perft", MAX_PERFT_DEPTH);
    return true;
}

// The lines the engine's reader would hand over (a long line in pieces), each one guarded, so
// that a line read by an analysis is held to the same limits as one read by the loop.
std::vector<std::string> guarded_input(const uint8_t* data, size_t size) {
    std::vector<std::string> pieces;
    char line[INPUT_SIZE];
    for (const std::string& whole : split_lines(data, size))
        for (size_t at = 0; at == 0 || at < whole.size(); at += INPUT_SIZE - 1) {
            std::snprintf(line, INPUT_SIZE, "%s", whole.c_str() + at);
            if (guard_line(line)) pieces.emplace_back(line);
        }
    return pieces;
}

// Outside analysis every search is a depth search of a few plies (depth mode wins over the clock).
// Every search, analysis included, also ends by itself after a thousand nodes: on a busy
// machine the loop may wake long after the line that ends an analysis is due, and the search
// would deepen all the while.
void keep_searches_short() {
    clock_inputs.go_nodes = MAX_SEARCH_NODES;
    if (protocol.analyze_mode) return;
    if (clock_inputs.depth_limit < 1 || clock_inputs.depth_limit > HARNESS_DEPTH)
        clock_inputs.depth_limit = HARNESS_DEPTH;
}

} // namespace

// Each run leaves the engine as it found it: what a run allocates it also frees, so that libFuzzer
// sees no run with more allocations than releases and never runs one again to look for a leak.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_input_set(guarded_input(data, size));
    SearchThread& game = *game_record;
    int last           = CMD_NONE;
    LoopStep step      = LoopStep::read;
    int without_input  = 0;
    for (;;) {
        if (step == LoopStep::regenerate) generate_legal_moves(game, true);
        if (step != LoopStep::redispatch) {
            last = before_prompt(game, last);
            // The end of input ends the engine here.
            if (!fuzz_input_take(input_line, INPUT_SIZE)) break;
            if (input_line[0] == '\0') continue;
        } else if (++without_input > MAX_DISPATCHES_WITHOUT_INPUT) {
            finding("the loop keeps dispatching without reading input");
        }
        keep_searches_short();
        // Lines an analysis reads while it runs count as input as much as the loop's own.
        const size_t left = fuzz_input_left();
        step              = dispatch_line(game, last);
        if (step != LoopStep::redispatch || fuzz_input_left() < left) without_input = 0;
        if (step == LoopStep::quit) break;
    }
    harness_reset();
    return 0;
}
