// The endgame-table reader on arbitrary file bytes. The first byte picks the table the bytes claim
// to be (its material and whether WDL or DTZ); the rest is the file. Bytes that parse are then
// probed at many placements of the men. A run fails when a read leaves the file's bytes (ASan),
// when a lookup does not come back, or when a WDL value falls outside its range.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "board/syzygy_file.h"
#include "board/types.h"

namespace {

// Kinds of table: pawnless with and without a lone man, like sides, pawns on one side and on both.
constexpr const char* TABLES[] = {"KRvK", "KQvKR", "KNNvK", "KRvKR", "KPvK", "KRvKP", "KPvKP", "KPPvK"};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t pick = data[0];
    TbMaterial m;
    if (!tb_parse_name(TABLES[(pick >> 1) % (sizeof TABLES / sizeof TABLES[0])], m)) std::abort();
    const bool dtz = pick & 1;
    // A block of exactly the file's size, so that ASan sees any read past its end.
    const size_t n = size - 1;
    auto* bytes    = static_cast<uint8_t*>(std::malloc(n ? n : 1));
    if (n) std::memcpy(bytes, data + 1, n);
    TbFile f{};
    f.file = MappedFile{bytes, n, nullptr};
    if (tb_parse_file(f, m, dtz) == nullptr) {
        uint8_t codes[TB_MAX_MEN];
        int men = 0;
        for (int code = 0; code < 16; ++code)
            for (int k = 0; k < m.count[code]; ++k)
                codes[men++] = static_cast<uint8_t>(code);
        std::mt19937 rng(static_cast<uint32_t>(size));
        for (int probe = 0; probe < 256; ++probe) {
            uint8_t pc[TB_MAX_MEN], sq[TB_MAX_MEN];
            uint64_t taken = 0;
            for (int i = 0; i < men; ++i) {
                const bool pawn = (codes[i] & 7) == PAWN + 1;
                int s;
                do
                    s = pawn ? 8 + static_cast<int>(rng() % 48) : static_cast<int>(rng() % 64);
                while (taken & bit(s));
                taken |= bit(s);
                pc[i] = codes[i];
                sq[i] = static_cast<uint8_t>(s);
            }
            const TbPart* part = nullptr;
            const int v        = tb_lookup(f, m, static_cast<int>(rng() % 2), men, pc, sq, &part);
            if (v < -2) std::abort();
            if (dtz && v >= 0) tb_dtz_map(f, *part, v, static_cast<int>(rng() % 2) ? 2 : -1);
        }
    }
    std::free(bytes);
    return 0;
}
