#pragma once

#include "board/types.h"

namespace quelmar {

inline constexpr int NO_CHECK = 0, DIRECT_CHECK = 1, DISCOVERED_CHECK = 2;

// How `move`, not yet made, checks the enemy king: the moved man (as it stands, not what it promotes to)
// attacks him from its destination, or it uncovers one of our sliders. Castling and en passant are not looked
// into.
int check_kind(const Move& move);

}  // namespace quelmar
