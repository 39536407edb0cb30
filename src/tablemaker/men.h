// The men of an ending and where they stand.
//
// WHITE here means the side of the first group of the ending's name. Squares are a1 = 0 ... h8 = 63.
#pragma once

#include "tablebase/index.h"
#include "tablemaker/attacks.h"

#include <optional>
#include <string>
#include <string_view>

namespace quelmar::tablemaker {

inline constexpr std::size_t MAX_MEN = 5;  // kings included: six-men tables need memory of another order

struct Man {
    Side side = WHITE;
    Piece kind = EMPTY;
    bool operator==(const Man&) const = default;
};

using Squares = std::array<u8, MAX_MEN>;

// Who is on the board: man 0 is White's king, man 1 Black's, the others follow, White's first.
struct Men {
    std::size_t count = 0;
    std::array<Man, MAX_MEN> man{};

    bool has_pawn(Side side) const;
};

// The men of a name of kings and others in any order, "krkq"; nothing if it is no name or has more than
// MAX_MEN.
std::optional<Men> men_named(std::string_view name);

// The men of a catalogued ending in the order of its name. Throws TablemakerError for one of more than
// MAX_MEN.
Men ending_men(int ending);

// The name of the ending with these men, the first group being that of `first`.
std::string ending_name(const Men& men, Side first);

// The number of the ending with these men, whichever side comes first in its name; 0 if there is none.
int ending_of(const Men& men);

SquareSet occupied_squares(const Men& men, const Squares& squares);
SquareSet occupied_squares(const Men& men, const Squares& squares, Side side);

// Whether the king of `side` is attacked.
bool in_check(const Men& men, const Squares& squares, Side side);

SideSquares side_squares(const Men& men, const Squares& squares, Side side);

constexpr int forward(Side side) {
    return side == WHITE ? 8 : -8;
}
// Rank 0..7 counted from the side's own first rank.
constexpr int relative_rank(Side side, int square) {
    return side == WHITE ? square / 8 : 7 - square / 8;
}

}  // namespace quelmar::tablemaker
