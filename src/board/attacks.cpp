#include "board/attacks.h"

#include "board/position.h"

namespace quelmar {

namespace {

// The border is wide enough that the contact squares of any playing square lie inside the 256 squares.
template <Side Attacker> bool attacked_in_contact(Square square) {
    using Face = Facing<Attacker>;
    if (position.at(square - Face::FORWARD + 1) == Face::OUR_PAWN ||
        position.at(square - Face::FORWARD - 1) == Face::OUR_PAWN)
        return true;
    for (int i = 0; i < king_offsets.size(); ++i) {
        if (position.at(square + knight_offsets[i]) == Face::OUR_KNIGHT ||
            position.at(square + king_offsets[i]) == Face::OUR_KING)
            return true;
    }
    return false;
}

// Whether the first man on one of the lines from `square` is `slider` or a queen.
bool attacked_along(Square square, const Table<int, 4>& directions, Piece slider, Piece queen) {
    for (const int direction : directions) {
        Square target = square + direction;
        while (position.at(target) == EMPTY)
            target += direction;
        const Piece man = position.at(target);
        if (man == slider || man == queen)
            return true;
    }
    return false;
}

template <Side Attacker> bool attacked_by(Square square) {
    using Face = Facing<Attacker>;
    return attacked_in_contact<Attacker>(square) ||
           attacked_along(square, bishop_directions, Face::OUR_BISHOP, Face::OUR_QUEEN) ||
           attacked_along(square, rook_directions, Face::OUR_ROOK, Face::OUR_QUEEN);
}

}  // namespace

bool is_square_attacked(Square square, Side attacker) {
    return attacker == WHITE ? attacked_by<WHITE>(square) : attacked_by<BLACK>(square);
}

bool in_check(Side side) {
    return is_square_attacked(position.king_square(side), other_side(side));
}

}  // namespace quelmar
