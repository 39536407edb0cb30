// Who attacks a square. Both questions only read the position.
#pragma once

#include "board/types.h"

namespace quelmar {

// The orders are behaviour: they are the orders in which generators try directions.
inline constexpr std::array<int, 8> knight_offsets = {14, -14, 18, -18, 31, -31, 33, -33};
inline constexpr std::array<int, 8> king_offsets = {1, -1, 16, -16, 15, -15, 17, -17};
inline constexpr std::array<int, 4> rook_directions = {1, -1, 16, -16};
inline constexpr std::array<int, 4> bishop_directions = {15, -15, 17, -17};

// Whether a man of `attacker` attacks the playing square; what stands on it does not matter.
bool is_square_attacked(Square square, Side attacker);

// Whether the king of `side` is attacked.
bool in_check(Side side);

}  // namespace quelmar
