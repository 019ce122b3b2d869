#include "search/output.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "board/notation.h"
#include "platform/platform.h"
#include "search/tablebase.h"
#include "search/threads.h"
#include "search/tt.h"

// Longest line: the header, and up to 128 moves of at most six characters with their blanks.
static constexpr int LINE_SIZE = 1024;
// Beyond this score a line is a mate announcement and carries the whole variation.
static constexpr int MATE_SHOWN = 32631;
static constexpr int PV_SHOWN = 6, PV_SHOWN_MATE = 99;
static constexpr int XBOARD_MATE = 100000;

uint64_t total_nodes() {
    uint64_t sum = 0;
    for (int i = 0; i < thread_count(); ++i)
        sum += thread_nodes(search_record(i));
    return sum;
}

uint64_t total_tbhits() {
    uint64_t sum = tb_root_hits;
    for (int i = 0; i < thread_count(); ++i)
        sum += thread_tbhits(search_record(i));
    return sum;
}

// When the root is in the tables their result is the score, until the search finds a mate.
static int shown_score(int score) {
    return tb_root_known && std::abs(score) <= MATE_SHOWN ? tb_root_score : score;
}

// "score cp N", or "score mate N" in moves (negative when the side to move is mated).
static int append_score(char* out, size_t size, int score) {
    if (score > MATE_SHOWN) return snprintf(out, size, "score mate %d", (MATE - score + 1) / 2);
    if (score < -MATE_SHOWN) return snprintf(out, size, "score mate %d", -(MATE + score) / 2);
    return snprintf(out, size, "score cp %d", score);
}

// One UCI info line: line is 0 for the best line, k for MultiPV line k + 1.
static void print_info_line(int line, int score, const uint32_t* pv, uint64_t nodes, int64_t elapsed,
                            int hashfull) {
    const uint64_t nps = nodes * 1000 / static_cast<uint64_t>(elapsed + 1);
    char text[LINE_SIZE];
    int n =
        snprintf(text, sizeof text, "info depth %d seldepth %d ",
                 sc.best_depth.load(std::memory_order_relaxed), static_cast<int>(search_record(0).seldepth));
    if (sc.multipv > 1) n += snprintf(text + n, sizeof text - n, "multipv %d ", line + 1);
    n += append_score(text + n, sizeof text - n, shown_score(score));
    n += snprintf(text + n, sizeof text - n, " nodes %" PRId64 " time %d nps %d hashfull %d ",
                  static_cast<int64_t>(nodes), static_cast<int>(elapsed), static_cast<int>(nps), hashfull);
    if (tb_max_men() > 0) n += snprintf(text + n, sizeof text - n, "tbhits %" PRIu64 " ", total_tbhits());
    n += snprintf(text + n, sizeof text - n, "pv ");
    char* out = text + n;
    for (int i = 0; i < STACK_SIZE && pv[i] != 0; ++i) {
        out    = write_move(out, pv[i]);
        *out++ = ' ';
    }
    // The blank after the last word becomes the line end.
    out[-1] = '\n';
    fwrite(text, 1, static_cast<size_t>(out - text), stdout);
}

void print_info() {
    const uint64_t nodes  = total_nodes();
    const int64_t elapsed = get_ms() - sc.search_start;
    const int hashfull    = hash_full();
    print_info_line(0, sc.best_score.load(std::memory_order_relaxed), sc.pv_table[0], nodes, elapsed,
                    hashfull);
    // A search stopped amid its further lines shows those of the depth before; the best line may
    // have moved among them since, and is not shown twice.
    int shown = 1;
    for (int k = 0; k < sc.extra_lines; ++k)
        if ((sc.extra_pvs[k][0] & SQUARE_BITS) != (sc.pv_table[0][0] & SQUARE_BITS))
            print_info_line(shown++, sc.extra_scores[k], sc.extra_pvs[k], nodes, elapsed, hashfull);
}

// The thinking line's score: centipawns, and a mate either as the engine's own score with "#" after
// the variation (a person reads that well) or, for XBoard GUIs, as 100000 + N for a mate in N moves
// and -100000 - N for being mated in N, with the variation's moves left plain.
static int thinking_score(int score, bool xboard) {
    if (!xboard || std::abs(score) <= MATE_SHOWN) return score;
    return score > 0 ? XBOARD_MATE + (MATE - score + 1) / 2 : -XBOARD_MATE - (MATE + score) / 2;
}

void print_thinking() {
    const uint64_t nodes  = total_nodes();
    const int64_t elapsed = get_ms() - sc.search_start;
    const int score       = shown_score(sc.best_score.load(std::memory_order_relaxed));
    const bool mate       = std::abs(score) > MATE_SHOWN;
    char line[LINE_SIZE];
    int n = snprintf(line, sizeof line, "%d %d %d %" PRId64, sc.best_depth.load(std::memory_order_relaxed),
                     thinking_score(score, sc.xboard_output), static_cast<int>(elapsed / 10),
                     static_cast<int64_t>(nodes));
    char* out       = line + n;
    const int shown = mate ? PV_SHOWN_MATE : PV_SHOWN;
    for (int i = 0; i < shown && sc.pv_table[0][i] != 0; ++i) {
        *out++ = ' ';
        out    = write_move(out, sc.pv_table[0][i]);
    }
    if (mate && !sc.xboard_output) *out++ = '#';
    *out++ = '\n';
    fwrite(line, 1, static_cast<size_t>(out - line), stdout);
}
