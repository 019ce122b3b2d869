// Finds the slider multipliers once, deterministically, and prints them as the two C++ tables
// that board/attacks.cpp stores. The four squares whose multipliers are fixed by the engine's
// published data (a1, b1, c1, h8) are checked and kept, not searched.
//
// A candidate is accepted when every two occupancies of the square's mask that land on one index
// have the same attack set (shared indices with equal attacks are harmless and allowed).

#include <bit>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "board/attacks.h"

// splitmix64 with a fixed seed: the same run gives the same tables on every machine.
static uint64_t rng_state = 0x6D6F7276ULL;
static uint64_t next_random() {
    uint64_t z = (rng_state += 0x9E3779B97F4A7C15ULL);
    z          = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z          = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}
// Few set bits make good multipliers far more often than uniform numbers.
static uint64_t sparse_random() {
    return next_random() & next_random() & next_random();
}

struct SquareData {
    uint64_t mask;
    std::vector<uint64_t> occ, att;
};

static SquareData square_data(int sq, bool rook) {
    SquareData d;
    d.mask           = rook ? rook_mask(sq) : bishop_mask(sq);
    const uint64_t n = 1ULL << std::popcount(d.mask);
    for (uint64_t i = 0; i < n; ++i) {
        const uint64_t o = mask_subset(i, d.mask);
        d.occ.push_back(o);
        d.att.push_back(rook ? walk_rook_attacks(sq, o) : walk_bishop_attacks(sq, o));
    }
    return d;
}

// used[] marks each index with the number of the try that filled it, so it is never cleared.
static bool works(const SquareData& d, uint64_t magic, std::vector<uint64_t>& seen,
                  std::vector<uint32_t>& used, uint32_t attempt) {
    const int shift = 64 - std::popcount(d.mask);
    for (size_t i = 0; i < d.occ.size(); ++i) {
        const uint64_t idx = (d.occ[i] * magic) >> shift;
        if (used[idx] != attempt) {
            used[idx] = attempt;
            seen[idx] = d.att[i];
        } else if (seen[idx] != d.att[i]) {
            return false;
        }
    }
    return true;
}

static uint64_t find_magic(int sq, bool rook, uint64_t given, uint64_t& tries) {
    const SquareData d = square_data(sq, rook);
    std::vector<uint64_t> seen(d.occ.size());
    std::vector<uint32_t> used(d.occ.size(), 0);
    uint32_t attempt = 0;
    if (given) {
        if (works(d, given, seen, used, ++attempt)) return given;
        std::printf("// the fixed multiplier of square %d does not work; searching\n", sq);
    }
    for (;;) {
        const uint64_t magic = sparse_random();
        ++tries;
        // Too few high bits in the product cannot spread the occupancies over the block.
        if (std::popcount((d.mask * magic) >> 56) < 6) continue;
        if (works(d, magic, seen, used, ++attempt)) return magic;
    }
}

struct FixedMultipliers {
    uint64_t a1, b1, c1, h8;
};

static void print_table(const char* name, bool rook, const FixedMultipliers& fixed) {
    uint64_t tries = 0;
    std::printf("const uint64_t %s[64] = {\n", name);
    for (int s = 0; s < 64; ++s) {
        const uint64_t given = s == A1   ? fixed.a1
                               : s == B1 ? fixed.b1
                               : s == C1 ? fixed.c1
                               : s == H8 ? fixed.h8
                                         : 0;
        const uint64_t m     = find_magic(s, rook, given, tries);
        std::printf("%s0x%016" PRIX64 "ULL,%s", s % 4 == 0 ? "    " : " ", m, s % 4 == 3 ? "\n" : "");
    }
    std::printf("};\n// %" PRIu64 " candidates tried\n", tries);
}

int main() {
    print_table("rook_multipliers", true,
                {0x0080008820104002ULL, 0x2080104000882000ULL, 0x0880091001200080ULL, 0x0000052400970042ULL});
    print_table("bishop_multipliers", false,
                {0x1040011E04010024ULL, 0x20100102008A0004ULL, 0x0844014403000030ULL, 0x004101280F024180ULL});
    return 0;
}
