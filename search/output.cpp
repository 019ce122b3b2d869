#include "search/output.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "driver/platform.h"
#include "search/threads.h"

// Longest line: the header, and up to 128 moves of at most six characters with their blanks.
static constexpr int LINE_SIZE = 1024;
// Beyond this score a line is a mate announcement and carries the whole variation.
static constexpr int MATE_SHOWN = 32631;
static constexpr int PV_SHOWN = 6, PV_SHOWN_MATE = 99;

static constexpr char promo_letter[8] = {0, 'n', 'b', 'r', 'q', 0, 0, 0};

// Coordinate text of one move appended at out; returns the new end. Written here rather than via
// the shared move-text buffer so that a line is built in one local buffer and printed at once.
static char* append_move(char* out, Move m) {
    if ((m & SQUARE_BITS) == 0) {
        for (const char* s = "(none)"; *s; ++s)
            *out++ = *s;
        return out;
    }
    *out++ = static_cast<char>('a' + ((m >> 6) & 7));
    *out++ = static_cast<char>('1' + ((m >> 9) & 7));
    *out++ = static_cast<char>('a' + (m & 7));
    *out++ = static_cast<char>('1' + ((m >> 3) & 7));
    if (char c = promo_letter[move_promo(m)]) *out++ = c;
    return out;
}

uint64_t total_nodes() {
    uint64_t sum = 0;
    for (int i = 0; i < thread_count(); ++i)
        sum += thread_nodes(search_record(i));
    return sum;
}

void print_info() {
    const uint64_t nodes  = total_nodes();
    const int64_t elapsed = get_ms() - sc.search_start;
    const uint64_t nps    = nodes * 1000 / static_cast<uint64_t>(elapsed + 1);
    char line[LINE_SIZE];
    int n =
        snprintf(line, sizeof line, "info depth %d score cp %d nodes %" PRId64 " time %d nps %d pv ",
                 sc.best_depth.load(std::memory_order_relaxed), sc.best_score.load(std::memory_order_relaxed),
                 static_cast<int64_t>(nodes), static_cast<int>(elapsed), static_cast<int>(nps));
    char* out = line + n;
    for (int i = 0; i < STACK_SIZE && sc.pv_table[0][i] != 0; ++i) {
        out    = append_move(out, sc.pv_table[0][i]);
        *out++ = ' ';
    }
    // The blank after the last word becomes the line end.
    out[-1] = '\n';
    fwrite(line, 1, static_cast<size_t>(out - line), stdout);
}

void print_thinking() {
    const uint64_t nodes  = total_nodes();
    const int64_t elapsed = get_ms() - sc.search_start;
    const int score       = sc.best_score.load(std::memory_order_relaxed);
    const bool mate       = std::abs(score) > MATE_SHOWN;
    char line[LINE_SIZE];
    int n = snprintf(line, sizeof line, "%d %d %d %" PRId64, sc.best_depth.load(std::memory_order_relaxed),
                     score, static_cast<int>(elapsed / 10), static_cast<int64_t>(nodes));
    char* out       = line + n;
    const int shown = mate ? PV_SHOWN_MATE : PV_SHOWN;
    for (int i = 0; i < shown && sc.pv_table[0][i] != 0; ++i) {
        *out++ = ' ';
        out    = append_move(out, sc.pv_table[0][i]);
    }
    if (mate) *out++ = '#';
    *out++ = '\n';
    fwrite(line, 1, static_cast<size_t>(out - line), stdout);
}
