#include "tablemaker/men.h"

#include "tablebase/catalogue.h"
#include "tablemaker/error.h"

#include <algorithm>

namespace quelmar::tablemaker {

bool Men::has_pawn(Side side) const {
    return std::find(man.begin(), man.begin() + static_cast<std::ptrdiff_t>(count), Man{side, PAWN}) !=
           man.begin() + static_cast<std::ptrdiff_t>(count);
}

std::optional<Men> men_named(std::string_view name) {
    constexpr std::string_view LETTERS = " pnbrq";
    const bool two_kings = name.starts_with('k') && std::count(name.begin(), name.end(), 'k') == 2;
    if (!two_kings || name.size() > MAX_MEN || name.find_first_not_of("pnbrqk") != std::string_view::npos)
        return std::nullopt;
    Men men;
    men.man[0] = {WHITE, KING};
    men.man[1] = {BLACK, KING};
    men.count = 2;
    Side side = BLACK;
    for (const char letter : name) {
        if (letter == 'k')
            side = other_side(side);
        else
            men.man[men.count++] = {side, static_cast<Piece>(LETTERS.find(letter))};
    }
    return men;
}

Men ending_men(int number) {
    const std::string_view name = ending(number).name;
    const std::optional<Men> men = men_named(name);
    if (!men)
        throw TablemakerError(std::string(name) + ": endings of six men are not made");
    return *men;
}

int ending_of(const Men& men) {
    return std::max(ending_by_name(ending_name(men, WHITE)), ending_by_name(ending_name(men, BLACK)));
}

std::string ending_name(const Men& men, Side first) {
    std::string name;
    for (const Side side : {first, other_side(first)}) {
        name += 'k';
        for (Piece kind = QUEEN; kind >= PAWN; --kind)
            for (std::size_t i = 2; i < men.count; ++i)
                if (men.man[i] == Man{side, kind})
                    name += LOWER_LETTERS[kind];
    }
    return name;
}

SquareSet occupied_squares(const Men& men, const Squares& squares) {
    SquareSet set = 0;
    for (std::size_t i = 0; i < men.count; ++i)
        set |= bit(squares[i]);
    return set;
}

SquareSet occupied_squares(const Men& men, const Squares& squares, Side side) {
    SquareSet set = 0;
    for (std::size_t i = 0; i < men.count; ++i)
        if (men.man[i].side == side)
            set |= bit(squares[i]);
    return set;
}

bool in_check(const Men& men, const Squares& squares, Side side) {
    const SquareSet king = bit(squares[static_cast<std::size_t>(side)]);
    const SquareSet occupied = occupied_squares(men, squares);
    for (std::size_t i = 0; i < men.count; ++i) {
        const Man man = men.man[i];
        if (man.side == side)
            continue;
        const SquareSet set =
            man.kind == PAWN ? pawn_attacks(man.side, squares[i]) : attacks(man.kind, squares[i], occupied);
        if ((set & king) != 0)
            return true;
    }
    return false;
}

SideSquares side_squares(const Men& men, const Squares& squares, Side side) {
    SideSquares result;
    result.king = squares[static_cast<std::size_t>(side)];
    for (std::size_t i = 2; i < men.count; ++i) {
        if (men.man[i].side != side)
            continue;
        const int row = men.man[i].kind - PAWN;
        result.men[row][result.count[row]++] = squares[i];
    }
    return result;
}

}  // namespace quelmar::tablemaker
