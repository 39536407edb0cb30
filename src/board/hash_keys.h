// The Zobrist keys, random numbers of a deterministic generator: every run of the program has the same keys.
// Castling rights and the en-passant square are not part of a key.
#pragma once

#include "board/types.h"

namespace quelmar {

// Fills the key tables; call once, at start-up.
void init_hash_keys();

// Both compute the key of the current position from the board alone.
HashKey compute_key();
u32 compute_pawn_key();

extern Table<Table<HashKey, BOARD_SIZE>, 13> zobrist_piece_square;  // [code][square]; row 0 is zero
extern HashKey zobrist_side;                                        // included when Black moves
extern Table<Table<u32, BOARD_SIZE>, 2> pawn_zobrist;               // [colour][square]

inline HashKey piece_key(Piece piece, Square square) {
    return zobrist_piece_square[piece][square];
}

}  // namespace quelmar
