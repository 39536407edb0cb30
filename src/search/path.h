// The moves that led to the current node, as the rules of the search see them. A null move, or no move at
// all, captures nothing, promotes nothing, checks nobody and goes nowhere: it reads as an empty move,
// whatever the stack entry still holds.
#pragma once

#include "board/position.h"
#include "eval/outputs.h"

namespace quelmar {

inline constexpr Move NO_MOVE{};

// The opponent's last move.
inline const Move& move_before() {
    if (position.game_ply < 1)
        return NO_MOVE;
    const Move& move = position.back(1).move;
    return move.from != 0 ? move : NO_MOVE;
}

// The last move of the side to move, two plies back.
inline const Move& own_move_before() {
    if (position.game_ply < 2)
        return NO_MOVE;
    const Move& move = position.back(2).move;
    return move.from != 0 ? move : NO_MOVE;
}

// Whether the side to move can take the king, so that the move before was illegal. evaluate() must have seen
// the position.
inline bool is_enemy_king_en_prise() {
    const Side us = position.side_to_move;
    return contains(attacks_of(us).attacked, position.king_square(other_side(us)));
}

// Whether the king of `side` stands `by` or more units worse than at the previous ply. Danger is 0 or
// negative.
inline bool king_cover_lost(Side side, int by) {
    const int ply = position.search_ply;
    if (ply == 0)
        return false;
    const int colour = side;
    return outputs_at(ply - 1).ply_king_danger[colour] - outputs_at(ply).ply_king_danger[colour] >= by;
}

}  // namespace quelmar
