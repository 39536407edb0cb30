// The moves that leave an ending, captures and promotions, and what they are worth by the tables they lead
// to.
#pragma once

#include "tablemaker/table_store.h"

#include <array>
#include <memory>

namespace quelmar::tablemaker {

// Of two values for the side that chooses (OPEN = no such move), the better.
u8 better_conversion(u8 a, u8 b);

class Conversions {
public:
    // Loads what the ending rests on; throws TablemakerError if a table is missing.
    Conversions(TableStore& store, const Men& men);

    // Numbers of the endings that captures and promotions of `men` lead to.
    static std::vector<int> endings_below(const Men& men);

    // The best of the conversions that `side` can legally make: a win or loss in the code of values.h that
    // counts the converting move, HOLDS_DRAW, or OPEN if there is none.
    u8 best(const Squares& squares, Side side) const;

    // The same of the captures en passant of the pawn on `victim`.
    u8 best_en_passant(const Squares& squares, Side side, int victim) const;

private:
    static constexpr std::size_t NOBODY = 0;  // a king can be neither captured nor promoted
    struct Result {
        Men men;
        std::unique_ptr<EndingValues> values;
    };
    // What one man does: goes to `to`, becomes `promotion` unless that is EMPTY, captures man `victim`.
    struct Conversion {
        std::size_t mover, victim;
        Piece promotion;
        int to;
    };

    u8 value_of(const Squares& squares, Side side, const Conversion& conversion) const;
    u8 best_of_man(const Squares& squares, Side side, std::size_t mover, SquareSet occupied) const;
    u8 best_promotion(const Squares& squares, Side side, Conversion conversion) const;

    Men men_;
    // By captured man, promoting man and kind of promotion.
    std::array<std::array<Table<Result, KING>, MAX_MEN>, MAX_MEN> results_;
};

}  // namespace quelmar::tablemaker
