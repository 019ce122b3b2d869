#pragma once
// The Syzygy endgame table format: a table's material read from its file name, a WDL (.rtbw) or
// DTZ (.rtbz) file's header parsed into the layout of its compressed parts, and the value stored
// for a placement of the men. Parsing checks every offset against the file's size, and a lookup
// reads nothing outside the file, whatever its bytes; a table is written once, when it is loaded,
// and only read afterwards (by any number of search threads).

#include <cstdint>
#include <string>
#include <vector>

#include "platform/platform.h"

constexpr int TB_MAX_MEN        = 7;
constexpr uint32_t TB_WDL_MAGIC = 0x5d23e871, TB_DTZ_MAGIC = 0xa50c66d7;

// Men in the table's own colours: codes 1..6 are the first-named side's pawn..king, 9..14 the
// other side's (the code of the engine's piece + 1, with its colour in bit 3).
constexpr int tb_code(int colour, int type) {
    return colour * 8 + type + 1;
}

// What a table holds, read from a name such as "KRPvKR".
struct TbMaterial {
    uint8_t count[16]; // men by table code
    int men;
    bool has_pawns;
    bool both_pawns; // each side has a pawn
    bool unique;     // some man other than a king stands alone of its kind (pawnless tables)
    bool symmetric;  // both sides hold the same men
    uint64_t key;    // material key with the first-named side as White (tb_material_key)
    uint64_t mirror; // the same with colours exchanged
    char name[TB_MAX_MEN + 3];
};

// Material key of men counted by table code: four bits per kind, kings left out.
uint64_t tb_material_key(const uint8_t count[16]);
// Parses "KQvKR"-style names of 3 to TB_MAX_MEN men, each side a king first; false otherwise.
bool tb_parse_name(const std::string& name, TbMaterial& m);

// One compressed part of a file: for one side to move (WDL files of unlike sides have two) and,
// with pawns, one file a..d of the leading pawn.
struct TbPart {
    uint8_t pieces[TB_MAX_MEN];        // table codes in the order the index places them
    uint8_t group_len[TB_MAX_MEN + 1]; // men per index group, zero-terminated
    uint64_t group_factor[TB_MAX_MEN + 1];
    uint64_t size;            // number of indices
    uint8_t flags;            // TB_FLAG_*
    uint8_t single_value;     // the value of every index, with TB_FLAG_SINGLE
    uint8_t min_len, max_len; // code lengths in bits
    uint32_t block_size;      // bytes per compressed block
    uint64_t span;            // indices between two entries of the sparse index
    uint64_t sparse_count;
    uint32_t block_count;                         // compressed blocks
    uint32_t length_count;                        // entries of the block lengths (blocks + padding)
    uint32_t symbols;                             // entries of the pair tree
    size_t lowest, tree, sparse, lengths, blocks; // offsets in the file
    uint64_t base[33];                            // first code of each length, left-aligned, by length - min
    std::vector<uint8_t> values_in;               // by symbol: how many values it stands for, minus one
    uint32_t map_at[4], map_len[4];               // DTZ: value maps by result (win, loss, cursed, blessed)
};

constexpr uint8_t TB_FLAG_STM = 1, TB_FLAG_MAPPED = 2, TB_FLAG_WIN_PLIES = 4, TB_FLAG_LOSS_PLIES = 8,
                  TB_FLAG_WIDE = 16, TB_FLAG_SINGLE = 128;

// A parsed WDL or DTZ file of one material.
struct TbFile {
    MappedFile file;
    bool dtz;
    int sides;      // parts per pawn file: 2 for a WDL file of unlike sides, else 1
    int pawn_files; // 4 with pawns, else 1
    TbPart part[2][4];
};

// Checks the file's magic number and header against the material and fills f.part; the text of
// what is wrong otherwise (the file then stays mapped in f.file for the caller to release).
const char* tb_parse_file(TbFile& f, const TbMaterial& m, bool dtz);

// The stored value for n men (table codes pc, squares sq, both changed in place) with side stm to
// move, in the table's colours; *part_out tells which part answered. -1 when the bytes make no
// sense. A DTZ file stores one side to move only: -2 when stm is not that side.
int tb_lookup(const TbFile& f, const TbMaterial& m, int stm, int n, uint8_t* pc, uint8_t* sq,
              const TbPart** part_out);
// A DTZ file's stored value turned into plies to the next capture or pawn move (minus one, as
// stored) for a position of result wdl (-2 loss .. 2 win, not 0); -1 when it makes no sense.
int tb_dtz_map(const TbFile& f, const TbPart& p, int value, int wdl);
