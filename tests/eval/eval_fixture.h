#pragma once
// Shared set-up of the evaluation tests: the start-up tables once per process, positions from FEN
// and the colour-flipped twin of a FEN.

#include <cctype>
#include <memory>
#include <sstream>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "eval/pawns.h"
#include "eval/tables.h"
#include "search/thread.h"

inline void init_eval_tables() {
    static const bool done = [] {
        attack_init();
        keys_init();
        pawn_masks_init();
        adjacent_files_init();
        pst_tables_init();
        return pawn_hash_alloc();
    }();
    (void)done;
}

// A game record whose slot 0 holds the position of the text.
inline std::unique_ptr<SearchThread> record_from_fen(const char* fen) {
    init_eval_tables();
    std::unique_ptr<SearchThread> game(new SearchThread);
    setboard(*game, fen);
    return game;
}

// The same position with the board turned over: ranks reversed, colours, side to move and castling
// rights exchanged, the en-passant square moved to the other side.
inline std::string flip_fen(const std::string& fen) {
    const auto swap_case = [](char ch) {
        return std::isupper(static_cast<unsigned char>(ch)) ? static_cast<char>(std::tolower(ch))
                                                            : static_cast<char>(std::toupper(ch));
    };
    std::istringstream in(fen);
    std::string placement, side = "w", castling = "-", ep = "-";
    in >> placement >> side >> castling >> ep;

    std::string ranks[8];
    int r = 0;
    for (char ch : placement) {
        if (ch == '/')
            ++r;
        else if (r < 8)
            ranks[r] += swap_case(ch);
    }
    std::string out = ranks[7];
    for (int i = 6; i >= 0; --i)
        out += "/" + ranks[i];

    if (castling != "-")
        for (char& ch : castling)
            ch = swap_case(ch);
    if (ep.size() == 2) ep[1] = static_cast<char>('1' + ('8' - ep[1]));
    return out + " " + (side == "w" ? "b" : "w") + " " + castling + " " + ep;
}
