#include "eval/pawns.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "board/attacks.h"
#include "eval/tables.h"
#include "platform/platform.h"

PawnEntry* pawn_hash = nullptr;

static constexpr size_t PAWN_HASH_BYTES = PAWN_HASH_ENTRIES * sizeof(PawnEntry);

bool pawn_hash_alloc() {
    pawn_hash_free();
    // Zeroed so that no probe ever reads indeterminate memory; an all-zero entry verifies only for
    // the key 0, which no position with its two kings has. The platform's block comes zeroed, but
    // writing it here puts every page in place now rather than in the middle of the first search.
    // Huge pages, where there are any, spare the probes TLB misses.
    pawn_hash = static_cast<PawnEntry*>(large_alloc(PAWN_HASH_BYTES));
    if (pawn_hash) std::memset(static_cast<void*>(pawn_hash), 0, PAWN_HASH_BYTES);
    return pawn_hash != nullptr;
}

void pawn_hash_free() {
    large_free(pawn_hash, PAWN_HASH_BYTES);
    pawn_hash = nullptr;
}

constexpr int DOUBLED_MG = 8, DOUBLED_EG = 16;
constexpr int BACKWARD_MG = 6, BACKWARD_EG = 12;
constexpr int ISOLATED_MG = 4, ISOLATED_EG = 8;
constexpr int KING_RACE_WEIGHT = 4;
constexpr int SHIELD_WEIGHT    = 8;

struct SideTerms {
    int mg, eg;
    uint64_t stops;
};

// One colour's pawn terms. Pawns standing on their first or last rank (only a hand-made FEN can put
// them there) are scored without reading outside the tables.
static SideTerms side_pawns(const Position& p, int c) {
    const int e        = c ^ 1;
    const int ok       = king_square(p, c);
    const int ek       = king_square(p, e);
    const uint64_t own = pieces(p, c, PAWN);
    const uint64_t opp = pieces(p, e, PAWN);
    SideTerms t{0, 0, 0};
    int race = 0;

    for (uint64_t b = own; b;) {
        const int s    = pop_lsb(b);
        const int f    = file_of(s);
        const int r    = c == WHITE ? rank_of(s) : 7 - rank_of(s);
        const int stop = (c == WHITE ? s + 8 : s - 8) & 63;
        const int de   = distance[stop][ek];
        const int dO   = distance[stop][ok];

        race = std::max(race, r * de - (r - 1) * dO);

        if (!(opp & passed_mask[c][s])) {
            t.mg += passed_bonus[r];
            // (dO << r) >> 1 is dO << (r - 1) without a negative shift on a first-rank pawn.
            t.eg += passed_bonus[r] + (de << r) - ((dO << r) >> 1);
            t.stops |= bit(stop);
        }

        if (own & pawn_neighbours[c][s]) {
            const int opposed = (opp & front_span[c][s]) ? 1 : 0;
            t.mg += connected_mg[r] >> opposed;
            t.eg += connected_eg[r] >> opposed;
            continue;
        }

        const uint64_t others = own & ~bit(s);
        if (others & front_span[c][s]) {
            t.mg -= DOUBLED_MG;
            t.eg -= DOUBLED_EG;
        }
        const bool unsupported = !(others & passed_mask[e][stop] & ~file_mask(f));
        const bool stop_held   = opp & (bit(stop) | pawn_attacks[c][stop]);
        if (unsupported && stop_held) {
            t.mg -= BACKWARD_MG;
            t.eg -= BACKWARD_EG;
        }
        if (!(others & adjacent_files[f])) {
            t.mg -= ISOLATED_MG;
            t.eg -= ISOLATED_EG;
        }
    }

    t.eg += KING_RACE_WEIGHT * race;
    t.mg += SHIELD_WEIGHT * popcount(own & king_zone[ok]);
    return t;
}

PawnScore compute_pawns(const Position& p) {
    const SideTerms w = side_pawns(p, WHITE);
    const SideTerms b = side_pawns(p, BLACK);
    return {pack_pawn_score(w.mg - b.mg, w.eg - b.eg), w.stops | b.stops};
}

PawnScore eval_pawns(const Position& p) {
    PawnEntry& e         = pawn_hash[p.pawnkey & PAWN_HASH_MASK];
    const uint64_t check = pawn_word_load(e.check);
    const uint64_t score = pawn_word_load(e.score);
    const uint64_t stops = pawn_word_load(e.stops);
    if ((p.pawnkey ^ check) == (score ^ stops)) return {score, stops};

    const PawnScore s = compute_pawns(p);
    pawn_word_store(e.score, s.score);
    pawn_word_store(e.stops, s.stops);
    pawn_word_store(e.check, p.pawnkey ^ s.score ^ s.stops);
    return s;
}
