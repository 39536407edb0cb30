// The legal moves of the game's position, as the front ends look at them.
#pragma once

#include "board/move_list.h"
#include "board/types.h"

namespace quelmar {

// The legal moves of the position at the root, ended by a record whose `from` is 0.
extern Table<Move, MAX_MOVES_IN_POSITION + 1> root_moves;

// Resets the search (so search_ply is 0) and fills root_moves, without captures of the enemy king, which a
// set-up position may offer; with an unusable position it is left empty.
void build_root_moves();

// The move of root_moves that `move` is; empty when it is none.
Move find_legal(const Move& move);

}  // namespace quelmar
