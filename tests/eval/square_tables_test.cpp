#include "eval/square_tables.h"

#include <gtest/gtest.h>

namespace quelmar {
namespace {

TEST(SquareTables, DistancesAndSteps) {
    EXPECT_EQ(distance[A1 - H8], 7);
    EXPECT_EQ(distance[square_at(1, 2) - A1], 2);
    EXPECT_EQ(rook_direction[A8 - A1], 16);
    EXPECT_EQ(bishop_direction[A8 - A1], 0);
    EXPECT_EQ(line_step[A8 - A1], 16);
    EXPECT_EQ(bishop_direction[A1 - H8], -17);
    EXPECT_EQ(line_step[A1 - H8], -17);
    EXPECT_EQ(rook_direction[H8 - A1], 0);
    EXPECT_EQ(knight_direction[G1 - square_at(5, 2)], G1 - square_at(5, 2));
    EXPECT_EQ(knight_direction[G1 - F1], 0);
    EXPECT_EQ(king_direction[G1 - F1], 1);
    EXPECT_EQ(king_direction[G1 - E1], 0);
}

TEST(SquareTables, BlackPlacementIsWhiteMirroredInRanks) {
    EXPECT_EQ(placement_of(BLACK_PAWN, square_at(3, 2)), 18);
    EXPECT_EQ(placement_of(BLACK_KING, G8), 10);
    EXPECT_EQ(placement_of(BLACK_ROOK, D1), 14);
    for (Piece kind = PAWN; kind <= KING; ++kind) {
        for (const Square square : square_of_index)
            ASSERT_EQ(placement_of(man_of(BLACK, kind), square), placement_of(kind, flip_rank(square)));
    }
}

}  // namespace
}  // namespace quelmar
