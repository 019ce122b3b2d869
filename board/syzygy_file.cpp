#include "board/syzygy_file.h"

#include <algorithm>
#include <cstring>

#include "board/bitboard.h"
#include "board/types.h"

namespace {

// ---------------------------------------------------------------------------------------------
// Index tables, all computed at compile time.

// Rank minus file: 0 on the a1-h8 diagonal, negative below it.
constexpr int diag_offset(int sq) {
    return rank_of(sq) - file_of(sq);
}
constexpr int flip_files(int sq) {
    return sq ^ 7;
}
constexpr int flip_ranks(int sq) {
    return sq ^ 56;
}
constexpr int transpose(int sq) {
    return ((sq >> 3) | (sq << 3)) & 63;
}

struct IndexTables {
    uint64_t choose[TB_MAX_MEN][64];     // choose[k][n]: ways to pick k of n squares
    int below_diag[64];                  // squares below the a1-h8 diagonal numbered 0..27
    int triangle[64];                    // the a1-d1-d4 triangle numbered 0..9, diagonal squares last
    int kings[10][64];                   // two kings, the first in the triangle: 0..461
    int pawn_rank[64];                   // a2..h7 numbered 47..0 from the edges inwards, rank by rank
    uint64_t lead_start[TB_MAX_MEN][64]; // first index of a leading pawn set led from a square
    uint64_t lead_size[TB_MAX_MEN][4];   // number of leading pawn sets led from each file a..d
};

constexpr IndexTables make_index_tables() {
    IndexTables t{};
    for (int n = 0; n < 64; ++n)
        for (int k = 0; k < TB_MAX_MEN; ++k)
            t.choose[k][n] = k == 0   ? 1
                             : n == 0 ? 0
                                      : t.choose[k - 1][n - 1] + (k <= n - 1 ? t.choose[k][n - 1] : 0);
    int code = 0;
    for (int sq = 0; sq < 64; ++sq)
        if (diag_offset(sq) < 0) t.below_diag[sq] = code++;
    code = 0;
    for (int sq = 0; sq <= 27; ++sq)
        if (file_of(sq) <= 3 && diag_offset(sq) < 0) t.triangle[sq] = code++;
    for (int sq = 0; sq <= 27; ++sq)
        if (file_of(sq) <= 3 && diag_offset(sq) == 0) t.triangle[sq] = code++;
    // Kings: the first on the triangle, the second anywhere it may stand (not beside the first,
    // not above the diagonal when the first is on it); pairs both on the diagonal come last.
    for (auto& row : t.kings)
        for (int& v : row)
            v = -1;
    code = 0;
    for (int pass = 0; pass < 2; ++pass)
        for (int i = 0; i < 10; ++i)
            for (int k1 = 0; k1 <= 27; ++k1) {
                if (file_of(k1) > 3 || diag_offset(k1) > 0 || t.triangle[k1] != i) continue;
                for (int k2 = 0; k2 < 64; ++k2) {
                    if (square_distance(k1, k2) <= 1) continue;
                    if (diag_offset(k1) == 0 && diag_offset(k2) > 0) continue;
                    const bool both_on = diag_offset(k1) == 0 && diag_offset(k2) == 0;
                    if (both_on == (pass == 1)) t.kings[i][k2] = code++;
                }
            }
    code = 47;
    for (int f = 0; f < 4; ++f)
        for (int r = 1; r <= 6; ++r) {
            t.pawn_rank[r * 8 + f]     = code--;
            t.pawn_rank[r * 8 + 7 - f] = code--;
        }
    for (int lead = 1; lead < TB_MAX_MEN; ++lead)
        for (int f = 0; f < 4; ++f) {
            uint64_t idx = 0;
            for (int r = 1; r <= 6; ++r) {
                t.lead_start[lead][r * 8 + f] = idx;
                idx += t.choose[lead - 1][t.pawn_rank[r * 8 + f]];
            }
            t.lead_size[lead][f] = idx;
        }
    return t;
}

constexpr IndexTables tables = make_index_tables();
// 462 placements of the kings, the last two on the long diagonal.
static_assert(tables.kings[9][63] == 461 && tables.choose[2][4] == 6);

// ---------------------------------------------------------------------------------------------
// Reading the file.

uint16_t read16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8);
}
uint32_t read32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}
uint32_t read32_big(const uint8_t* p) {
    return static_cast<uint32_t>(p[3]) | static_cast<uint32_t>(p[2]) << 8 |
           static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[0]) << 24;
}

