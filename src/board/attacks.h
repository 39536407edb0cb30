// Who attacks a square. Both questions only read the position.
#pragma once

#include "board/types.h"

namespace quelmar {

// The orders are behaviour: they are the orders in which generators try directions.
inline constexpr Table<int, 8> knight_offsets = {14, -14, 18, -18, 31, -31, 33, -33};
inline constexpr Table<int, 8> king_offsets = {1, -1, 16, -16, 15, -15, 17, -17};
inline constexpr Table<int, 4> rook_directions = {1, -1, 16, -16};
inline constexpr Table<int, 4> bishop_directions = {15, -15, 17, -17};

// Of a step along a line, which is one of the directions above.
constexpr bool is_diagonal(int step) {
    return step != 1 && step != -1 && step != 16 && step != -16;
}

// Whether a man of `attacker` attacks the playing square; what stands on it does not matter.
bool is_square_attacked(Square square, Side attacker);

// Whether the king of `side` is attacked.
bool in_check(Side side);

}  // namespace quelmar
