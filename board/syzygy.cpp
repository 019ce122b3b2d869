#include "board/syzygy.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "board/makemove.h"
#include "board/movegen.h"
#include "board/syzygy_file.h"

namespace {

struct TbEntry {
    TbMaterial material;
    TbFile wdl;
    TbFile dtz;
    bool has_wdl;
    bool has_dtz;
};

// Written by tb_load alone, while no search runs.
struct TbRegistry {
    std::vector<std::unique_ptr<TbEntry>> entries;
    // Each table under both colourings, sorted by key for a binary search.
    std::vector<std::pair<uint64_t, const TbEntry*>> by_key;
    int max_men = 0;
};
constinit TbRegistry registry;

void release_all() {
    for (auto& e : registry.entries) {
        unmap_file(e->wdl.file);
        unmap_file(e->dtz.file);
    }
    registry.entries.clear();
    registry.by_key.clear();
    registry.max_men = 0;
}

uint64_t position_material_key(const Position& p) {
    uint64_t key = 0;
    for (int colour = 0; colour < 2; ++colour)
        for (int type = PAWN; type < KING; ++type)
            key |= static_cast<uint64_t>(popcount(pieces(p, colour, type))) << (4 * (colour * 5 + type));
    return key;
}

int sign(int v) {
    return (v > 0) - (v < 0);
}

constexpr int NO_VALUE = -100;

// The value a table stores for the position: a result (-2..2) from a WDL file, or from a DTZ
// file the plies to zeroing (minus one) of a position whose result is wdl; CHANGE_SIDE when the
// DTZ file holds the other side to move, NO_VALUE when the table is missing or unreadable.
constexpr int CHANGE_SIDE = -101;
int probe_table(const Position& p, bool dtz, int wdl) {
    const uint64_t key = position_material_key(p);
    if (key == 0) return dtz ? 0 : TB_DRAW; // two bare kings
    const auto found = std::lower_bound(registry.by_key.begin(), registry.by_key.end(),
                                        std::pair<uint64_t, const TbEntry*>{key, nullptr});
    if (found == registry.by_key.end() || found->first != key) return NO_VALUE;
    const TbEntry& e = *found->second;
    if (dtz ? !e.has_dtz : !e.has_wdl) return NO_VALUE;
    // The table's first-named side plays White: when Black holds those men, or the sides are
    // alike and Black is to move, colours and ranks are exchanged.
    const bool flip = e.material.symmetric ? p.side == BLACK : key != e.material.key;
    const int stm   = p.side ^ flip;
    uint8_t pc[TB_MAX_MEN], sq[TB_MAX_MEN];
    int n = 0;
    for (uint64_t b = occupancy(p); b && n < TB_MAX_MEN;) {
        const int s    = pop_lsb(b);
        const int code = p.board[s];
        pc[n]          = static_cast<uint8_t>(tb_code(piece_colour(code) ^ flip, piece_type(code)));
        sq[n++]        = static_cast<uint8_t>(flip ? s ^ 56 : s);
    }
    if (n != e.material.men) return NO_VALUE;
    const TbFile& f    = dtz ? e.dtz : e.wdl;
    const TbPart* part = nullptr;
    const int v        = tb_lookup(f, e.material, stm, n, pc, sq, &part);
    if (v == -2) return CHANGE_SIDE;
    if (v < 0) return NO_VALUE;
    if (!dtz) return v <= 4 ? v - 2 : NO_VALUE;
    const int plies = tb_dtz_map(f, *part, v, wdl);
    return plies < 0 ? NO_VALUE : plies;
}

bool is_capture(const Position& p, Move m) {
    return p.board[move_to(m)] != EMPTY ||
           (piece_type(p.board[move_from(m)]) == PAWN && file_of(move_from(m)) != file_of(move_to(m)));
}
bool is_zeroing(const Position& p, Move m) {
    return piece_type(p.board[move_from(m)]) == PAWN || p.board[move_to(m)] != EMPTY;
}

// The result of the position with its captures (and, with pawn_moves, its pawn moves) played
// out: a table may store anything for a position whose best move is a winning capture, may
// store a loss where a capture draws, and knows nothing of en passant. `zeroing` tells whether a
// capture or pawn move is the best move (the DTZ file then need not hold the position).
bool resolve(PositionStack& t, bool pawn_moves, int& result, bool& zeroing) {
    const Position& p = *t.pos;
    Move moves[MAX_MOVES];
    const uint32_t n = legal_moves(p, moves);
    int best         = -3;
    uint32_t tried   = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const Move m = moves[i];
        if (!is_capture(p, m) && !(pawn_moves && piece_type(p.board[move_from(m)]) == PAWN)) continue;
        ++tried;
        make_move(t, m);
        int v;
        bool z;
        const bool ok = resolve(t, false, v, z);
        unmake_move(t);
        if (!ok) return false;
        if (-v > best) {
            best = -v;
            if (best == TB_WIN) {
                result  = TB_WIN;
                zeroing = true;
                return true;
            }
        }
    }
    // When every move was tried the table is not needed (nor trusted).
    const bool all_tried = tried > 0 && tried == n;
    int v                = best;
    if (!all_tried) {
        v = probe_table(p, false, 0);
        if (v == NO_VALUE) return false;
    }
    if (best >= v) {
        result  = best;
        zeroing = best > TB_DRAW || all_tried;
    } else {
        result  = v;
        zeroing = false;
    }
    return true;
}

// The distance of a position whose best move zeroes the counter: one ply, with the 100 plies of
// a cursed result added.
int dtz_before_zeroing(int wdl) {
    static constexpr int dtz[5] = {-1, -101, 0, 101, 1};
    return dtz[wdl + 2];
}