// The pair tree's entries: 12 bits each for the left and right symbol; a right of 0xFFF marks a
// symbol that is a value itself, stored as the left.
constexpr int LEAF = 0xFFF;
int tree_left(const uint8_t* e) {
    return e[0] | (e[1] & 0xF) << 8;
}
int tree_right(const uint8_t* e) {
    return e[1] >> 4 | e[2] << 4;
}

// A bounded reader: every step says whether the bytes are there.
struct Cursor {
    const uint8_t* data;
    size_t size;
    size_t at;
    bool has(size_t n) const { return at <= size && size - at >= n; }
    void align(size_t to) { at = (at + to - 1) / to * to; }
};

// The groups a part's men fall into and the factor of each in the index. The first group is
// the leading pawns, or with no pawns the kings and (when some man is unique) one more man;
// then men of one kind together. `order` gives the place of the first group and, with pawns on
// both sides, of the second side's pawns among the digits of the mixed-radix index.
bool set_groups(TbPart& p, const TbMaterial& m, int pawn_file, int order0, int order1) {
    int first      = m.has_pawns ? 0 : m.unique ? 3 : 2;
    int n          = 0;
    p.group_len[0] = 1;
    for (int i = 1; i < m.men; ++i) {
        if (--first > 0 || p.pieces[i] == p.pieces[i - 1])
            ++p.group_len[n];
        else
            p.group_len[++n] = 1;
    }
    p.group_len[++n] = 0;
    const bool pp    = m.both_pawns;
    if (order0 >= n || (pp && (order1 >= n || order1 == order0))) return false;
    if (m.has_pawns && (piece_type(p.pieces[0] - 1) != PAWN || p.group_len[0] != m.count[p.pieces[0]]))
        return false;
    if (pp && (piece_type(p.pieces[p.group_len[0]] - 1) != PAWN || n < 2)) return false;
    int free_squares = 64 - p.group_len[0] - (pp ? p.group_len[1] : 0);
    int next         = pp ? 2 : 1;
    uint64_t factor  = 1;
    for (int k = 0; k < n; ++k) {
        if (k == order0) {
            p.group_factor[0] = factor;
            factor *= m.has_pawns ? tables.lead_size[p.group_len[0]][pawn_file] : m.unique ? 31332 : 462;
        } else if (pp && k == order1) {
            p.group_factor[1] = factor;
            factor *= tables.choose[p.group_len[1]][48 - p.group_len[0]];
        } else {
            if (next >= n) return false;
            p.group_factor[next] = factor;
            factor *= tables.choose[p.group_len[next]][free_squares];
            free_squares -= p.group_len[next++];
        }
    }
    p.group_factor[n] = factor;
    p.size            = factor;
    return true;
}

