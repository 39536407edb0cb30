// Where pawns stand, as a side sees it.
#pragma once

#include "board/position.h"
#include "board/square_tables.h"

namespace quelmar {

inline constexpr int RANK_1 = 0, RANK_2 = 1, RANK_3 = 2, RANK_4 = 3, RANK_5 = 4, RANK_6 = 5, RANK_7 = 6,
                     RANK_8 = 7;
inline constexpr int FILE_A = 0, FILE_B = 1, FILE_C = 2, FILE_D = 3, FILE_E = 4, FILE_F = 5, FILE_G = 6,
                     FILE_H = 7;

template <Side Us> bool own_pawn_on(Square square) {
    return position.at(square) == Facing<Us>::OUR_PAWN;
}
template <Side Us> bool enemy_pawn_on(Square square) {
    return position.at(square) == Facing<Us>::THEIR_PAWN;
}

// Whether an enemy pawn attacks the square from in front.
template <Side Us> bool attacked_by_enemy_pawn(Square square) {
    return enemy_pawn_on<Us>(square + Facing<Us>::FORWARD - 1) ||
           enemy_pawn_on<Us>(square + Facing<Us>::FORWARD + 1);
}

// A playing square as `Us` sees it from its own first rank.
template <Side Us> constexpr Square seen_by(Square square) {
    return Us == WHITE ? square : flip_rank(square);
}

}  // namespace quelmar
