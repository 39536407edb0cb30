// Control of the centre: twelve squares before the enemy's camp, weighed by place and by the kinds of men
// that bear on them.
//
// The value of a square, 0 to 7, is worked out for all squares at once, as three sets of which each holds one
// of its bits. Moved beside each other into one word, the three sets weigh with five counts: one per bit of
// what a square of a set is worth.
#include "eval/eval_context.h"

namespace quelmar {

namespace {

// By the kinds that bear on a square: pawn 1, minor 2, rook 4, queen 8, king 16.
constexpr Table<u8, 32> BY_KINDS = {0, 4, 2, 6, 1, 5, 3, 7, 1, 5, 3, 7, 2, 3, 3, 3,
                                    0, 4, 2, 6, 1, 5, 3, 3, 1, 5, 3, 3, 2, 2, 2, 2};
// Files c to f of the own fourth rank, then of the fifth and sixth.
constexpr Table<Table<u8, 4>, 3> WEIGHTS = {{{1, 2, 2, 1}, {2, 3, 3, 2}, {3, 4, 4, 3}}};

// The bits of every square's value.
struct Values {
    SquareSet fours, twos, ones;
};

constexpr Values values_of(SquareSet pawn, SquareSet minor, SquareSet rook, SquareSet queen, SquareSet king) {
    const SquareSet major = rook | queen, both_majors = rook & queen;
    return {pawn & ~both_majors & ~(king & minor & major), minor | both_majors,
            (major & ~both_majors) | (both_majors & ~king & (pawn | minor))};
}

// The formula is the table: square i is attacked by the kinds of index i.
static_assert([] {
    const Values values = values_of(0xAAAAAAAA, 0xCCCCCCCC, 0xF0F0F0F0, 0xFF00FF00, 0xFFFF0000);
    for (int i = 0; i < BY_KINDS.size(); ++i) {
        if (4 * (values.fours >> i & 1) + 2 * (values.twos >> i & 1) + (values.ones >> i & 1) != BY_KINDS[i])
            return false;
    }
    return true;
}());

// The sets of the twelve squares in one word: the ones keep their place on files c to f, the twos go four
// bits down, to files g to b, the fours three ranks, from below the first round to the last.
constexpr SquareSet in_one_word(const Values& values) {
    return values.ones | std::rotr(values.twos, 4) | std::rotr(values.fours, 24);
}

template <Side Us> constexpr Square centre_square(int row, int column) {
    return Facing<Us>::mirror(square_at(FILE_C + column, RANK_4 + row));
}

template <Side Us> constexpr SquareSet centre_squares() {
    SquareSet set = NO_SQUARES;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column)
            set |= set_of(centre_square<Us>(row, column));
    }
    return set;
}

// The bits of the word that are worth 2^bit, besides others.
template <Side Us> constexpr SquareSet worth_bit(int bit) {
    SquareSet set = NO_SQUARES;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            const SquareSet square = set_of(centre_square<Us>(row, column));
            const int weight = WEIGHTS[row][column];
            const auto where = [bit, square](int worth) { return (worth >> bit & 1) != 0 ? square : 0; };
            set |= in_one_word({where(4 * weight), where(2 * weight), where(weight)});
        }
    }
    return set;
}

template <Side Us> int centre_control() {
    constexpr SquareSet CENTRE = centre_squares<Us>();
    constexpr Table<SquareSet, 5> WORTH = {worth_bit<Us>(0), worth_bit<Us>(1), worth_bit<Us>(2),
                                           worth_bit<Us>(3), worth_bit<Us>(4)};
    const AttackMap& attacks = attacks_of(Us);
    const Values values =
        values_of(attacks.pawn(), attacks.minor(), attacks.rook(), attacks.queen(), attacks.king());
    const SquareSet word = in_one_word({values.fours & CENTRE, values.twos & CENTRE, values.ones & CENTRE});
    int control = 0;
    for (int bit = 0; bit < 5; ++bit)
        control += size_of(word & WORTH[bit]) << bit;
    return control;
}

}  // namespace

Table<int, 2> score_centre() {
    return {centre_control<WHITE>(), centre_control<BLACK>()};
}

}  // namespace quelmar