// The compression parameters of one part: block and sparse-index geometry, the canonical code's
// first codes by length, and the pair tree with how many values each symbol expands to.
const char* set_sizes(TbPart& p, Cursor& c) {
    if (!c.has(1)) return "truncated";
    p.flags = c.data[c.at++];
    if (p.flags & TB_FLAG_SINGLE) {
        if (!c.has(1)) return "truncated";
        p.single_value = c.data[c.at++];
        return nullptr;
    }
    if (!c.has(10)) return "truncated";
    const uint8_t* d = c.data + c.at;
    if (d[0] > 30 || d[1] > 40) return "bad block geometry";
    p.block_size   = 1u << d[0];
    p.span         = 1ULL << d[1];
    p.sparse_count = (p.size + p.span - 1) / p.span;
    p.block_count  = read32(d + 3);
    p.length_count = p.block_count + d[2];
    p.max_len      = d[7];
    p.min_len      = d[8];
    if (p.min_len < 1 || p.max_len > 32 || p.min_len > p.max_len) return "bad code lengths";
    c.at += 9;
    const int lengths = p.max_len - p.min_len + 1;
    p.lowest          = c.at;
    if (!c.has(2 * static_cast<size_t>(lengths) + 2)) return "truncated";
    // Longer codes have smaller values; each length's first code follows from the next one's.
    p.base[lengths - 1] = 0;
    for (int i = lengths - 2; i >= 0; --i)
        p.base[i] = (p.base[i + 1] + read16(c.data + c.at + 2 * i) - read16(c.data + c.at + 2 * i + 2)) / 2;
    for (int i = 0; i < lengths; ++i)
        p.base[i] <<= 64 - i - p.min_len;
    c.at += 2 * static_cast<size_t>(lengths);
    p.symbols = read16(c.data + c.at);
    c.at += 2;
    if (p.symbols == 0 || p.symbols > 4096) return "bad symbol count";
    p.tree = c.at;
    if (!c.has(3 * static_cast<size_t>(p.symbols))) return "truncated";
    // How many values each symbol expands to, children first; a loop in the tree (which only
    // corrupt bytes can make) is found by meeting a symbol that is still being expanded.
    p.values_in.assign(p.symbols, 0);
    std::vector<uint8_t> state(p.symbols, 0); // 0 new, 1 open, 2 done
    std::vector<int> open;
    for (uint32_t root = 0; root < p.symbols; ++root) {
        if (state[root]) continue;
        open.push_back(static_cast<int>(root));
        while (!open.empty()) {
            const int s      = open.back();
            const uint8_t* e = c.data + p.tree + 3 * s;
            const int l = tree_left(e), r = tree_right(e);
            state[s] = 1;
            if (r == LEAF) {
                state[s] = 2;
                open.pop_back();
                continue;
            }
            if (l >= static_cast<int>(p.symbols) || r >= static_cast<int>(p.symbols)) return "bad pair tree";
            if (state[l] == 1 || state[r] == 1) return "bad pair tree";
            if (!state[l] || !state[r]) {
                if (!state[l]) open.push_back(l);
                if (!state[r] && r != l) open.push_back(r);
                continue;
            }
            const int v = p.values_in[l] + p.values_in[r] + 1;
            if (v > 255) return "bad pair tree";
            p.values_in[s] = static_cast<uint8_t>(v);
            state[s]       = 2;
            open.pop_back();
        }
    }
    c.at += 3 * static_cast<size_t>(p.symbols) + (p.symbols & 1);
    return nullptr;
}

// DTZ files may map stored values through small tables, one per result, in bytes or in words.
const char* set_maps(TbFile& f, Cursor& c) {
    for (int file = 0; file < f.pawn_files; ++file) {
        TbPart& p = f.part[0][file];
        if (!(p.flags & TB_FLAG_MAPPED)) continue;
        const bool wide = p.flags & TB_FLAG_WIDE;
        if (wide) c.align(2);
        for (int i = 0; i < 4; ++i) {
            const size_t width = wide ? 2 : 1;
            if (!c.has(width)) return "truncated";
            const uint32_t len = wide ? read16(c.data + c.at) : c.data[c.at];
            c.at += width;
            if (!c.has(width * len)) return "truncated";
            p.map_at[i]  = static_cast<uint32_t>(c.at);
            p.map_len[i] = len;
            c.at += width * len;
        }
    }
    c.align(2);
    return nullptr;
}

bool men_match(const TbPart& p, const TbMaterial& m) {
    uint8_t seen[16] = {};
    for (int i = 0; i < m.men; ++i) {
        if (p.pieces[i] > 15) return false;
        ++seen[p.pieces[i]];
    }
    return std::memcmp(seen, m.count, sizeof seen) == 0;
}

