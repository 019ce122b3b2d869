#pragma once
// Position keys: the 781 Polyglot Random64 numbers, so the engine's key is also the book key.
// All of it is computed at compile time.

#include <cstdint>

#include "board/types.h"

extern const uint64_t Random64[781];
// By cflag: the keys of the rights it holds, combined.
extern const Table<uint64_t[16]> castle_keys_table;
inline constexpr auto& castle_keys = castle_keys_table.at;
extern const uint64_t turn_key;
// The key of the standard start position, as the book format publishes it.
inline constexpr uint64_t START_KEY = 0x463B96181691FC9CULL;

// By piece code and square: the piece's number, one load where the book's order would take two
// (codes without a piece hold 0 and are never looked up).
extern const Table<uint64_t[16][64]> piece_keys_table;
inline constexpr auto& piece_keys = piece_keys_table.at;

inline uint64_t piece_key(int code, int sq) {
    return piece_keys[code][sq];
}
inline uint64_t ep_key(int sq) {
    return Random64[772 + (sq & 7)];
}

// True when a pawn stands beside the double-pushed pawn, ready to take on en-passant square e
// (a black pawn for e on rank 3, a white pawn for e on rank 6); any other e, 64 included, is false.
// The file ranges keep the neighbour on the same rank as the pushed pawn.
inline bool ep_capturable(const Position& p, int e) {
    constexpr uint8_t white_pawn = piece_code(WHITE, PAWN), black_pawn = piece_code(BLACK, PAWN);
    return (e >= 17 && e <= 23 && p.board[e + 7] == black_pawn) ||
           (e >= 16 && e <= 22 && p.board[e + 9] == black_pawn) ||
           (e >= 40 && e <= 46 && p.board[e - 7] == white_pawn) ||
           (e >= 41 && e <= 47 && p.board[e - 9] == white_pawn);
}

uint64_t full_key(Position& p); // also normalises epsq to 64 when no capture is possible
void pawn_key(Position& p);     // stores the pawns-and-kings key in p.pawnkey
