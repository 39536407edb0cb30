// Attack sets as 64-bit sets of squares (a1 = bit 0, h8 = bit 63), for the passes over whole tables.
#pragma once

#include "board/types.h"

namespace quelmar::tablemaker {

using SquareSet = u64;

constexpr SquareSet bit(int square) {
    return SquareSet{1} << square;
}

// Takes the lowest square out of a set that is not empty.
inline int pop_square(SquareSet& set) {
    const int square = __builtin_ctzll(set);
    set &= set - 1;
    return square;
}

// Squares that a man of `kind` (KNIGHT..KING) on `square` attacks; sliders stop at the first occupied square,
// which still belongs to the set.
SquareSet attacks(Piece kind, int square, SquareSet occupied);

// Squares that a pawn attacks.
SquareSet pawn_attacks(Side side, int square);

}  // namespace quelmar::tablemaker
