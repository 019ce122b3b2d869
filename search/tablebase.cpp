#include "search/tablebase.h"

#include <algorithm>

#include "board/makemove.h"
#include "board/movegen.h"
#include "search/threads.h"
#include "search/tt.h"

TbSettings tb_settings;
int tb_search_men     = 0;
uint64_t tb_root_hits = 0;
bool tb_root_known    = false;
int tb_root_score     = 0;

int tb_score(int wdl, int ply) {
    const bool rule = tb_settings.rule50;
    switch (wdl) {
    case TB_WIN:
        return TB_WIN_SCORE - ply;
    case TB_CURSED_WIN:
        return rule ? TB_CURSED_SCORE : TB_WIN_SCORE - ply;
    case TB_BLESSED_LOSS:
        return rule ? -TB_CURSED_SCORE : ply - TB_WIN_SCORE;
    case TB_LOSS:
        return ply - TB_WIN_SCORE;
    default:
        return 0;
    }
}

bool tb_probe_node(SearchThread& t, int ply, int depth, int& score, int& bound) {
    const Position& p = *t.pos;
    if (p.rule50 != 0 || p.cflag != 0 || t.histidx + TB_PROBE_PLIES >= KEY_HISTORY ||
        ply + TB_PROBE_PLIES >= STACK_SIZE)
        return false;
    const int men = popcount(occupancy(p));
    if (men > tb_search_men || (men == tb_search_men && depth < tb_settings.probe_depth)) return false;
    int wdl;
    if (!tb_probe_wdl(t, wdl)) return false;
    std::atomic_ref<uint64_t>(t.tbhits).store(t.tbhits + 1, std::memory_order_relaxed);
    score = tb_score(wdl, ply);
    bound = score > TB_CURSED_SCORE ? BOUND_LOWER : score < -TB_CURSED_SCORE ? BOUND_UPPER : BOUND_EXACT;
    return true;
}

namespace {

// What a root move keeps, best first: a win within the 50-move rule (4), a win the rule takes away
// (3), a draw (2), a loss the rule saves (1), a loss (0). Without the rule the middle ones join the
// win and the loss.
int result_class(int wdl) {
    if (!tb_settings.rule50 && (wdl == TB_CURSED_WIN || wdl == TB_BLESSED_LOSS)) wdl *= 2;
    return wdl + 2;
}

// The repetition of a position since the last capture or pawn move: with it behind, only the
// quickest way to zeroing is sure to make progress.
bool repeated_since_zeroing(const PositionStack& game) {
    const int last  = static_cast<int>(game.histidx);
    const int first = last - std::min<int>(game.pos->rule50, last);
    for (int i = first; i <= last; ++i)
        for (int j = i + 4; j <= last; j += 2)
            if (game.keyhist[i] == game.keyhist[j]) return true;
    return false;
}

// The bits that name a move: its squares and its promotion piece.
bool same_move(Move a, Move b) {
    return ((a ^ b) & (SQUARE_BITS | 7u << 13)) == 0;
}

void tb_root_filter(PositionStack& game) {
    tb_search_men     = std::min(tb_max_men(), tb_settings.probe_limit);
    tb_root_hits      = 0;
    tb_root_known     = false;
    const Position& p = *game.pos;
    if (tb_search_men == 0 || p.cflag != 0 || popcount(occupancy(p)) > tb_search_men ||
        game.histidx + 2 * TB_PROBE_PLIES >= KEY_HISTORY)
        return;
    Move moves[MAX_MOVES];
    uint32_t n = legal_moves(p, moves);
    // Moves the caller asked for alone stay alone.
    if (sc.root_move_count > 0) {
        uint32_t kept = 0;
        for (uint32_t i = 0; i < n; ++i)
            for (int k = 0; k < sc.root_move_count; ++k)
                if (same_move(sc.root_moves[k], moves[i])) {
                    moves[kept++] = moves[i];
                    break;
                }
        n = kept;
    }
    if (n == 0) return;

    // Each move's result for us and, with DTZ, its plies to zeroing counted from here.
    int dtz[MAX_MOVES], cls[MAX_MOVES];
    bool have_dtz = true;
    for (uint32_t i = 0; i < n && have_dtz; ++i)
        have_dtz = tb_probe_move_dtz(game, moves[i], dtz[i]);
    const int cnt50 = p.rule50;
    if (have_dtz) {
        for (uint32_t i = 0; i < n; ++i) {
            const int d = dtz[i];
            cls[i]      = d > 0   ? (!tb_settings.rule50 || d + cnt50 <= 100 ? 4 : 3)
                          : d < 0 ? (!tb_settings.rule50 || -d + cnt50 <= 100 ? 0 : 1)
                                  : 2;
        }
    } else {
        for (uint32_t i = 0; i < n; ++i) {
            int wdl;
            make_move(game, moves[i]);
            const bool ok = tb_probe_wdl(game, wdl);
            unmake_move(game);
            if (!ok) return;
            cls[i] = result_class(-wdl);
        }
    }
    tb_root_hits   = n;
    const int best = *std::max_element(cls, cls + n);
    // Among the cursed wins and the losses the rule saves, the quickest to zeroing and the longest;
    // among the wins too when the game is going round, or the search might keep it going.
    const bool by_dtz = have_dtz && (best == 3 || best == 1 || (best == 4 && repeated_since_zeroing(game)));
    int want          = 0;
    bool first        = true;
    for (uint32_t i = 0; i < n; ++i)
        if (by_dtz && cls[i] == best && (first || dtz[i] < want)) {
            want  = dtz[i];
            first = false;
        }
    int kept = 0;
    for (uint32_t i = 0; i < n; ++i)
        if (cls[i] == best && (!by_dtz || dtz[i] == want)) sc.root_moves[kept++] = moves[i];
    sc.root_move_count            = kept;
    tb_root_known                 = true;
    static constexpr int shown[5] = {-TB_WIN_SCORE + 1, -TB_CURSED_SCORE, 0, TB_CURSED_SCORE,
                                     TB_WIN_SCORE - 1};
    tb_root_score                 = shown[best];
    // With distances the root's choice makes the progress; interior probes would only hide mates
    // behind table wins. With results alone the search needs them to find its way.
    if (have_dtz) tb_search_men = 0;
}

} // namespace

void tb_prepare_search(PositionStack& game) {
    // The probes' moves are made on the game's stack but are no game moves.
    const uint64_t game_nodes = game.nodes;
    tb_root_filter(game);
    set_thread_nodes(game, game_nodes);
}