// The value at index idx of a compressed part, or -1 when the bytes do not make sense.
int decompress(const TbPart& p, const uint8_t* data, size_t size, uint64_t idx) {
    if (p.flags & TB_FLAG_SINGLE) return p.single_value;
    if (idx >= p.size) return -1;
    // The sparse index names the block and the place in it of every span-th value's neighbour;
    // the block lengths (values per block, minus one) lead from there to idx's own block.
    const uint64_t k     = idx / p.span;
    const uint8_t* entry = data + p.sparse + 6 * k;
    uint32_t block       = read32(entry);
    int64_t offset =
        read16(entry + 4) + static_cast<int64_t>(idx % p.span) - static_cast<int64_t>(p.span / 2);
    const uint8_t* lengths = data + p.lengths;
    if (block >= p.length_count) return -1;
    while (offset < 0) {
        if (block == 0) return -1;
        offset += read16(lengths + 2 * --block) + 1;
    }
    while (offset > read16(lengths + 2 * block)) {
        offset -= read16(lengths + 2 * block) + 1;
        if (++block >= p.length_count) return -1;
    }
    if (block >= p.block_count) return -1;

    // Canonical codes, most significant bit first, read 32 bits at a time from the block; what
    // lies past its end (or the file's) reads as zeros.
    const size_t start = p.blocks + static_cast<size_t>(block) * p.block_size;
    const size_t end   = std::min(size, start + p.block_size);
    size_t at          = start;
    auto next_word     = [&]() -> uint64_t {
        if (at + 4 > end) return 0;
        const uint32_t w = read32_big(data + at);
        at += 4;
        return w;
    };
    uint64_t bits = next_word() << 32;
    bits |= next_word();
    int held            = 64;
    const int lengths_n = p.max_len - p.min_len + 1;
    int sym;
    for (;;) {
        int len = 0;
        while (bits < p.base[len])
            if (++len >= lengths_n) return -1;
        sym = read16(data + p.lowest + 2 * len) +
              static_cast<int>((bits - p.base[len]) >> (64 - len - p.min_len));
        if (sym >= static_cast<int>(p.symbols)) return -1;
        if (offset < p.values_in[sym] + 1) break;
        offset -= p.values_in[sym] + 1;
        len += p.min_len;
        bits <<= len;
        held -= len;
        if (held <= 32) {
            held += 32;
            bits |= next_word() << (64 - held);
        }
    }
    // Down the pair tree to the one value at offset.
    while (p.values_in[sym]) {
        const uint8_t* e = data + p.tree + 3 * sym;
        const int left   = tree_left(e);
        if (offset < p.values_in[left] + 1) {
            sym = left;
        } else {
            offset -= p.values_in[left] + 1;
            sym = tree_right(e);
        }
    }
    return tree_left(data + p.tree + 3 * sym);
}

} // namespace

uint64_t tb_material_key(const uint8_t count[16]) {
    uint64_t key = 0;
    for (int colour = 0; colour < 2; ++colour)
        for (int type = PAWN; type < KING; ++type)
            key |= static_cast<uint64_t>(count[tb_code(colour, type)] & 15) << (4 * (colour * 5 + type));
    return key;
}

bool tb_parse_name(const std::string& name, TbMaterial& m) {
    m                               = TbMaterial{};
    static constexpr char letters[] = "PNBRQK";
    int colour                      = 0;
    if (name.size() < 4 || name.size() > TB_MAX_MEN + 1 || name[0] != 'K') return false;
    for (size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        if (c == 'v') {
            if (colour == 1 || i + 1 >= name.size() || name[i + 1] != 'K') return false;
            colour = 1;
            continue;
        }
        const char* at = c ? std::strchr(letters, c) : nullptr;
        if (!at) return false;
        const int type = static_cast<int>(at - letters);
        if (type == KING && i != 0 && name[i - 1] != 'v') return false;
        ++m.count[tb_code(colour, type)];
        ++m.men;
    }
    if (colour != 1 || m.men < 3 || m.men > TB_MAX_MEN) return false;
    const int wp = m.count[tb_code(WHITE, PAWN)], bp = m.count[tb_code(BLACK, PAWN)];
    m.has_pawns  = wp + bp > 0;
    m.both_pawns = wp > 0 && bp > 0;
    for (int colour2 = 0; colour2 < 2; ++colour2)
        for (int type = PAWN; type < KING; ++type)
            if (m.count[tb_code(colour2, type)] == 1) m.unique = true;
    uint8_t swapped[16] = {};
    for (int code = 0; code < 16; ++code)
        swapped[code ^ 8] = m.count[code];
    m.key       = tb_material_key(m.count);
    m.mirror    = tb_material_key(swapped);
    m.symmetric = m.key == m.mirror;
    std::memcpy(m.name, name.data(), name.size());
    m.name[name.size()] = '\0';
    return true;
}

