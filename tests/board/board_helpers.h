#pragma once
// Shared by the board tests: one-time table set-up, a heap-allocated game record (it is far too
// large for a test's stack), square names and move lists in text form.

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "eval/tables.h"
#include "search/thread.h"

inline void init_board_tables() {
    static const bool done = [] {
        attack_init();
        keys_init();
        pst_tables_init();
        return true;
    }();
    (void)done;
}

inline std::unique_ptr<SearchThread> game_from(const char* fen) {
    init_board_tables();
    auto game = std::make_unique<SearchThread>();
    setboard(*game, fen);
    return game;
}

inline int sq(const char* s) {
    return (s[0] - 'a') + 8 * (s[1] - '1');
}

// A move word from its coordinate text (promotion letters included).
inline Move mv(const char* text) {
    return text_to_move(text);
}

inline std::string fen_of(const Position& p) {
    char text[100];
    fen_text(p, text);
    return text;
}

// The moves of a list as space-separated coordinate text, in list order.
inline std::string list_text(const Move* moves, uint32_t count) {
    std::string s;
    for (uint32_t i = 0; i < count; ++i) {
        if (i) s += ' ';
        s += move_text(moves[i]);
    }
    return s;
}

// The perft suite of tests/data: one position a line with ";Dn count" fields.
struct SuiteEntry {
    int line;
    std::string fen;
    std::vector<std::pair<int, uint64_t>> counts; // (depth, leaves)
};

inline std::vector<SuiteEntry> read_perft_suite() {
    std::ifstream in(std::string(MORVAINE_SOURCE_DIR) + "/tests/data/perft_suite.epd");
    std::vector<SuiteEntry> suite;
    std::string line;
    for (int n = 1; std::getline(in, line); ++n) {
        if (line.empty() || line[0] == '#') continue;
        SuiteEntry e{n, line.substr(0, line.find(';')), {}};
        while (!e.fen.empty() && e.fen.back() == ' ')
            e.fen.pop_back();
        for (size_t at = line.find(";D"); at != std::string::npos; at = line.find(";D", at + 1)) {
            std::istringstream fields(line.substr(at + 2));
            int depth       = 0;
            uint64_t leaves = 0;
            fields >> depth >> leaves;
            e.counts.emplace_back(depth, leaves);
        }
        suite.push_back(e);
    }
    return suite;
}

// Whether square s is attacked by the pieces of colour c, found by walking the board square by
// square (no bitboard tricks shared with the engine's own tests of check and pins).
inline bool attacked_by(const Position& p, int s, int c) {
    const int file = s & 7, rank = s >> 3;
    auto piece_at = [&](int f, int r) -> int {
        if (f < 0 || f > 7 || r < 0 || r > 7) return -1;
        return p.board[f + 8 * r];
    };
    auto is = [&](int code, int type) { return code >= 0 && code != EMPTY && code == piece_code(c, type); };
    const int pawn_rank = c == WHITE ? rank - 1 : rank + 1;
    if (is(piece_at(file - 1, pawn_rank), PAWN) || is(piece_at(file + 1, pawn_rank), PAWN)) return true;
    const int knight[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
    for (const auto& d : knight)
        if (is(piece_at(file + d[0], rank + d[1]), KNIGHT)) return true;
    for (int df = -1; df <= 1; ++df)
        for (int dr = -1; dr <= 1; ++dr) {
            if (!df && !dr) continue;
            if (is(piece_at(file + df, rank + dr), KING)) return true;
            const int slider = df && dr ? BISHOP : ROOK;
            for (int f = file + df, r = rank + dr;; f += df, r += dr) {
                const int code = piece_at(f, r);
                if (code < 0) break;
                if (code == EMPTY) continue;
                if (is(code, slider) || is(code, QUEEN)) return true;
                break;
            }
        }
    return false;
}

inline int king_of(const Position& p, int c) {
    for (int s = 0; s < 64; ++s)
        if (p.board[s] == piece_code(c, KING)) return s;
    return -1;
}

// Positions for property tests: the suite's positions and every position one or two plies from
// them (made through generate + legal + make_move), visited in a fixed order.
template <typename Visit> void walk(SearchThread& t, int depth, Visit visit) {
    visit(t);
    if (depth == 0) return;
    MoveList list;
    uint32_t n = 0;
    gen_captures(*t.pos, list.moves, &list.count, 1);
    gen_quiets(*t.pos, list.moves + list.count, &n);
    list.count += n;
    for (uint32_t i = 0; i < list.count; ++i) {
        if (!legal(*t.pos, list.moves[i])) continue;
        make_move(t, list.moves[i]);
        walk(t, depth - 1, visit);
        unmake_move(t);
    }
}

template <typename Visit> void walk_suite(int depth, Visit visit) {
    for (const auto& e : read_perft_suite()) {
        auto game = game_from(e.fen.c_str());
        walk(*game, depth, visit);
    }
}

// True when the move is one of the legal moves of the position (the search's quiet mark aside).
inline bool is_legal_move(const Position& p, Move m) {
    Move list[MAX_MOVES];
    uint32_t n = 0;
    if (p.incheck) {
        gen_evasions(p, list, &n, 1);
    } else {
        uint32_t quiets = 0;
        gen_captures(p, list, &n, 1);
        gen_quiets(p, list + n, &quiets);
        n += quiets;
    }
    for (uint32_t i = 0; i < n; ++i)
        if ((list[i] & 0xFFFF) == (m & 0xFFFF & ~QUIET_MARK) && legal(p, list[i])) return true;
    return false;
}
