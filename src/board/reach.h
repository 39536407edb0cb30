// Which squares a man reaches from a square, as sets.
//
// A line is asked with one subtraction: in (line's men) - 2 * (own square) the borrow runs from the slider
// upward to the first man and changes exactly the bits that it passes. The same on the board turned upside
// down gives the other direction. A rank cannot be turned that way; its answer is looked up by the six inner
// squares.
#pragma once

#include "board/square_set.h"

namespace quelmar {

// The squares of the lines through a square, by its index; without the square itself.
struct LinesThrough {
    SquareSet diagonal = 0;      // as a1-h8
    SquareSet antidiagonal = 0;  // as a8-h1
    SquareSet file = 0;
};
extern const Table<LinesThrough, 64> lines_through;

extern const Table<SquareSet, 64> knight_reach, king_reach;

// By file of the slider and by the men on files b to g of its rank.
extern const Table<Table<u8, 64>, 8> first_rank_reach;

inline const LinesThrough& lines_of(int index) {
    return lines_through[index];
}
inline SquareSet knight_reach_of(int index) {
    return knight_reach[index];
}
inline SquareSet king_reach_of(int index) {
    return king_reach[index];
}

// The squares of `line` up to and including the first of `men` either way.
inline SquareSet along(SquareSet line, int index, SquareSet men) {
    const SquareSet blockers = men & line;
    const SquareSet upward = blockers - (SquareSet{2} << index);
    const SquareSet downward = flip_ranks(flip_ranks(blockers) - (SquareSet{2} << (index ^ 56)));
    return (upward ^ downward) & line;
}

inline SquareSet along_rank(int index, SquareSet men) {
    const int rank_shift = index & 56;
    const auto inner = static_cast<int>(men >> (rank_shift + 1) & 63);
    return SquareSet{first_rank_reach[index & 7][inner]} << rank_shift;
}

// What a slider on the square of that index sees over a board with `men` on it, the first man of each line
// included.
inline SquareSet bishop_reach(int index, SquareSet men) {
    const LinesThrough& lines = lines_of(index);
    return along(lines.diagonal, index, men) | along(lines.antidiagonal, index, men);
}
inline SquareSet rook_reach(int index, SquareSet men) {
    return along(lines_of(index).file, index, men) | along_rank(index, men);
}

}  // namespace quelmar
