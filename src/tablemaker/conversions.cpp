#include "tablemaker/conversions.h"

#include "tablemaker/error.h"
#include "tablemaker/men.h"
#include "tablemaker/values.h"

#include <algorithm>

namespace quelmar::tablemaker {

namespace {

// Orders conversions for the side that chooses: quick wins, slow wins, draws, slow losses, quick losses,
// none.
int rank_of_conversion(u8 value) {
    if (value == HOLDS_DRAW)
        return 256;
    return is_win(value) ? 1024 - value : value;
}

Men without(Men men, std::size_t victim) {
    std::move(men.man.begin() + static_cast<std::ptrdiff_t>(victim) + 1, men.man.end(),
              men.man.begin() + static_cast<std::ptrdiff_t>(victim));
    --men.count;
    return men;
}

// Who is on the board after a conversion; victim or promoter 0 for none.
Men men_after(Men men, std::size_t victim, std::size_t promoter, Piece promotion) {
    if (promoter != 0)
        men.man[promoter].kind = promotion;
    return victim == 0 ? men : without(men, victim);
}

// Whether `promoter` can become something else while `victim` disappears; 0 stands for nobody.
bool can_happen(const Men& men, std::size_t victim, std::size_t promoter) {
    if (victim == 1 || promoter == 1 || (victim == 0 && promoter == 0))
        return false;
    return promoter == 0 || (men.man[promoter].kind == PAWN &&
                             (victim == 0 || men.man[victim].side != men.man[promoter].side));
}

template <typename F> void for_each_change(const Men& men, const F& f) {
    for (std::size_t victim = 0; victim < men.count; ++victim)
        for (std::size_t promoter = 0; promoter < men.count; ++promoter)
            if (can_happen(men, victim, promoter))
                for (Piece kind = promoter == 0 ? QUEEN : KNIGHT; kind <= QUEEN; ++kind)
                    f(victim, promoter, promoter == 0 ? EMPTY : kind);
}

}  // namespace

u8 better_conversion(u8 a, u8 b) {
    return rank_of_conversion(a) >= rank_of_conversion(b) ? a : b;
}

std::vector<int> Conversions::endings_below(const Men& men) {
    std::vector<int> endings;
    for_each_change(men, [&](std::size_t victim, std::size_t promoter, Piece promotion) {
        const Men below = men_after(men, victim, promoter, promotion);
        if (below.count > 2)
            endings.push_back(ending_of(below));
    });
    std::sort(endings.begin(), endings.end());
    endings.erase(std::unique(endings.begin(), endings.end()), endings.end());
    return endings;
}

Conversions::Conversions(TableStore& store, const Men& men) : men_(men) {
    for_each_change(men, [&](std::size_t victim, std::size_t promoter, Piece promotion) {
        Result& result = results_[victim][promoter][promotion];
        result.men = men_after(men, victim, promoter, promotion);
        result.values = std::make_unique<EndingValues>(store, result.men);
    });
}

u8 Conversions::value_of(const Squares& squares, Side side, const Conversion& move) const {
    const std::size_t promoter = move.promotion == EMPTY ? NOBODY : move.mover;
    const Result& result = results_[move.victim][promoter][move.promotion];
    Squares to = squares;
    to[move.mover] = static_cast<u8>(move.to);
    if (move.victim != NOBODY)
        std::move(to.begin() + static_cast<std::ptrdiff_t>(move.victim) + 1, to.end(),
                  to.begin() + static_cast<std::ptrdiff_t>(move.victim));
    if (in_check(result.men, to, side))
        return OPEN;
    const u8 theirs = value_of_byte(result.values->byte(result.men, to, other_side(side)));
    if (theirs == ILLEGAL || theirs >= value_of_plies(DEEPEST_WIN))
        throw TablemakerError(ending_name(result.men, WHITE) + ": a legal position has no usable value");
    return theirs == OPEN ? HOLDS_DRAW : static_cast<u8>(theirs + 1);
}

u8 Conversions::best_promotion(const Squares& squares, Side side, Conversion move) const {
    u8 best = OPEN;
    for (move.promotion = KNIGHT; move.promotion <= QUEEN; ++move.promotion)
        best = better_conversion(best, value_of(squares, side, move));
    return best;
}

u8 Conversions::best_of_man(const Squares& squares, Side side, std::size_t mover, SquareSet occupied) const {
    const Man man = men_.man[mover];
    const int from = squares[mover];
    const SquareSet reach = man.kind == PAWN ? pawn_attacks(side, from) : attacks(man.kind, from, occupied);
    const bool promotes = man.kind == PAWN && relative_rank(side, from) == 6;
    u8 best = OPEN;
    for (std::size_t victim = 2; victim < men_.count; ++victim) {
        if (men_.man[victim].side == side || (reach & bit(squares[victim])) == 0)
            continue;
        const Conversion capture{mover, victim, EMPTY, squares[victim]};
        best = better_conversion(best, promotes ? best_promotion(squares, side, capture)
                                                : value_of(squares, side, capture));
    }
    if (promotes && (occupied & bit(from + pawn_step(side))) == 0)
        best = better_conversion(
            best, best_promotion(squares, side, {mover, NOBODY, EMPTY, from + pawn_step(side)}));
    return best;
}

u8 Conversions::best(const Squares& squares, Side side) const {
    const SquareSet occupied = occupied_squares(men_, squares);
    u8 best = OPEN;
    for (std::size_t i = 0; i < men_.count; ++i)
        if (men_.man[i].side == side)
            best = better_conversion(best, best_of_man(squares, side, i, occupied));
    return best;
}

u8 Conversions::best_en_passant(const Squares& squares, Side side, int victim_square) const {
    const int passed = victim_square + pawn_step(side);
    const SquareSet capturers = en_passant_capturers(men_, squares, other_side(side), passed);
    const auto victim = static_cast<std::size_t>(
        std::find(squares.begin() + 2, squares.end(), victim_square) - squares.begin());
    u8 best = OPEN;
    for (std::size_t i = 2; i < men_.count; ++i)
        if ((capturers & bit(squares[i])) != 0)
            best = better_conversion(best, value_of(squares, side, {i, victim, EMPTY, passed}));
    return best;
}

}  // namespace quelmar::tablemaker
