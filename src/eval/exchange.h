// What happens on one square when both sides capture there in turn.
#pragma once

#include "board/types.h"
#include "eval/outputs.h"

namespace quelmar {

// Score, in piece_value units from the mover's view, of the exchange started by moving the man on `from` to
// `to`. Plays it out on the board with x-ray attackers; en passant and promotions are not considered.
[[gnu::noinline]] int static_exchange(Square from, Square to);

// Material (pawn 1, minor 3, rook 5, queen 10, king 100) that `piece` would lose on a square with these
// attack bytes, 0..100. Slow; the table below holds all its values.
int attack_byte_exchange(Piece piece, int white_byte, int black_byte);

// Fills the table. Called once at start-up.
void build_exchange_table();

// The rank of a man's worth in the table, by piece code: nothing, pawn, minor, rook, queen, king.
inline constexpr int WORTHS = 6;
inline constexpr Table<u8, 13> worth_of_piece = {0, 1, 2, 2, 3, 4, 5, 1, 2, 2, 3, 4, 5};

// [worth][attack_pair of the capturing side's byte and the owner's], filled by build_exchange_table.
inline constexpr int ATTACK_PAIRS = 65536;
extern Table<Table<u8, ATTACK_PAIRS>, WORTHS> exchange_table;

inline int exchange_loss(Piece piece, int pair) {
    return exchange_table[worth_of_piece[piece]][pair];
}
inline int exchange_loss(Piece piece, int white_byte, int black_byte) {
    return exchange_loss(piece, piece > WHITE_KING ? attack_pair(white_byte, black_byte)
                                                   : attack_pair(black_byte, white_byte));
}

// By colour: the men but for the king that would lose material if both sides captured on their squares.
// Written by find_threats.
extern Table<SquareSet, 2> endangered_men;

// Lists the three men of each side that are most in danger in the current stack entry, from the attack maps
// that evaluate() has just left for this position.
void find_threats();

}  // namespace quelmar
