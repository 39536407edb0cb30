// The men of an ending and where they stand.
//
// WHITE here means the side of the first group of the ending's name. Squares are a1 = 0 ... h8 = 63.
#pragma once

#include "board/reach.h"
#include "board/square_set.h"
#include "tablebase/index.h"

#include <array>
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

constexpr SquareSet bit(int square) {
    return SquareSet{1} << square;
}

// Squares that a man of `kind` (KNIGHT..KING) on `square` attacks; sliders stop at the first occupied square,
// which still belongs to the set.
inline SquareSet attacks(Piece kind, int square, SquareSet occupied) {
    switch (kind) {
    case KNIGHT:
        return knight_reach_of(square);
    case BISHOP:
        return bishop_reach(square, occupied);
    case ROOK:
        return rook_reach(square, occupied);
    case QUEEN:
        return bishop_reach(square, occupied) | rook_reach(square, occupied);
    case KING:
        return king_reach_of(square);
    default:
        return NO_SQUARES;
    }
}

// Squares that a pawn attacks.
inline SquareSet pawn_attacks(Side side, int square) {
    const SquareSet beside = to_west(bit(square)) | to_east(bit(square));
    return side == WHITE ? forward<WHITE>(beside) : forward<BLACK>(beside);
}

SquareSet occupied_squares(const Men& men, const Squares& squares);
SquareSet occupied_squares(const Men& men, const Squares& squares, Side side);

// Whether the king of `side` is attacked.
bool in_check(const Men& men, const Squares& squares, Side side);

SideSquares side_squares(const Men& men, const Squares& squares, Side side);

constexpr int pawn_step(Side side) {
    return side == WHITE ? 8 : -8;
}
// Rank 0..7 counted from the side's own first rank.
constexpr int relative_rank(Side side, int square) {
    return side == WHITE ? square / 8 : 7 - square / 8;
}

// Moves that stay within an ending, forwards and backwards, as sets of squares.

// Where a man can go without capturing or promoting; checks are not looked at.
inline SquareSet quiet_targets(Man man, int square, SquareSet occupied) {
    if (man.kind != PAWN)
        return attacks(man.kind, square, occupied) & ~occupied;
    const int step = pawn_step(man.side), rank = relative_rank(man.side, square);
    if (rank == 6 || (occupied & bit(square + step)) != 0)
        return 0;
    SquareSet set = bit(square + step);
    if (rank == 1)
        set |= bit(square + 2 * step) & ~occupied;
    return set;
}

// Where the man can have come from by such a move.
inline SquareSet retreat_squares(Man man, int square, SquareSet occupied) {
    if (man.kind != PAWN)
        return attacks(man.kind, square, occupied) & ~occupied;
    const int step = pawn_step(man.side), rank = relative_rank(man.side, square);
    if (rank == 1 || (occupied & bit(square - step)) != 0)
        return 0;
    SquareSet set = bit(square - step);
    if (rank == 3)
        set |= bit(square - 2 * step) & ~occupied;
    return set;
}

// Pawns that could capture a pawn of `pusher` en passant on `passed`: a set of squares.
inline SquareSet en_passant_capturers(const Men& men, const Squares& squares, Side pusher, int passed) {
    SquareSet pawns = 0;
    for (std::size_t i = 2; i < men.count; ++i)
        if (men.man[i] == Man{other_side(pusher), PAWN})
            pawns |= bit(squares[i]);
    return pawn_attacks(pusher, passed) & pawns;
}

// Whether going from `from` to `to` lets the other side capture en passant. Such a position is not the same
// as the one in which the pawn has stood there before.
inline bool opens_en_passant(const Men& men, const Squares& squares, std::size_t i, int from, int to) {
    return men.man[i].kind == PAWN && (to - from == 16 || from - to == 16) &&
           en_passant_capturers(men, squares, men.man[i].side, (from + to) / 2) != 0;
}

// Calls f(square) for every square of a pawn that may just have made its double step and could be captured en
// passant by `side`, which is to move.
template <typename F>
void for_each_en_passant(const Men& men, const Squares& squares, Side side, const F& f) {
    const SquareSet occupied = occupied_squares(men, squares);
    const Side pusher = other_side(side);
    for (std::size_t i = 2; i < men.count; ++i) {
        if (men.man[i] != Man{pusher, PAWN} || relative_rank(pusher, squares[i]) != 3)
            continue;
        const int passed = squares[i] - pawn_step(pusher), start = passed - pawn_step(pusher);
        if ((occupied & (bit(passed) | bit(start))) == 0 &&
            en_passant_capturers(men, squares, pusher, passed) != 0)
            f(static_cast<int>(squares[i]));
    }
}

}  // namespace quelmar::tablemaker
