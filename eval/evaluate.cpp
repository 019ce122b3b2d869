#include "eval/evaluate.h"

#include <algorithm>

#include "board/attacks.h"
#include "eval/pawns.h"
#include "eval/tables.h"

constexpr uint64_t LIGHT_SQUARES = 0x55AA55AA55AA55AAULL;

// Mobility, per square of the mobility area.
constexpr int KNIGHT_MOB_MG = 8, KNIGHT_MOB_EG = 4;
constexpr int BISHOP_MOB_MG = 6, BISHOP_MOB_EG = 3;
constexpr int ROOK_MOB_MG = 3, ROOK_MOB_EG = 6;
constexpr int QUEEN_MOB_MG = 2, QUEEN_MOB_EG = 5;

// Rook on a file without own pawn, per empty square of the file.
constexpr int OPEN_FILE_FACTOR = 4, HALF_OPEN_FILE_FACTOR = 2;

// Threats and pawn pushes.
constexpr int PASSER_STOP_EG = 16, LOOSE_MAN_EG = 16, PAWN_THREAT = 64;
constexpr int PUSH_THREAT_MG = 16, PUSH_THREAT_EG = 8, SAFE_PUSH_EG = 4;
constexpr int BISHOP_PAIR = 40;

// King attack weights, before the scale by attacker count.
constexpr int CHECK_SQUARE_WEIGHT = 2, ZONE_PUSH_WEIGHT = 2, SAFE_CHECK_WEIGHT = 8;
constexpr int OPEN_KING_SQUARE_WEIGHT = 3;

constexpr int SCALING_MEN            = 5;
constexpr int OPPOSITE_BISHOP_PIECES = 4;
constexpr int TEMPO                  = 8;
constexpr int PHASE_SHIFT            = 7; // the blend's phase runs from 0 (middlegame) to 128 (endgame)

// ---- Endgame scaling of the material part ----

enum class Scaling : uint8_t { Zero, CapFirst, Quarter, Eighth };

// Non-king material of one side, three bits per type (at most five men are ever looked up).
constexpr uint16_t material(int pawns, int knights, int bishops, int rooks) {
    return static_cast<uint16_t>(pawns << 9 | knights << 6 | bishops << 3 | rooks);
}

struct ScalingRow {
    uint16_t first, second;
    Scaling rule; // CapFirst: the first side gets no credit
};

// Every row holds with either colour as the first side.
// clang-format off
constexpr ScalingRow scaling_rows[] = {
    {material(0, 0, 0, 0), material(0, 0, 0, 0), Scaling::Zero},     // K v K
    {material(0, 1, 0, 0), material(0, 0, 0, 0), Scaling::Zero},     // KN v K
    {material(0, 0, 1, 0), material(0, 0, 0, 0), Scaling::Zero},     // KB v K
    {material(0, 2, 0, 0), material(0, 0, 0, 0), Scaling::Zero},     // KNN v K
    {material(0, 1, 0, 0), material(1, 0, 0, 0), Scaling::CapFirst}, // KN v KP
    {material(0, 0, 1, 0), material(1, 0, 0, 0), Scaling::CapFirst}, // KB v KP
    {material(0, 0, 0, 1), material(0, 1, 0, 0), Scaling::Quarter},  // KR v KN
    {material(0, 0, 0, 1), material(0, 0, 1, 0), Scaling::Eighth},   // KR v KB
    {material(0, 0, 2, 0), material(0, 0, 1, 0), Scaling::Zero},     // KBB v KB
    {material(0, 1, 1, 0), material(0, 0, 1, 0), Scaling::Zero},     // KNB v KB
    {material(0, 2, 0, 0), material(0, 0, 1, 0), Scaling::Zero},     // KNN v KB
    {material(0, 1, 1, 0), material(0, 1, 0, 0), Scaling::Zero},     // KNB v KN
    {material(0, 2, 0, 0), material(0, 1, 0, 0), Scaling::Zero},     // KNN v KN
    {material(0, 1, 1, 0), material(0, 0, 0, 1), Scaling::Zero},     // KNB v KR
    {material(0, 2, 0, 0), material(0, 0, 0, 1), Scaling::Zero},     // KNN v KR
    {material(0, 0, 1, 1), material(0, 0, 0, 1), Scaling::Eighth},   // KBR v KR
    {material(0, 1, 0, 1), material(0, 0, 0, 1), Scaling::Eighth},   // KNR v KR
    {material(0, 0, 0, 1), material(1, 0, 1, 0), Scaling::CapFirst}, // KR v KPB
    {material(0, 0, 0, 1), material(1, 1, 0, 0), Scaling::CapFirst}, // KR v KPN
};
// clang-format on

static uint16_t side_material(const Position& p, int c) {
    return material(popcount(pieces(p, c, PAWN)), popcount(pieces(p, c, KNIGHT)),
                    popcount(pieces(p, c, BISHOP)), popcount(pieces(p, c, ROOK)));
}

