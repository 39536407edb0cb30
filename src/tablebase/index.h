// Where a position stands in its table.
//
// Squares are numbered a1 = 0, b1 = 1, ... h8 = 63 here.
#pragma once

#include "board/types.h"

namespace quelmar {

// The men of one side: for each kind (PAWN..QUEEN, in this order, so kind - 1 is the row) up to three
// squares, in any order.
struct SideSquares {
    Table<Table<u8, 3>, 5> men{};
    Table<u8, 5> count{};
    u8 king = 0;
};

inline constexpr int NO_EP_SQUARE = 127;
inline constexpr u32 NO_INDEX = 0xFFFFFFFF;  // above every entry count

// Builds the placement, count and base tables; later calls do nothing.
void build_index_tables();

// Index of a position of `ending` (1..178) with `side` to move in the table's own sense: WHITE means the side
// of the first group of the name. `first` and `second` hold the men of the two groups, as many as the name
// says; `mirror` is 1 when the colours were exchanged to get there. `ep_square` is the square a capturing
// pawn would go to, else NO_EP_SQUARE; where no pawn can capture it makes no difference. For a legal position
// the result is below the ending's entry count; for others it is NO_INDEX or some number below the index
// range.
u32 table_index(int ending, Side side, const SideSquares& first, const SideSquares& second, int ep_square,
                int mirror);

// One more than the highest number the construction can give. The file may be shorter, see Ending.
u64 index_range(int ending, Side side);

}  // namespace quelmar
