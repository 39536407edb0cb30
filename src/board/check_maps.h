// From which squares the side to move would give check, and which of its men uncover one. Built once per
// generator call, they give every move its gives-check flag without playing it. Also the kind of check of one
// move.
#pragma once

#include "board/types.h"

namespace quelmar {

inline constexpr u8 CHECK_BY_PAWN = 1, CHECK_BY_KNIGHT = 2, CHECK_BY_BISHOP = 4, CHECK_BY_ROOK = 8,
                    CHECK_BY_QUEEN = 16;

// CHECK_BY_ bits per square for the side to move of the last build.
extern Table<u8, BOARD_SIZE> check_square_map;

// For a man that alone shields the enemy king from an own slider: the absolute step of that line (1, 15, 16,
// 17); 0 elsewhere.
extern Table<u8, BOARD_SIZE> discovery_map;

void build_check_maps();

enum class CheckKind { NONE, DIRECT, DISCOVERED };

// How `move`, not yet made, checks the enemy king: the moved man (as it stands, not what it promotes to)
// attacks him from its destination, or it uncovers one of our sliders. Castling and en passant are not looked
// into.
CheckKind check_kind(const Move& move);

}  // namespace quelmar