// e is the endgame material sum, White minus Black; first is the colour playing the row's first side.
static int apply_scaling(Scaling rule, int e, int first) {
    switch (rule) {
    case Scaling::Zero:
        return 0;
    case Scaling::Quarter:
        return e >> 2;
    case Scaling::Eighth:
        return e >> 3;
    case Scaling::CapFirst:
        return (first == WHITE ? e > 0 : e < 0) ? 0 : e;
    }
    return e;
}

// Drawish material with at most five men and no queen: the material sum gets less credit or none.
static int scale_endgame(const Position& p, int e) {
    if (popcount(occupancy(p)) > SCALING_MEN || p.type_bb[QUEEN]) return e;
    const uint16_t w = side_material(p, WHITE);
    const uint16_t b = side_material(p, BLACK);
    for (const ScalingRow& row : scaling_rows) {
        if (w == row.first && b == row.second) return apply_scaling(row.rule, e, WHITE);
        if (b == row.first && w == row.second) return apply_scaling(row.rule, e, BLACK);
    }
    return e;
}

// ---- Attacks, mobility and threats ----

// Empty squares the pawns can reach with a single or a double push.
template <int C> static uint64_t pawn_push_set(uint64_t pawns, uint64_t empty) {
    const uint64_t one = pawn_push<C>(pawns) & empty;
    return one | double_pushes<C>(one, empty);
}

// What both colours' scans share.
struct Board {
    uint64_t occ;
    uint64_t occ_no_queens; // bishops and queens see through queens of either colour
    uint64_t pawn_att[2];
    uint64_t pawn_push[2];
    uint64_t passer_stops;
};

// What one colour's scan leaves for the king-danger step.
struct SideAttacks {
    uint64_t attacks_nk; // pawns, knights, bishops, rooks, queens
    uint64_t attacks;    // the same plus the squares next to the king
    uint64_t check_sq;   // squares from which a piece could give check
    int king_attackers;
    int king_weight;
};

// The squares of one piece: mobility inside the area, and its share of the attack on the king.
struct PieceScan {
    uint64_t area, zone;
    SideAttacks& side;

    int add(uint64_t a, uint64_t checks) {
        side.attacks_nk |= a;
        const uint64_t reach = a & area;
        const uint64_t x     = reach & (zone | checks);
        if (x) {
            ++side.king_attackers;
            side.king_weight += popcount(x & zone) + CHECK_SQUARE_WEIGHT * popcount(x & checks);
            side.check_sq |= x & checks;
        }
        return popcount(reach);
    }
};

// Adds colour C's terms, from C's own view, to mg and eg.
template <int C> static void scan_side(const Position& p, const Board& bd, SideAttacks& s, int& mg, int& eg) {
    constexpr int E             = C ^ 1;
    constexpr uint64_t HOME     = relative_rank_mask(C, 0);
    const int ek                = king_square(p, E);
    const uint64_t own_pawns    = pieces(p, C, PAWN);
    const uint64_t enemy_pawns  = pieces(p, E, PAWN);
    const uint64_t enemy_pieces = p.colour_bb[E] & ~p.type_bb[PAWN];
    const uint64_t area         = ~(own_pawns | bd.pawn_att[E]);

    const uint64_t bishop_checks = bishop_attacks(ek, bd.occ);
    const uint64_t rook_checks   = rook_attacks(ek, bd.occ);
    const uint64_t queen_checks  = bishop_checks | rook_checks;
    const uint64_t knight_checks = knight_attacks[ek];

    s = SideAttacks{bd.pawn_att[C], 0, 0, 0, 0};
    PieceScan scan{area, king_zone[ek], s};

    int mob = 0;
    for (uint64_t b = pieces(p, C, KNIGHT); b;)
        mob += scan.add(knight_attacks[pop_lsb(b)], knight_checks);
    mg += KNIGHT_MOB_MG * mob;
    eg += KNIGHT_MOB_EG * mob;

    mob                  = 0;
    const uint64_t own_b = pieces(p, C, BISHOP);
    for (uint64_t b = own_b; b;)
        mob += scan.add(bishop_attacks(pop_lsb(b), bd.occ_no_queens), bishop_checks);
    mg += BISHOP_MOB_MG * mob;
    eg += BISHOP_MOB_EG * mob;

    mob = 0;
    for (uint64_t b = pieces(p, C, QUEEN); b;) {
        mob += scan.add(queen_attacks(pop_lsb(b), bd.occ_no_queens), queen_checks);
    }
    mg += QUEEN_MOB_MG * mob;
    eg += QUEEN_MOB_EG * mob;

    // Rooks see through rooks of their own colour, except those still on the home rank.
    mob                      = 0;
    const uint64_t own_rooks = pieces(p, C, ROOK);
    const uint64_t rook_occ  = bd.occ_no_queens & ~(own_rooks & ~HOME);
    for (uint64_t b = own_rooks; b;) {
        const int sq = pop_lsb(b);
        mob += scan.add(rook_attacks(sq, rook_occ), rook_checks);
        const uint64_t file = file_mask(file_of(sq));
        if (!(own_pawns & file)) {
            const int factor = (enemy_pawns & file) ? HALF_OPEN_FILE_FACTOR : OPEN_FILE_FACTOR;
            mg += (8 - popcount(bd.occ & file)) * factor;
        }
    }
    mg += ROOK_MOB_MG * mob;
    eg += ROOK_MOB_EG * mob;

    s.attacks = s.attacks_nk | king_attacks[king_square(p, C)];

    eg += PASSER_STOP_EG * popcount(bd.passer_stops & s.attacks);
    // Enemy men, the king included, that no enemy pawn guards.
    eg += LOOSE_MAN_EG * popcount(p.colour_bb[E] & area & s.attacks);

    const int pawn_hits = popcount(pawn_attack_set<C>(own_pawns & s.attacks) & enemy_pieces);
    mg += PAWN_THREAT * pawn_hits;
    eg += PAWN_THREAT * pawn_hits;

    const int push_hits = popcount(pawn_attack_set<C>(bd.pawn_push[C] & s.attacks) & enemy_pieces);
    mg += PUSH_THREAT_MG * push_hits;
    eg += PUSH_THREAT_EG * push_hits;

    if (popcount(own_b) >= 2) {
        mg += BISHOP_PAIR;
        eg += BISHOP_PAIR;
    }
}

