#include "tablemaker/attacks.h"

namespace quelmar::tablemaker {

namespace {

struct Step {
    int file, rank;
};

// The first four directions lead to higher square numbers, the last four to lower ones.
constexpr Table<Step, 8> DIRECTIONS{{{0, 1}, {1, 0}, {1, 1}, {-1, 1}, {0, -1}, {-1, 0}, {-1, -1}, {1, -1}}};
constexpr Table<Step, 8> KNIGHT_STEPS{
    {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};
constexpr int FIRST_DESCENDING = 4;

using PerSquare = Table<SquareSet, 64>;

constexpr SquareSet reach(int square, Step step, int longest) {
    SquareSet set = 0;
    int file = square % 8 + step.file, rank = square / 8 + step.rank;
    for (; longest > 0 && file >= 0 && file < 8 && rank >= 0 && rank < 8; --longest) {
        set |= bit(8 * rank + file);
        file += step.file;
        rank += step.rank;
    }
    return set;
}

constexpr PerSquare per_square(const auto& steps, int longest) {
    PerSquare table{};
    for (int square = 0; square < 64; ++square)
        for (const Step& step : steps)
            table[square] |= reach(square, step, longest);
    return table;
}

constexpr auto RAYS = [] {
    Table<PerSquare, 8> rays{};
    for (int i = 0; i < 8; ++i)
        rays[i] = per_square(Table<Step, 1>{DIRECTIONS[i]}, 7);
    return rays;
}();
constexpr PerSquare KING_ATTACKS = per_square(DIRECTIONS, 1);
constexpr PerSquare KNIGHT_ATTACKS = per_square(KNIGHT_STEPS, 1);
constexpr Table<PerSquare, 2> PAWN_ATTACKS{per_square(Table<Step, 2>{{{-1, 1}, {1, 1}}}, 1),
                                           per_square(Table<Step, 2>{{{-1, -1}, {1, -1}}}, 1)};

template <int Direction> SquareSet slide(int square, SquareSet occupied) {
    const SquareSet ray = RAYS[Direction][square];
    const SquareSet blockers = ray & occupied;
    if (blockers == 0)
        return ray;
    const int first =
        Direction < FIRST_DESCENDING ? __builtin_ctzll(blockers) : 63 - __builtin_clzll(blockers);
    return ray ^ RAYS[Direction][first];
}

SquareSet straight(int square, SquareSet occupied) {
    return slide<0>(square, occupied) | slide<1>(square, occupied) | slide<4>(square, occupied) |
           slide<5>(square, occupied);
}

SquareSet diagonal(int square, SquareSet occupied) {
    return slide<2>(square, occupied) | slide<3>(square, occupied) | slide<6>(square, occupied) |
           slide<7>(square, occupied);
}

}  // namespace

SquareSet attacks(Piece kind, int square, SquareSet occupied) {
    switch (kind) {
    case KNIGHT:
        return KNIGHT_ATTACKS[square];
    case BISHOP:
        return diagonal(square, occupied);
    case ROOK:
        return straight(square, occupied);
    case QUEEN:
        return straight(square, occupied) | diagonal(square, occupied);
    case KING:
        return KING_ATTACKS[square];
    default:
        return 0;
    }
}

SquareSet pawn_attacks(Side side, int square) {
    return PAWN_ATTACKS[side][square];
}

}  // namespace quelmar::tablemaker
