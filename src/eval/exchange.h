// What happens on one square when both sides capture there in turn.
#pragma once

#include "board/types.h"

namespace quelmar {

// Score, in piece_value units from the mover's view, of the exchange started by moving the man on `from` to
// `to`. Plays it out on the board with x-ray attackers; en passant and promotions are not considered.
int static_exchange(Square from, Square to);

// Material (pawn 1, minor 3, rook 5, queen 10, king 100) that `piece` would lose on a square with these
// attack bytes, 0..100. Slow; the table below holds all its values.
int attack_byte_exchange(Piece piece, int white_byte, int black_byte);

// Fills the table. Called once at start-up.
void build_exchange_table();

// [piece][White's attack byte][Black's attack byte], filled by build_exchange_table.
extern Table<Table<Table<u8, 256>, 256>, 13> exchange_table;

inline int exchange_loss(Piece piece, int white_byte, int black_byte) {
    return exchange_table[piece][white_byte][black_byte];
}

// Lists the three men of each side that are most in danger in the current stack entry, from the attack maps
// that evaluate() has just left for this position.
void find_threats();

}  // namespace quelmar