const char* tb_parse_file(TbFile& f, const TbMaterial& m, bool dtz) {
    Cursor c{f.file.data, f.file.size, 0};
    if (!c.has(5)) return "too short";
    if (read32(c.data) != (dtz ? TB_DTZ_MAGIC : TB_WDL_MAGIC)) return "wrong magic number";
    const uint8_t flags = c.data[4];
    c.at                = 5;
    f.dtz               = dtz;
    f.sides             = dtz || m.symmetric ? 1 : 2;
    f.pawn_files        = m.has_pawns ? 4 : 1;
    if (bool(flags & 2) != m.has_pawns) return "pawns differ from the name";
    if (!dtz && bool(flags & 1) != !m.symmetric) return "sides differ from the name";

    for (int file = 0; file < f.pawn_files; ++file) {
        const int order_bytes = m.both_pawns ? 2 : 1;
        if (!c.has(static_cast<size_t>(order_bytes + m.men))) return "truncated";
        const uint8_t* d = c.data + c.at;
        for (int side = 0; side < f.sides; ++side) {
            TbPart& p        = f.part[side][file];
            p                = TbPart{};
            const int shift  = side ? 4 : 0;
            const int order0 = (d[0] >> shift) & 15;
            const int order1 = m.both_pawns ? (d[1] >> shift) & 15 : 15;
            for (int i = 0; i < m.men; ++i)
                p.pieces[i] = (d[order_bytes + i] >> shift) & 15;
            if (!men_match(p, m) || !set_groups(p, m, file, order0, order1))
                return "men differ from the name";
        }
        c.at += static_cast<size_t>(order_bytes + m.men);
    }
    c.align(2);
    for (int file = 0; file < f.pawn_files; ++file)
        for (int side = 0; side < f.sides; ++side)
            if (const char* e = set_sizes(f.part[side][file], c)) return e;
    if (dtz)
        if (const char* e = set_maps(f, c)) return e;
    auto each_part = [&](auto&& step) -> const char* {
        for (int file = 0; file < f.pawn_files; ++file)
            for (int side = 0; side < f.sides; ++side) {
                TbPart& p = f.part[side][file];
                if (p.flags & TB_FLAG_SINGLE) continue;
                if (const char* e = step(p)) return e;
            }
        return nullptr;
    };
    const char* e = each_part([&](TbPart& p) -> const char* {
        p.sparse = c.at;
        if (p.sparse_count > (c.size - std::min(c.size, c.at)) / 6) return "truncated";
        c.at += 6 * p.sparse_count;
        return nullptr;
    });
    if (!e)
        e = each_part([&](TbPart& p) -> const char* {
            p.lengths = c.at;
            if (!c.has(2 * static_cast<size_t>(p.length_count))) return "truncated";
            c.at += 2 * static_cast<size_t>(p.length_count);
            return nullptr;
        });
    if (!e)
        e = each_part([&](TbPart& p) -> const char* {
            c.align(64);
            p.blocks = c.at;
            if (!c.has(static_cast<size_t>(p.block_count) * p.block_size)) return "truncated";
            c.at += static_cast<size_t>(p.block_count) * p.block_size;
            return nullptr;
        });
    return e;
}

