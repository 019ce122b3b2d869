#include "board/notation.h"

#include <cstring>
#include <initializer_list>

#include "board/castling.h"

// By promotion type; 0 (and the unused types 5..7) add no letter.
static const char promo_letter[8] = {'\0', 'n', 'b', 'r', 'q', '\0', '\0', '\0'};
// By letter - 'b' for the letters b..r; letters that name no promotion piece give 0.
static const uint8_t promo_type[17] = {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 4, 3};

char* write_move(char* out, Move m) {
    if ((m & SQUARE_BITS) == 0) {
        for (const char* s = "(none)"; *s; ++s)
            *out++ = *s;
    } else {
        const int from = move_from(m), to = move_to(m);
        *out++ = static_cast<char>('a' + file_of(from));
        *out++ = static_cast<char>('1' + rank_of(from));
        *out++ = static_cast<char>('a' + file_of(to));
        *out++ = static_cast<char>('1' + rank_of(to));
        if (const char c = promo_letter[move_promo(m)]) *out++ = c;
    }
    *out = '\0';
    return out;
}

static char move_buffer[MOVE_TEXT_SIZE];

const char* move_text(Move m) {
    write_move(move_buffer, m);
    return move_buffer;
}

Move text_to_move(const char* s) {
    // Characters are not checked (the caller matches the word against the legal moves), but a
    // text shorter than four characters is never read past its end.
    int c[5]  = {0, 0, 0, 0, 0};
    bool ends = false;
    for (int i = 0; i < 5; ++i) {
        if (!ends && s[i] == '\0') ends = true;
        c[i] = ends ? 0 : static_cast<unsigned char>(s[i]);
    }
    const int from = (c[0] - 'a') + 8 * (c[1] - '1');
    const int to   = (c[2] - 'a') + 8 * (c[3] - '1');
    Move m         = static_cast<Move>(from * 64 + to) & MOVE_WORD_BITS;
    if (c[4] >= 'b' && c[4] <= 'r') m |= static_cast<Move>(promo_type[c[4] - 'b']) << 13;
    return m;
}

// O-O or O-O-O in n characters, with the letter O in either case or the digit zero.
static bool castle_letters(const char* s, int n) {
    for (int i = 0; i < n; ++i) {
        const bool dash = i % 2 == 1;
        if (dash ? s[i] != '-' : (s[i] != 'O' && s[i] != 'o' && s[i] != '0')) return false;
    }
    return true;
}

Move text_to_castle(const Position& p, const char* s) {
    const int us = p.side, k = king_square(p, us);
    int wing = -1; // 1 king side, 0 queen side
    if (castle_letters(s, 5))
        wing = 0;
    else if (castle_letters(s, 3))
        wing = 1;
    else {
        const Move w   = text_to_move(s);
        const int from = move_from(w), to = move_to(w);
        if (from != k || move_promo(w) || std::strlen(s) < 4) return 0;
        for (const bool king_side : {true, false}) {
            const int i = castle_index(us, king_side);
            if (!(p.cflag & castle_right(us, king_side))) continue;
            if (to == p.castle_rook[i] || (p.chess960 && to == castle_king_to(us, king_side)))
                wing = king_side;
        }
    }
    if (wing < 0 || !(p.cflag & castle_right(us, wing == 1))) return 0;
    const int r = p.castle_rook[castle_index(us, wing == 1)];
    return make_move_word(k, p.chess960 ? r : castle_king_to(us, wing == 1));
}
