#pragma once
// The endgame tables checked against themselves: a position's probed result must be what its
// moves lead to one ply down (children in the same table probed, captures and promotions
// resolved by the smaller tables), and its distance to zeroing one more than the best child's.
// Shared by the tests (a sample of positions) and tb_check (every position of every table).

#include <cstdint>
#include <cstdlib>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/syzygy.h"
#include "board/syzygy_file.h"

struct TbCheckCounts {
    uint64_t positions;   // legal positions checked
    uint64_t wdl_wrong;   // result not the best of the moves' results
    uint64_t dtz_wrong;   // distance more than one off the moves' best
    uint64_t dtz_inexact; // one off (the tables may store moves where plies are meant)
    uint64_t failed;      // a probe said no
};

// One position, set up in slot 0 of t.
inline void tb_check_position(PositionStack& t, TbCheckCounts& c) {
    const Position& p = *t.pos;
    int wdl = 0, dtz = 0;
    if (!tb_probe_wdl(t, wdl) || !tb_probe_dtz(t, dtz)) {
        ++c.failed;
        return;
    }
    ++c.positions;
    Move moves[MAX_MOVES];
    const uint32_t n = legal_moves(p, moves);
    // Results without the 50-move rule: the best of the children's, mate and stalemate by rule.
    int best_sign = n == 0 ? (p.incheck ? -1 : 0) : -1;
    // Distances: for a win the least over the children that keep it, for a loss the most.
    int best_dtz = wdl > 0 ? 1 << 20 : 0;
    for (uint32_t i = 0; i < n; ++i) {
        const Move m      = moves[i];
        const bool zeroes = p.board[move_to(m)] != EMPTY || piece_type(p.board[move_from(m)]) == PAWN;
        make_move(t, m);
        int cw = 0, cd = 0;
        const bool ok = tb_probe_wdl(t, cw) && tb_probe_dtz(t, cd);
        unmake_move(t);
        if (!ok) {
            ++c.failed;
            return;
        }
        const int s = cw > 0 ? -1 : cw < 0 ? 1 : 0;
        if (s > best_sign) best_sign = s;
        // Plies from here to the next zeroing move through this child, signed for us.
        const int through = zeroes ? (cw == TB_LOSS           ? 1
                                      : cw == TB_BLESSED_LOSS ? 101
                                      : cw == TB_WIN          ? -1
                                      : cw == TB_CURSED_WIN   ? -101
                                                              : 0)
                                   : (cd < 0   ? -cd + 1
                                      : cd > 0 ? -cd - 1
                                               : 0);
        if (wdl > 0 && through > 0 && through < best_dtz) best_dtz = through;
        if (wdl < 0 && through < best_dtz) best_dtz = through;
    }
    if (n == 0 && p.incheck) best_dtz = -1;
    const int sign = wdl > 0 ? 1 : wdl < 0 ? -1 : 0;
    if (sign != best_sign) ++c.wdl_wrong;
    if (wdl == 0) {
        if (dtz != 0) ++c.dtz_wrong;
    } else if (dtz != best_dtz) {
        const int diff = std::abs(dtz - best_dtz);
        // Wins within the rule and cursed ones must stay apart: 100 plies is the line.
        const bool kind_ok = (std::abs(wdl) == 2) == (std::abs(dtz) <= 100);
        if (diff <= 1 && kind_ok)
            ++c.dtz_inexact;
        else
            ++c.dtz_wrong;
    }
}

// Sets up the placement (table codes of White-first material, squares) with side to move;
// false when it is no legal position (two men on a square, a pawn on an end rank, the side not
// to move in check).
inline bool tb_set_placement(PositionStack& t, const uint8_t* codes, const int* squares, int n, int side) {
    char board[64];
    for (char& ch : board)
        ch = 0;
    static constexpr char letters[] = "PNBRQK";
    for (int i = 0; i < n; ++i) {
        const int s = squares[i], type = (codes[i] & 7) - 1;
        if (board[s]) return false;
        if (type == PAWN && (s < 8 || s >= 56)) return false;
        board[s] = codes[i] & 8 ? static_cast<char>(letters[type] + 32) : letters[type];
    }
    std::string fen;
    for (int r = 7; r >= 0; --r) {
        int empty = 0;
        for (int f = 0; f < 8; ++f) {
            const char ch = board[r * 8 + f];
            if (!ch) {
                ++empty;
                continue;
            }
            if (empty) fen += static_cast<char>('0' + empty);
            empty = 0;
            fen += ch;
        }
        if (empty) fen += static_cast<char>('0' + empty);
        if (r) fen += '/';
    }
    fen += side == WHITE ? " w - - 0 1" : " b - - 0 1";
    setboard(t, fen.c_str());
    // The side not to move must not be in check.
    const int their_king = side == WHITE ? t.pos->bking : t.pos->wking;
    if (attackers_to(*t.pos, their_king, occupancy(*t.pos)) & t.pos->colour_bb[side]) return false;
    return true;
}

// The table codes of a material, in a fixed order.
inline int tb_codes(const TbMaterial& m, uint8_t* codes) {
    int n = 0;
    for (int code = 0; code < 16; ++code)
        for (int k = 0; k < m.count[code]; ++k)
            codes[n++] = static_cast<uint8_t>(code);
    return n;
}