int tb_lookup(const TbFile& f, const TbMaterial& m, int stm, int n, uint8_t* pc, uint8_t* sq,
              const TbPart** part_out) {
    int pawn_file = 0, lead = 0;
    if (m.has_pawns) {
        // The leading pawns are the first part's first kind; the one nearest the edge, then
        // nearest its own side's back rank, leads and names the part.
        const uint8_t lead_code = f.part[0][0].pieces[0];
        for (int i = 0; i < n; ++i)
            if (pc[i] == lead_code) {
                std::swap(pc[i], pc[lead]);
                std::swap(sq[i], sq[lead]);
                ++lead;
            }
        int best = 0;
        for (int i = 1; i < lead; ++i)
            if (tables.pawn_rank[sq[i]] > tables.pawn_rank[sq[best]]) best = i;
        std::swap(sq[0], sq[best]);
        pawn_file = std::min(file_of(sq[0]), 7 - file_of(sq[0]));
    }
    const TbPart& p = f.part[f.sides == 2 ? stm : 0][pawn_file];
    *part_out       = &p;
    if (f.dtz && (p.flags & TB_FLAG_STM) != stm && !(m.symmetric && !m.has_pawns)) return -2;

    // The rest of the men in the part's order.
    for (int i = lead; i < n - 1; ++i)
        for (int j = i + 1; j < n; ++j)
            if (p.pieces[i] == pc[j]) {
                std::swap(pc[i], pc[j]);
                std::swap(sq[i], sq[j]);
                break;
            }
    for (int i = 0; i < n; ++i)
        if (pc[i] != p.pieces[i]) return -1;

    if (file_of(sq[0]) > 3)
        for (int i = 0; i < n; ++i)
            sq[i] = static_cast<uint8_t>(flip_files(sq[i]));
    uint64_t idx;
    if (m.has_pawns) {
        idx = tables.lead_start[lead][sq[0]];
        std::sort(sq + 1, sq + lead, [](int a, int b) { return tables.pawn_rank[a] < tables.pawn_rank[b]; });
        for (int i = 1; i < lead; ++i)
            idx += tables.choose[i][tables.pawn_rank[sq[i]]];
    } else {
        if (rank_of(sq[0]) > 3)
            for (int i = 0; i < n; ++i)
                sq[i] = static_cast<uint8_t>(flip_ranks(sq[i]));
        // The first of the leading men off the diagonal goes below it.
        for (int i = 0; i < p.group_len[0]; ++i) {
            if (diag_offset(sq[i]) == 0) continue;
            if (diag_offset(sq[i]) > 0)
                for (int j = i; j < n; ++j)
                    sq[j] = static_cast<uint8_t>(transpose(sq[j]));
            break;
        }
        if (m.unique) {
            // Three men apart: 6 * 63 * 62 placements with the first below the diagonal, then the
            // first on it and the second below, the first two on it, all three on it.
            const int s0 = sq[0], s1 = sq[1], s2 = sq[2];
            const int a1 = s1 > s0, a2 = (s2 > s0) + (s2 > s1);
            if (diag_offset(s0))
                idx = (static_cast<uint64_t>(tables.triangle[s0]) * 63 + (s1 - a1)) * 62 + (s2 - a2);
            else if (diag_offset(s1))
                idx = (6 * 63 + static_cast<uint64_t>(rank_of(s0)) * 28 + tables.below_diag[s1]) * 62 +
                      (s2 - a2);
            else if (diag_offset(s2))
                idx = 6 * 63 * 62 + 4 * 28 * 62 + rank_of(s0) * 7 * 28 + (rank_of(s1) - a1) * 28 +
                      tables.below_diag[s2];
            else
                idx = 6 * 63 * 62 + 4 * 28 * 62 + 4 * 7 * 28 + rank_of(s0) * 7 * 6 + (rank_of(s1) - a1) * 6 +
                      (rank_of(s2) - a2);
        } else {
            const int k = tables.kings[tables.triangle[sq[0]]][sq[1]];
            if (k < 0) return -1;
            idx = static_cast<uint64_t>(k);
        }
    }
    idx *= p.group_factor[0];

    // Each further group: its squares in rising order, each counted among the squares the
    // earlier groups leave free, combined as a subset number. Pawns never stand on the end ranks.
    int at           = p.group_len[0];
    bool first_pawns = m.both_pawns;
    for (int g = 1; p.group_len[g]; ++g) {
        const int len = p.group_len[g];
        std::sort(sq + at, sq + at + len);
        uint64_t sub = 0;
        for (int i = 0; i < len; ++i) {
            int below = 0;
            for (int j = 0; j < at; ++j)
                below += sq[at + i] > sq[j];
            const int s = sq[at + i] - below - (first_pawns ? 8 : 0);
            if (s < 0) return -1;
            sub += tables.choose[i + 1][s];
        }
        first_pawns = false;
        idx += sub * p.group_factor[g];
        at += len;
    }
    return decompress(p, f.file.data, f.file.size, idx);
}

int tb_dtz_map(const TbFile& f, const TbPart& p, int value, int wdl) {
    // Stored by result: win, loss, cursed win, blessed loss.
    static constexpr int slot[5] = {1, 3, 0, 2, 0};
    if (p.flags & TB_FLAG_MAPPED) {
        const int i = slot[wdl + 2];
        if (value < 0 || static_cast<uint32_t>(value) >= p.map_len[i]) return -1;
        const uint8_t* at = f.file.data + p.map_at[i];
        value             = p.flags & TB_FLAG_WIDE ? read16(at + 2 * value) : at[value];
    }
    // Stored in moves unless the flags say plies; cursed results always in moves.
    const bool plies =
        (wdl == 2 && (p.flags & TB_FLAG_WIN_PLIES)) || (wdl == -2 && (p.flags & TB_FLAG_LOSS_PLIES));
    return plies ? value : 2 * value;
}
