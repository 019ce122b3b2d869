#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include "bench/tb_consistency.h"
#include "board/attacks.h"

namespace {

// The whole set, loaded for one test and released after it: the other tests of the program
// search without tables.
struct Loaded {
    TbLoadReport report;
    Loaded() {
        tables_init();
        report = tb_load(MORVAINE_SYZYGY_DIR, ':');
    }
    ~Loaded() { tb_load("", ':'); }
};

} // namespace

// Random positions of tables of each kind, both sides to move: each probed result and distance
// agrees with what the position's moves lead to.
TEST(Syzygy, TablesAgreeWithTheirChildren) {
    const Loaded loaded;
    const char* tables[] = {"KRvK",  "KPvK",  "KQvKR", "KRvKR", "KPvKP",
                            "KNNvK", "KBNvK", "KPPvK", "KRvKP", "KQvKQ"};
    auto t               = std::make_unique<PositionStack>();
    std::mt19937_64 rng(27);
    for (const char* name : tables) {
        SCOPED_TRACE(name);
        TbMaterial m;
        ASSERT_TRUE(tb_parse_name(name, m));
        uint8_t codes[TB_MAX_MEN];
        int squares[TB_MAX_MEN];
        const int n = tb_codes(m, codes);
        TbCheckCounts c{};
        while (c.positions + c.failed < 1500) {
            for (int i = 0; i < n; ++i)
                squares[i] = static_cast<int>(rng() % 64);
            if (tb_set_placement(*t, codes, squares, n, static_cast<int>(rng() % 2)))
                tb_check_position(*t, c);
        }
        EXPECT_EQ(c.failed, 0u);
        EXPECT_EQ(c.wdl_wrong, 0u);
        EXPECT_EQ(c.dtz_wrong, 0u);
    }
}

// Known results: values a prober that mixes up colours, sides or mirrors gets wrong.
TEST(Syzygy, KnownPositions) {
    const Loaded loaded;
    struct Row {
        const char* fen;
        int wdl, dtz;
    };
    const Row rows[] = {
        {"k6R/8/1K6/8/8/8/8/8 b - - 0 1", TB_LOSS, -1},  // mated
        {"K6r/8/1k6/8/8/8/8/8 w - - 0 1", TB_LOSS, -1},  // the same, colours exchanged
        {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", TB_DRAW, 0},  // stalemate
        {"8/8/8/8/5pP1/8/8/K6k b - g3 0 1", TB_WIN, 1},  // en passant wins at once
        {"8/8/8/8/8/2k5/2p5/K7 w - - 0 1", TB_LOSS, -2}, // the pawn promotes after our move
    };
    auto t = std::make_unique<PositionStack>();
    for (const Row& r : rows) {
        SCOPED_TRACE(r.fen);
        setboard(*t, r.fen);
        int wdl = 9, dtz = 999;
        ASSERT_TRUE(tb_probe_wdl(*t, wdl));
        ASSERT_TRUE(tb_probe_dtz(*t, dtz));
        EXPECT_EQ(wdl, r.wdl);
        EXPECT_EQ(dtz, r.dtz);
    }
}

// Damaged copies of a real file: cut short inside its data, it is refused (the other kinds of
// damage are named by the table-loading transcript); with random bytes changed past the header,
// whatever parses is probed everywhere without reading outside it (the sanitizer builds would say)
// or failing to come back.
TEST(Syzygy, DamagedFilesAreRefusedOrHarmless) {
    const Loaded loaded;
    std::ifstream in(MORVAINE_SYZYGY_DIR "/KRvKP.rtbw", std::ios::binary);
    const std::vector<uint8_t> good((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(good.size(), 1000u);
    TbMaterial m;
    ASSERT_TRUE(tb_parse_name("KRvKP", m));
    std::vector<uint8_t> cut(good.begin(), good.end() - 100);
    TbFile f{};
    f.file = MappedFile{cut.data(), cut.size(), nullptr};
    EXPECT_STREQ(tb_parse_file(f, m, false), "truncated");
    std::mt19937_64 rng(5);
    for (int round = 0; round < 40; ++round) {
        std::vector<uint8_t> bytes = good;
        for (int k = 0; k < 8; ++k)
            bytes[8 + rng() % (bytes.size() - 8)] = static_cast<uint8_t>(rng());
        f.file = MappedFile{bytes.data(), bytes.size(), nullptr};
        if (tb_parse_file(f, m, false)) continue;
        for (int k = 0; k < 2000; ++k) {
            uint8_t pc[4] = {tb_code(WHITE, KING), tb_code(WHITE, ROOK), tb_code(BLACK, KING),
                             tb_code(BLACK, PAWN)};
            uint8_t sq[4];
            for (uint8_t& s : sq)
                s = static_cast<uint8_t>(8 + rng() % 48);
            const TbPart* part;
            const int v = tb_lookup(f, m, static_cast<int>(rng() % 2), 4, pc, sq, &part);
            EXPECT_GE(v, -1);
        }
    }
}
