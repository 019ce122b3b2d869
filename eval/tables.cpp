#include "eval/tables.h"

#include <algorithm>
#include <cstring>

#include "board/attacks.h"

int32_t pst_display_mg[16];
int32_t pst_display_eg[16];

constexpr int MAX_DISTANCE = 5;

// A king on the edge rank is also guarded from the rank inward, and a corner king counts the zone
// of its neighbour on the same rank.
static constexpr Table<uint64_t[64]> make_king_zone() {
    Table<uint64_t[64]> t{};
    auto& z = t.at;
    for (int s = 0; s < 64; ++s) {
        z[s] = bit(s) | king_attacks[s];
        if (rank_of(s) == 0 || rank_of(s) == 7) z[s] |= king_attacks[s ^ 8];
    }
    z[A1] = z[B1];
    z[H1] = z[G1];
    z[A8] = z[B8];
    z[H8] = z[G8];
    return t;
}

struct PawnMasks {
    ColourSquareMasks passed, span, neighbours;
};

static constexpr PawnMasks make_pawn_masks() {
    PawnMasks m{};
    for (int c = WHITE; c <= BLACK; ++c) {
        const int d = c == WHITE ? 1 : -1;
        for (int s = 0; s < 64; ++s) {
            const int f = file_of(s), r = rank_of(s);
            uint64_t passed = 0, span = 0, neighbours = 0;
            for (int ahead = r + d; ahead >= 0 && ahead < 8; ahead += d)
                for (int df = -1; df <= 1; ++df)
                    if (on_board(f + df, ahead)) {
                        passed |= bit(f + df + 8 * ahead);
                        if (df == 0) span |= bit(f + 8 * ahead);
                    }
            for (int df = -1; df <= 1; df += 2)
                for (int rr : {r, r - d})
                    if (on_board(f + df, rr)) neighbours |= bit(f + df + 8 * rr);
            m.passed.at[c][s]     = passed;
            m.span.at[c][s]       = span;
            m.neighbours.at[c][s] = neighbours;
        }
    }
    return m;
}

static constexpr Table<uint8_t[64][64]> make_distance() {
    Table<uint8_t[64][64]> d{};
    for (int s = 0; s < 64; ++s)
        for (int t = 0; t < 64; ++t)
            d.at[s][t] = static_cast<uint8_t>(std::min(square_distance(s, t), MAX_DISTANCE));
    return d;
}

static constexpr Table<uint64_t[8]> make_adjacent_files() {
    Table<uint64_t[8]> a{};
    for (int f = 0; f < 8; ++f)
        a.at[f] = (f > 0 ? file_mask(f - 1) : 0) | (f < 7 ? file_mask(f + 1) : 0);
    return a;
}

static constexpr PawnMasks pawn_masks             = make_pawn_masks();
constexpr Table<uint64_t[64]> king_zone_table     = make_king_zone();
constexpr Table<uint8_t[64][64]> distance_table   = make_distance();
constexpr ColourSquareMasks passed_mask_table     = pawn_masks.passed;
constexpr ColourSquareMasks front_span_table      = pawn_masks.span;
constexpr ColourSquareMasks pawn_neighbours_table = pawn_masks.neighbours;
constexpr Table<uint64_t[8]> adjacent_files_table = make_adjacent_files();

void pst_init(Position& p) {
    material_init(p);
    // The report shows, per piece code, the base values at the raw index of the highest square
    // holding that code.
    std::memset(pst_display_mg, 0, sizeof pst_display_mg);
    std::memset(pst_display_eg, 0, sizeof pst_display_eg);
    for (int s = 0; s < 64; ++s) {
        const int code = p.board[s];
        if (code == EMPTY) continue;
        pst_display_mg[code] = pst_mg_base[piece_type(code)][s];
        pst_display_eg[code] = pst_eg_base[piece_type(code)][s];
    }
}
