#include "board/attacks.h"

#include <bit>

template <std::size_t N> static uint64_t walk(int sq, uint64_t occ, const std::array<Step, N>& steps) {
    uint64_t a = 0;
    for (const Step& d : steps)
        for (int f = file_of(sq) + d.df, r = rank_of(sq) + d.dr; on_board(f, r); f += d.df, r += d.dr) {
            a |= bit(f + 8 * r);
            if (occ & bit(f + 8 * r)) break;
        }
    return a;
}

constexpr uint64_t INNER_SQUARES = ~(RANK_1 | RANK_8 | FILE_A | FILE_H);

static uint64_t rook_table[ROOK_TABLE_SIZE];
static uint64_t bishop_table[BISHOP_TABLE_SIZE];

// The multipliers send occupancies with different attack sets to different indices, so nothing
// is checked while filling.
static void fill_blocks(MagicEntry* entries, uint64_t* table, const uint64_t* multipliers,
                        uint64_t (*mask_of)(int), uint64_t (*attacks_of)(int, uint64_t)) {
    uint64_t* fill = table;
    for (int s = 0; s < 64; ++s) {
        MagicEntry& e     = entries[s];
        e.mask            = mask_of(s);
        e.magic           = multipliers[s];
        const int n       = std::popcount(e.mask);
        e.shift           = static_cast<uint32_t>(64 - n);
        e.block           = fill;
        const uint64_t sz = 1ULL << n;
        for (uint64_t i = 0; i < sz; ++i) {
            const uint64_t occ               = mask_subset(i, e.mask);
            fill[(occ * e.magic) >> e.shift] = attacks_of(s, occ);
        }
        fill += sz;
    }
}

// The squares numbered from lo up to hi - 1.
static constexpr uint64_t square_range(int lo, int hi) {
    return (bit(hi) - 1) & ~(bit(lo) - 1);
}

static constexpr Table<uint64_t[16][64]> make_pseudo_attacks() {
    Table<uint64_t[16][64]> t{};
    for (int s = 0; s < 64; ++s) {
        for (int c = 0; c < 2; ++c) {
            t.at[piece_code(c, PAWN)][s]   = pawn_attacks[c][s];
            t.at[piece_code(c, KNIGHT)][s] = knight_attacks[s];
            t.at[piece_code(c, BISHOP)][s] = bishop_empty[s];
            t.at[piece_code(c, ROOK)][s]   = rook_empty[s];
            t.at[piece_code(c, QUEEN)][s]  = bishop_empty[s] | rook_empty[s];
            t.at[piece_code(c, KING)][s]   = king_attacks[s];
        }
    }
    return t;
}

// Both empty-board sets contain the line through a and b and its parts beyond either end; the
// range of square numbers between them cuts the outer parts away.
static constexpr Table<uint64_t[64][64]> make_between() {
    Table<uint64_t[64][64]> t{};
    for (int a = 0; a < 64; ++a)
        for (int b = 0; b < 64; ++b) {
            const int df = file_of(a) - file_of(b), dr = rank_of(a) - rank_of(b);
            const uint64_t range = a < b ? square_range(a, b) : square_range(b, a);
            if (df == 0 || dr == 0)
                t.at[a][b] = rook_empty[a] & rook_empty[b] & range;
            else if (df == dr || df == -dr)
                t.at[a][b] = bishop_empty[a] & bishop_empty[b] & range;
        }
    return t;
}

// Moving from or to a corner clears the right of that corner's rook.
static constexpr Table<uint32_t[64]> make_castle_mask() {
    Table<uint32_t[64]> t{};
    for (uint32_t& m : t.at)
        m = CASTLE_ALL;
    t.at[A1] = CASTLE_ALL & ~CASTLE_WQ;
    t.at[H1] = CASTLE_ALL & ~CASTLE_WK;
    t.at[A8] = CASTLE_ALL & ~CASTLE_BQ;
    t.at[H8] = CASTLE_ALL & ~CASTLE_BK;
    return t;
}

constexpr Table<uint64_t[16][64]> pseudo_attacks_table = make_pseudo_attacks();
constexpr Table<uint64_t[64][64]> between_table        = make_between();
constexpr Table<uint32_t[64]> castle_mask_table        = make_castle_mask();

MagicEntry rook_magic[64];
MagicEntry bishop_magic[64];

