#include "board/fen.h"

#include <cstdio>
#include <cstring>

#include "board/castling.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/material.h"
#include "board/playable.h"

static constexpr char PIECE_LETTERS[] = "PNBRQK00pnbrqk";

// Piece type of a lower-case FEN letter, -1 for anything else.
static int letter_type(char lower) {
    switch (lower) {
    case 'p':
        return PAWN;
    case 'n':
        return KNIGHT;
    case 'b':
        return BISHOP;
    case 'r':
        return ROOK;
    case 'q':
        return QUEEN;
    case 'k':
        return KING;
    default:
        return -1;
    }
}

// Reads the placement field into p and returns the address of the character that ended it
// (a space or the end of the text).
static const char* read_placement(Position& p, const char* s) {
    int n = 0; // a8 = 0, running along each rank towards h, then one rank down
    for (; *s && *s != ' '; ++s) {
        const char c = *s;
        if (c == '/') continue;
        if (c >= '0' && c <= '9') {
            n += c - '0';
            continue;
        }
        const int colour = c < 'b' ? WHITE : BLACK;
        const int type   = letter_type(static_cast<char>(colour == WHITE ? c - 'A' + 'a' : c));
        if (type >= 0 && n < 64) {
            const int sq = n ^ 56;
            p.board[sq]  = static_cast<uint8_t>(piece_code(colour, type));
            p.colour_bb[colour] |= bit(sq);
            if (type == KING)
                (colour == WHITE ? p.wking : p.bking) = static_cast<uint8_t>(sq);
            else
                p.type_bb[type] |= bit(sq);
        }
        ++n;
    }
    return s;
}

void setboard(PositionStack& game, const char* fen, bool chess960_game) {
    std::memset(static_cast<void*>(&game), 0, sizeof game);
    game.pos    = &game.stack[0];
    Position& p = *game.pos;
    std::memset(p.board, EMPTY, sizeof p.board);

    // Each field is read only while the text lasts: a text that ends early leaves black to move,
    // no castling rights and no en-passant square.
    const char* s = read_placement(p, fen);
    p.side        = BLACK;
    p.epsq        = NO_SQUARE;
    read_castling(p, "", chess960_game);
    if (*s && s[1]) {
        p.side = s[1] == 'w' ? WHITE : BLACK;
        if (s[2]) {
            s = read_castling(p, s + 3, chess960_game);
            if (*s && s[1] && s[1] != '-') p.epsq = static_cast<uint8_t>((s[1] - 'a') + 8 * (s[2] - '1'));
        }
    }

    // Rights the placement cannot back (a castling right without its king and rook in place, an
    // en-passant square no pawn has just passed) would let make-move conjure or move the wrong men.
    drop_unusable_rights(p);
    game.key        = full_key(p);
    game.histidx    = 0;
    game.keyhist[0] = game.key;
    p.phase         = compute_phase(p);
    pawn_key(p);
    material_init(p);
    set_pins(p);
}

void fen_text(const Position& p, char* out) {
    char* o = out;
    for (int rank = 7; rank >= 0; --rank) {
        int run = 0;
        for (int file = 0; file < 8; ++file) {
            const int code = p.board[rank * 8 + file];
            if (code == EMPTY) {
                ++run;
                continue;
            }
            if (run) *o++ = static_cast<char>('0' + run);
            run  = 0;
            *o++ = PIECE_LETTERS[code];
        }
        if (run) *o++ = static_cast<char>('0' + run);
        if (rank) *o++ = '/';
    }
    *o++ = ' ';
    *o++ = p.side == WHITE ? 'w' : 'b';
    *o++ = ' ';
    o    = write_castling(p, o);
    *o++ = ' ';
    if (p.epsq >= 8 && p.epsq < 56) {
        *o++ = static_cast<char>('a' + file_of(p.epsq));
        *o++ = static_cast<char>('1' + rank_of(p.epsq));
    } else {
        *o++ = '-';
    }
    *o = '\0';
}

void savepos(const Position& p) {
    char text[100];
    fen_text(p, text);
    std::printf("%s\n", text);
}

uint8_t compute_phase(const Position& p) {
    int weight = 0;
    for (int s = 0; s < 64; ++s)
        if (p.board[s] != EMPTY) weight += phase_weight[piece_type(p.board[s])];
    return static_cast<uint8_t>(weight >= PHASE_TOTAL ? 0 : PHASE_TOTAL - weight);
}