bool probe_dtz(PositionStack& t, int& dtz) {
    int wdl;
    bool zeroing;
    if (!resolve(t, true, wdl, zeroing)) return false;
    if (wdl == TB_DRAW) {
        dtz = 0;
        return true;
    }
    if (zeroing) {
        dtz = dtz_before_zeroing(wdl);
        return true;
    }
    const int stored = probe_table(*t.pos, true, wdl);
    if (stored == NO_VALUE) return false;
    if (stored != CHANGE_SIDE) {
        const bool cursed = wdl == TB_CURSED_WIN || wdl == TB_BLESSED_LOSS;
        dtz               = (stored + 1 + (cursed ? 100 : 0)) * sign(wdl);
        return true;
    }
    // The file holds the other side to move: one ply down, the best distance among the moves
    // that keep the result.
    const Position& p = *t.pos;
    Move moves[MAX_MOVES];
    const uint32_t n = legal_moves(p, moves);
    int best         = 0xFFFF;
    for (uint32_t i = 0; i < n; ++i) {
        const Move m      = moves[i];
        const bool zeroes = is_zeroing(p, m);
        make_move(t, m);
        int v = 0;
        bool ok;
        if (zeroes) {
            int w;
            bool z;
            ok = resolve(t, false, w, z);
            v  = -dtz_before_zeroing(w);
        } else {
            ok = probe_dtz(t, v);
            v  = -v;
        }
        if (ok && v == 1 && t.pos->incheck) {
            Move replies[MAX_MOVES];
            if (legal_moves(*t.pos, replies) == 0) best = 1; // mate
        }
        unmake_move(t);
        if (!ok) return false;
        if (!zeroes) v += sign(v);
        if (v < best && sign(v) == sign(wdl)) best = v;
    }
    dtz = best == 0xFFFF ? -1 : best;
    return true;
}

// Probes make moves on the caller's stack; the moves are not the caller's to count.
struct KeepNodes {
    PositionStack& t;
    uint64_t nodes;
    explicit KeepNodes(PositionStack& s) : t(s), nodes(s.nodes) {}
    ~KeepNodes() { set_thread_nodes(t, nodes); }
};

const char* load_file(TbFile& f, const TbMaterial& m, const std::string& path, bool dtz) {
    if (!map_file(path.c_str(), f.file)) return "cannot be read";
    const char* e = tb_parse_file(f, m, dtz);
    if (e) unmap_file(f.file);
    return e;
}

} // namespace

int tb_max_men() {
    return registry.max_men;
}

TbLoadReport tb_load(const std::string& folders, char separator) {
    release_all();
    TbLoadReport report{0, 0, 0, {}};
    if (folders.empty() || folders == "<empty>") return report;
    std::unordered_map<uint64_t, TbEntry*> by_name;
    size_t from = 0;
    while (from <= folders.size()) {
        size_t to = folders.find(separator, from);
        if (to == std::string::npos) to = folders.size();
        const std::string folder = folders.substr(from, to - from);
        from                     = to + 1;
        if (folder.empty()) continue;
        std::vector<std::string> names;
        if (!list_folder(folder.c_str(), names)) {
            report.problems.push_back("folder " + folder + " cannot be read");
            continue;
        }
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) {
            const bool wdl = name.ends_with(".rtbw"), dtz = name.ends_with(".rtbz");
            if (!wdl && !dtz) continue;
            TbMaterial m;
            if (!tb_parse_name(name.substr(0, name.size() - 5), m)) continue;
            TbEntry*& e = by_name[m.key];
            if (!e) {
                registry.entries.push_back(std::make_unique<TbEntry>());
                e           = registry.entries.back().get();
                e->material = m;
            }
            // A table found again in a later folder is the same table: the first copy serves.
            if (wdl ? e->has_wdl : e->has_dtz) continue;
            const std::string path = folder + "/" + name;
            if (const char* problem = load_file(wdl ? e->wdl : e->dtz, m, path, dtz)) {
                report.problems.push_back("table " + path + " ignored: " + problem);
                continue;
            }
            (wdl ? e->has_wdl : e->has_dtz) = true;
        }
    }
    for (const auto& e : registry.entries) {
        if (!e->has_wdl && !e->has_dtz) continue;
        registry.by_key.emplace_back(e->material.key, e.get());
        if (!e->material.symmetric) registry.by_key.emplace_back(e->material.mirror, e.get());
        report.wdl_tables += e->has_wdl;
        report.dtz_tables += e->has_dtz;
        if (e->has_wdl) report.max_men = std::max(report.max_men, e->material.men);
    }
    std::sort(registry.by_key.begin(), registry.by_key.end());
    registry.max_men = report.max_men;
    return report;
}

bool tb_probe_wdl(PositionStack& t, int& wdl) {
    KeepNodes keep(t);
    bool zeroing;
    return resolve(t, false, wdl, zeroing);
}

bool tb_probe_dtz(PositionStack& t, int& dtz) {
    KeepNodes keep(t);
    return probe_dtz(t, dtz);
}

bool tb_probe_move_dtz(PositionStack& t, Move m, int& dtz) {
    KeepNodes keep(t);
    make_move(t, m);
    bool ok;
    if (t.pos->rule50 == 0) {
        int wdl;
        bool zeroing;
        ok  = resolve(t, false, wdl, zeroing);
        dtz = -dtz_before_zeroing(wdl);
    } else {
        ok  = probe_dtz(t, dtz);
        dtz = dtz > 0 ? -dtz - 1 : dtz < 0 ? -dtz + 1 : 0;
    }
    if (ok && dtz == 2 && t.pos->incheck) {
        Move replies[MAX_MOVES];
        if (legal_moves(*t.pos, replies) == 0) dtz = 1;
    }
    unmake_move(t);
    return ok;
}