// Found by bench/find_magics (fixed seed); a1, b1, c1 and h8 are the engine's published values.
// clang-format off
const uint64_t rook_multipliers[64] = {
    0x0080008820104002ULL, 0x2080104000882000ULL, 0x0880091001200080ULL, 0x0100100004090020ULL,
    0x0200020008100420ULL, 0x8200180200044B10ULL, 0x1880410000800200ULL, 0x2080002040800100ULL,
    0x0804800680604001ULL, 0x8000802000400080ULL, 0x0000801000802000ULL, 0x0A02800800805000ULL,
    0x0003000800110004ULL, 0x2002802200040080ULL, 0x0005000402001100ULL, 0x0201800045000080ULL,
    0x8010410020800104ULL, 0x1020810020401104ULL, 0x0120818010002001ULL, 0x5000808008001006ULL,
    0x0018008004008008ULL, 0x0042808002000400ULL, 0x8162040008011002ULL, 0x4000020001005084ULL,
    0x2420802080004004ULL, 0x0019500040052000ULL, 0x0000200080100080ULL, 0x0004100100220900ULL,
    0x0000140180080180ULL, 0x1000020080040080ULL, 0x1008504C00990812ULL, 0x000A408200004104ULL,
    0x00C0002482800040ULL, 0x0120005000400028ULL, 0x122020008080100AULL, 0x0001000821001000ULL,
    0x0042080101000411ULL, 0x0801008209000400ULL, 0x0000081004000201ULL, 0x05E1188402001059ULL,
    0x004004E088C08002ULL, 0x20404020100C4000ULL, 0x0009002008410014ULL, 0x4018200A00420010ULL,
    0x0004008008008004ULL, 0x0006000410020008ULL, 0x8000040200010100ULL, 0xD001000040810002ULL,
    0x0112860040210200ULL, 0x1049008210204200ULL, 0x000D001360004100ULL, 0x4101080010008180ULL,
    0x8300410080201002ULL, 0x8002000400028080ULL, 0x0800285042190400ULL, 0x0000004084010200ULL,
    0x0406018108403022ULL, 0xC000400019008021ULL, 0x0000400820001101ULL, 0x0800090010002055ULL,
    0x0042002008041002ULL, 0x10CA001044088102ULL, 0x8002014820900204ULL, 0x0000052400970042ULL,
};
const uint64_t bishop_multipliers[64] = {
    0x1040011E04010024ULL, 0x20100102008A0004ULL, 0x0844014403000030ULL, 0x00844400840000C0ULL,
    0x1041104008402000ULL, 0x108C882008040000ULL, 0x0A14042404046000ULL, 0x00089400860820D1ULL,
    0x4604101010015040ULL, 0x4002020A08023083ULL, 0x120048008D060204ULL, 0x0800440420800140ULL,
    0x00A0484840424001ULL, 0x0428008805400000ULL, 0x08020A0090080800ULL, 0x120300540088080EULL,
    0x0021804420A20202ULL, 0x01288E4202080608ULL, 0x0081001004042044ULL, 0xC04080C802024000ULL,
    0x04010084904000C1ULL, 0x0201010200420200ULL, 0x0001070620822000ULL, 0x0000812104111150ULL,
    0x0490080805481060ULL, 0x0101086211020800ULL, 0x400A300038004042ULL, 0x2414010010490100ULL,
    0x2005001023004008ULL, 0x0041260101008080ULL, 0x4002020104008242ULL, 0x8005004001044800ULL,
    0x4410101200099200ULL, 0x0702305000840100ULL, 0x000C092200040400ULL, 0x0001080800220A00ULL,
    0x4040002020020080ULL, 0xA001006A00310100ULL, 0x20040080A0041400ULL, 0x8208060080002480ULL,
    0x00C0828820044141ULL, 0x1206063044000205ULL, 0x4000A01050000801ULL, 0x0628008420200400ULL,
    0x5000080104002040ULL, 0x452000A122002040ULL, 0x0424082484000120ULL, 0x000801041080002BULL,
    0x0012080202104D30ULL, 0x0112009414025029ULL, 0x84080100880410C0ULL, 0x0040014508480002ULL,
    0x2021886002048C48ULL, 0x0804400224111008ULL, 0x0106283009120006ULL, 0x08C4240082020240ULL,
    0x04020202248A2800ULL, 0x100600209228200BULL, 0x2218000100880410ULL, 0x0000800442050402ULL,
    0x8000140020204702ULL, 0x2006402004104080ULL, 0x0800A20410408102ULL, 0x004101280F024180ULL,
};
// clang-format on

uint64_t rook_mask(int sq) {
    uint64_t m = rook_empty[sq];
    if (rank_of(sq) != 0) m &= ~RANK_1;
    if (rank_of(sq) != 7) m &= ~RANK_8;
    if (file_of(sq) != 0) m &= ~FILE_A;
    if (file_of(sq) != 7) m &= ~FILE_H;
    return m;
}

uint64_t bishop_mask(int sq) {
    return bishop_empty[sq] & INNER_SQUARES;
}

uint64_t walk_rook_attacks(int sq, uint64_t occ) {
    return walk(sq, occ, rook_steps);
}
uint64_t walk_bishop_attacks(int sq, uint64_t occ) {
    return walk(sq, occ, bishop_steps);
}

uint64_t mask_subset(uint64_t index, uint64_t mask) {
    uint64_t occ = 0;
    for (int j = 0; mask; ++j) {
        const int s = pop_lsb(mask);
        if (index & (1ULL << j)) occ |= bit(s);
    }
    return occ;
}

void tables_init() {
    fill_blocks(bishop_magic, bishop_table, bishop_multipliers, bishop_mask, walk_bishop_attacks);
    fill_blocks(rook_magic, rook_table, rook_multipliers, rook_mask, walk_rook_attacks);
}
