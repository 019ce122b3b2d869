#pragma once
// The endgame tables in the search: the settings the driver gives them, the score a table result
// stands for, the interior probe and the root's choice of the moves that keep the table's result.
// Settings are written by the driver while no search runs; a search reads them and sc's fields.

#include <atomic>
#include <cstdint>

#include "board/syzygy.h"
#include "search/thread.h"

struct TbSettings {
    int probe_depth = 1;    // interior probes from this remaining depth on (1..100)
    bool rule50     = true; // the 50-move rule decides: cursed wins and blessed losses are draws
    int probe_limit = 7;    // probe positions of at most this many men (0..7)
};
extern TbSettings tb_settings;

// A table win at ply p scores TB_WIN_SCORE - p: below every mate score, above every evaluation.
constexpr int TB_WIN_SCORE = 30000;
// A win or loss the 50-move rule turns into a draw scores just beside the draw.
constexpr int TB_CURSED_SCORE = 1;
int tb_score(int wdl, int ply);

// Interior probes of the running search: positions of at most this many men (0: none).
extern int tb_search_men;
// Root table probes of the running search, counted with the threads' own.
extern uint64_t tb_root_hits;
// The root's table result, shown in place of the search's score unless that is a mate.
extern bool tb_root_known;
extern int tb_root_score;

// Before a search: sets the interior probing for it and, when the root itself is in the tables,
// leaves in sc.root_moves only the moves that keep its result (by distance to zeroing and the
// 50-move rule where the DTZ tables are there, else by result).
void tb_prepare_search(PositionStack& game);

// The interior probe of a node at ply with depth plies left, just after a capture or pawn move:
// true with its score and bound (BOUND_*) when the tables know it.
bool tb_probe_node(SearchThread& t, int ply, int depth, int& score, int& bound);

inline uint64_t thread_tbhits(const SearchThread& t) {
    return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(t.tbhits)).load(std::memory_order_relaxed);
}