// The attack of `us` on the king standing on king_sq, defended by `them`.
static int king_danger(const SideAttacks& us, const SideAttacks& them, uint64_t safe_pushes, int king_sq) {
    int n                      = us.king_attackers;
    int w                      = us.king_weight;
    const uint64_t zone_pushes = safe_pushes & king_zone[king_sq];
    if (zone_pushes) {
        ++n;
        w += ZONE_PUSH_WEIGHT * popcount(zone_pushes);
    }
    const uint64_t safe_checks = us.check_sq & ~them.attacks;
    if (safe_checks) {
        ++n;
        w += SAFE_CHECK_WEIGHT * popcount(safe_checks);
    }
    w += OPEN_KING_SQUARE_WEIGHT * popcount(king_attacks[king_sq] & us.attacks & ~them.attacks_nk);
    return w * king_safety_scale[std::min(n, 7)];
}

int evaluate(const Position& p) {
    const PawnScore ps = eval_pawns(p);
    int mg             = p.mg + pawn_mg(ps.score);
    int eg             = scale_endgame(p, p.eg) + pawn_eg(ps.score);

    Board bd;
    bd.occ            = occupancy(p);
    bd.occ_no_queens  = bd.occ & ~p.type_bb[QUEEN];
    bd.passer_stops   = ps.stops;
    const uint64_t wp = pieces(p, WHITE, PAWN), bp = pieces(p, BLACK, PAWN);
    bd.pawn_att[WHITE]  = pawn_attack_set<WHITE>(wp);
    bd.pawn_att[BLACK]  = pawn_attack_set<BLACK>(bp);
    bd.pawn_push[WHITE] = pawn_push_set<WHITE>(wp, ~bd.occ);
    bd.pawn_push[BLACK] = pawn_push_set<BLACK>(bp, ~bd.occ);

    SideAttacks white, black;
    int bmg = 0, beg = 0;
    scan_side<WHITE>(p, bd, white, mg, eg);
    scan_side<BLACK>(p, bd, black, bmg, beg);
    mg -= bmg;
    eg -= beg;

    const uint64_t safe_w = bd.pawn_push[WHITE] & (~black.attacks | white.attacks);
    const uint64_t safe_b = bd.pawn_push[BLACK] & (~white.attacks | black.attacks);
    eg += SAFE_PUSH_EG * (popcount(safe_w) - popcount(safe_b));
    mg += king_danger(white, black, safe_w, p.bking);
    mg -= king_danger(black, white, safe_b, p.wking);

    const uint64_t bishops = p.type_bb[BISHOP];
    if (popcount(bd.occ & ~p.type_bb[PAWN]) == OPPOSITE_BISHOP_PIECES &&
        popcount(pieces(p, WHITE, BISHOP)) == 1 && popcount(pieces(p, BLACK, BISHOP)) == 1 &&
        popcount(bishops & LIGHT_SQUARES) == 1)
        eg /= 3;

    if (p.side == BLACK) {
        mg = -mg;
        eg = -eg;
    }
    // A stored phase of 128 or more reads negative: a pure endgame.
    const int phase = static_cast<int8_t>(p.phase);
    if (phase < 0) return eg + TEMPO;
    return ((phase * eg + ((1 << PHASE_SHIFT) - phase) * mg) >> PHASE_SHIFT) + TEMPO;
}
