// The endgame tables checked against themselves, table by table (see tb_consistency.h).
// Usage: tb_check <folder> [samples [table ...]]
//        tb_check <folder> pick <table> <count> <least dtz>
// The second form prints the FEN of that many random positions of the table, the first-named
// side to move and winning, at least that many plies from zeroing (for playing them out).
// With samples 0 (the default) every position of each table is checked, with the White king on
// files a-d only, and in the a1-d1-d4 triangle without pawns (the tables are the same mirrored);
// otherwise that many random placements per table. One line per table:
//   <table> positions <n> wdl_wrong <n> dtz_wrong <n> dtz_inexact <n> failed <n> seconds <s>
// and the exit status is 1 when anything was wrong.

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/tb_consistency.h"
#include "board/attacks.h"
#include "platform/platform.h"

namespace {

void sweep(PositionStack& t, const uint8_t* codes, int n, int* squares, int i, TbCheckCounts& c) {
    if (i == n) {
        for (int side = 0; side < 2; ++side)
            if (tb_set_placement(t, codes, squares, n, side)) tb_check_position(t, c);
        return;
    }
    // The White king (the first-named side's king) stays on files a-d, and without pawns in the
    // a1-d1-d4 triangle: the other placements are mirror images of these.
    const bool king = codes[i] == tb_code(WHITE, KING);
    bool pawns      = false;
    for (int k = 0; k < n; ++k)
        pawns |= (codes[k] & 7) == PAWN + 1;
    for (int s = 0; s < 64; ++s) {
        if (king && (file_of(s) > 3 || (!pawns && rank_of(s) > file_of(s)))) continue;
        squares[i] = s;
        sweep(t, codes, n, squares, i + 1, c);
    }
}

int pick(const char* folder, const char* table, int count, int least) {
    tb_load(folder, ':');
    TbMaterial m;
    if (!tb_parse_name(table, m)) return 2;
    uint8_t codes[TB_MAX_MEN];
    int squares[TB_MAX_MEN];
    const int n = tb_codes(m, codes);
    auto t      = std::make_unique<PositionStack>();
    std::mt19937_64 rng(static_cast<uint64_t>(least) * 7919 + static_cast<uint64_t>(count));
    for (int found = 0, tries = 0; found < count && tries < 10000000; ++tries) {
        for (int i = 0; i < n; ++i)
            squares[i] = static_cast<int>(rng() % 64);
        if (!tb_set_placement(*t, codes, squares, n, WHITE)) continue;
        int wdl = 0, dtz = 0;
        if (!tb_probe_wdl(*t, wdl) || !tb_probe_dtz(*t, dtz) || wdl != TB_WIN || dtz < least) continue;
        char fen[100];
        fen_text(*t->pos, fen);
        std::printf("%s\n", fen);
        ++found;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::printf("usage: tb_check <folder> [samples [table ...]]\n");
        return 2;
    }
    tables_init();
    if (argc == 6 && std::string(argv[2]) == "pick")
        return pick(argv[1], argv[3], std::atoi(argv[4]), std::atoi(argv[5]));
    const int samples         = argc > 2 ? std::atoi(argv[2]) : 0;
    const TbLoadReport report = tb_load(argv[1], ':');
    for (const auto& line : report.problems)
        std::printf("# %s\n", line.c_str());
    std::vector<std::string> names;
    for (int i = 3; i < argc; ++i)
        names.emplace_back(argv[i]);
    if (names.empty()) {
        std::vector<std::string> files;
        list_folder(argv[1], files);
        for (const auto& f : files)
            if (f.ends_with(".rtbw")) names.push_back(f.substr(0, f.size() - 5));
        std::sort(names.begin(), names.end());
    }
    auto t = std::make_unique<PositionStack>();
    std::mt19937_64 rng(2026);
    bool bad = false;
    for (const auto& name : names) {
        TbMaterial m;
        if (!tb_parse_name(name, m)) continue;
        uint8_t codes[TB_MAX_MEN];
        int squares[TB_MAX_MEN];
        const int n = tb_codes(m, codes);
        TbCheckCounts c{};
        const auto start = std::chrono::steady_clock::now();
        if (samples == 0) {
            sweep(*t, codes, n, squares, 0, c);
        } else {
            for (int k = 0; k < samples;) {
                for (int i = 0; i < n; ++i)
                    squares[i] = static_cast<int>(rng() % 64);
                if (tb_set_placement(*t, codes, squares, n, static_cast<int>(rng() % 2))) {
                    tb_check_position(*t, c);
                    ++k;
                }
            }
        }
        const double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::printf("%s positions %" PRIu64 " wdl_wrong %" PRIu64 " dtz_wrong %" PRIu64
                    " dtz_inexact %" PRIu64 " failed %" PRIu64 " seconds %.1f\n",
                    name.c_str(), c.positions, c.wdl_wrong, c.dtz_wrong, c.dtz_inexact, c.failed, secs);
        bad |= c.wdl_wrong || c.dtz_wrong || c.failed;
    }
    return bad ? 1 : 0;
}
