// The move stack shared by all generators. The moves of search ply p are the records from ply_list_start[p]
// up to, not including, ply_list_start[p + 1].
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <span>

namespace quelmar {

// No position that fits on 64 squares has more moves: a square can be entered along 8 lines and from 8
// knight squares, a last rank besides by 3 pawns in 4 promotions each.
inline constexpr int MAX_MOVES_IN_POSITION = 1200;
inline constexpr int MOVE_LIST_PLIES = 84;

struct MoveList {
    // Room for the longest list at every ply, so that no position can overflow it; pages that no real game
    // touches cost nothing.
    Table<Move, MAX_MOVES_IN_POSITION * MOVE_LIST_PLIES> move_stack;
    Table<Move*, MOVE_LIST_PLIES> ply_list_start{};

    Move*& start_of(int ply) { return ply_list_start[ply]; }
    // The moves of the current search ply.
    std::span<Move> current() { return {start_of(position.search_ply), start_of(position.search_ply + 1)}; }
};

inline MoveList move_list;  // written by the generators and the null move

}  // namespace quelmar
