// Where the men stand, as sets: one per man and one per side, kept by make and unmake beside the board.
#pragma once

#include "board/square_set.h"
#include "board/types.h"

namespace quelmar {

class PieceSets {
public:
    // The squares of a man, 1..12, or of all men of a side.
    SquareSet of_man(Piece man) const { return men_[man]; }
    SquareSet of_side(Side side) const { return sides_[side]; }
    SquareSet occupied() const { return sides_[WHITE] | sides_[BLACK]; }

    // Puts a man on each of `squares`, or takes it away where it stands.
    void toggle(Piece man, SquareSet squares) {
        men_[man] ^= squares;
        sides_[side_of(man)] ^= squares;
    }

    bool operator==(const PieceSets&) const = default;

private:
    Table<SquareSet, OFF_BOARD> men_{};
    Table<SquareSet, 2> sides_{};
};

}  // namespace quelmar
