#include "tablemaker/attacks.h"

namespace quelmar::tablemaker {

namespace {

struct Step {
    int file, rank;
};

// The first four directions lead to higher square numbers, the last four to lower ones.
constexpr std::array<Step, 8> DIRECTIONS{
    {{0, 1}, {1, 0}, {1, 1}, {-1, 1}, {0, -1}, {-1, 0}, {-1, -1}, {1, -1}}};
constexpr std::array<Step, 8> KNIGHT_STEPS{
    {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};
constexpr int FIRST_DESCENDING = 4;

using PerSquare = std::array<SquareSet, 64>;

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
    for (std::size_t square = 0; square < 64; ++square)
        for (const Step& step : steps)
            table[square] |= reach(static_cast<int>(square), step, longest);
    return table;
}

constexpr auto RAYS = [] {
    std::array<PerSquare, 8> rays{};
    for (std::size_t i = 0; i < 8; ++i)
        rays[i] = per_square(std::array{DIRECTIONS[i]}, 7);
    return rays;
}();
constexpr PerSquare KING_ATTACKS = per_square(DIRECTIONS, 1);
constexpr PerSquare KNIGHT_ATTACKS = per_square(KNIGHT_STEPS, 1);
constexpr std::array<PerSquare, 2> PAWN_ATTACKS{per_square(std::array{Step{-1, 1}, Step{1, 1}}, 1),
                                                per_square(std::array{Step{-1, -1}, Step{1, -1}}, 1)};

template <std::size_t Direction> SquareSet slide(std::size_t square, SquareSet occupied) {
    const SquareSet ray = RAYS[Direction][square];
    const SquareSet blockers = ray & occupied;
    if (blockers == 0)
        return ray;
    const int first =
        Direction < FIRST_DESCENDING ? __builtin_ctzll(blockers) : 63 - __builtin_clzll(blockers);
    return ray ^ RAYS[Direction][static_cast<std::size_t>(first)];
}

SquareSet straight(std::size_t square, SquareSet occupied) {
    return slide<0>(square, occupied) | slide<1>(square, occupied) | slide<4>(square, occupied) |
           slide<5>(square, occupied);
}

SquareSet diagonal(std::size_t square, SquareSet occupied) {
    return slide<2>(square, occupied) | slide<3>(square, occupied) | slide<6>(square, occupied) |
           slide<7>(square, occupied);
}

}  // namespace

SquareSet attacks(Piece kind, int square, SquareSet occupied) {
    const auto at = static_cast<std::size_t>(square);
    switch (kind) {
    case KNIGHT:
        return KNIGHT_ATTACKS[at];
    case BISHOP:
        return diagonal(at, occupied);
    case ROOK:
        return straight(at, occupied);
    case QUEEN:
        return straight(at, occupied) | diagonal(at, occupied);
    case KING:
        return KING_ATTACKS[at];
    default:
        return 0;
    }
}

SquareSet pawn_attacks(Side side, int square) {
    return PAWN_ATTACKS[static_cast<std::size_t>(side)][static_cast<std::size_t>(square)];
}

}  // namespace quelmar::tablemaker
