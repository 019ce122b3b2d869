#include "eval/tables.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "board/attacks.h"

uint64_t king_zone[64];
uint8_t distance[64][64];
uint64_t passed_mask[2][64];
uint64_t front_span[2][64];
uint64_t pawn_neighbours[2][64];
uint64_t adjacent_files[8];
int32_t pst_display_mg[16];
int32_t pst_display_eg[16];

constexpr int MAX_DISTANCE = 5;

// A king on the edge rank is also guarded from the rank inward, and a corner king counts the zone
// of its neighbour on the same rank.
static void king_zones_init() {
    for (int s = 0; s < 64; ++s) {
        king_zone[s] = bit(s) | king_attacks[s];
        if (rank_of(s) == 0 || rank_of(s) == 7) king_zone[s] |= king_attacks[s ^ 8];
    }
    king_zone[A1] = king_zone[B1];
    king_zone[H1] = king_zone[G1];
    king_zone[A8] = king_zone[B8];
    king_zone[H8] = king_zone[G8];
}

void pawn_masks_init() {
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
            passed_mask[c][s]     = passed;
            front_span[c][s]      = span;
            pawn_neighbours[c][s] = neighbours;
        }
    }
    for (int s = 0; s < 64; ++s)
        for (int t = 0; t < 64; ++t) {
            const int df = std::abs(file_of(s) - file_of(t)), dr = std::abs(rank_of(s) - rank_of(t));
            distance[s][t] = static_cast<uint8_t>(std::min(std::max(df, dr), MAX_DISTANCE));
        }
    king_zones_init();
}

void adjacent_files_init() {
    for (int f = 0; f < 8; ++f)
        adjacent_files[f] = (f > 0 ? file_mask(f - 1) : 0) | (f < 7 ? file_mask(f + 1) : 0);
}

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
