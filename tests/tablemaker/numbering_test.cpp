#include "tablebase/catalogue.h"
#include "tablemaker/numbering.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace quelmar::tablemaker {
namespace {

Squares random_squares(const Men& men, std::mt19937& random) {
    Squares squares{};
    SquareSet taken = 0;
    for (std::size_t i = 0; i < men.count;) {
        const bool pawn = men.man[i].kind == PAWN;
        const auto square = static_cast<u8>(pawn ? 8 + random() % 48 : random() % 64);
        if ((taken & bit(square)) != 0)
            continue;
        taken |= bit(square);
        squares[i++] = square;
    }
    return squares;
}

// All ways to look at the same position: files mirrored, and without pawns ranks mirrored and the board
// turned.
std::vector<Squares> images(const Men& men, const Squares& squares) {
    const bool pawns = men.has_pawn(WHITE) || men.has_pawn(BLACK);
    std::vector<Squares> all;
    for (int turn = 0; turn < (pawns ? 2 : 8); ++turn) {
        Squares image = squares;
        for (std::size_t i = 0; i < men.count; ++i) {
            const int turned = image[i] ^ (turn & 1 ? 7 : 0) ^ (turn & 2 ? 56 : 0);
            image[i] = static_cast<u8>(turn & 4 ? turned % 8 * 8 + turned / 8 : turned);
        }
        all.push_back(image);
    }
    return all;
}

class NumberingOf : public testing::TestWithParam<const char*> {};

// The two numbers of a two-faced position are each other's reflection; all other positions have one.
TEST_P(NumberingOf, GivesAllImagesOfAPositionTheSamePlace) {
    const Men men = ending_men(ending_by_name(GetParam()));
    const Numbering numbering(men);
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::set<u32> numbers;
        bool touching = false;
        for (Squares image : images(men, random_squares(men, random))) {
            const u32 number = numbering.normalise(image);
            touching |= number == NOWHERE;
            if (touching)
                continue;
            ASSERT_LT(number, numbering.size());
            Squares back{};
            ASSERT_TRUE(numbering.squares_of(number, back));
            ASSERT_EQ(back, image);
            numbers.insert(number);
            if (numbering.two_faced(image))
                numbers.insert(numbering.reflect(image));
            ASSERT_LE(numbers.size(), numbering.two_faced(back) ? 2U : 1U);
        }
        ASSERT_TRUE(!touching || numbers.empty());
    }
}

TEST_P(NumberingOf, StepsAsIfNumberedAnew) {
    const Men men = ending_men(ending_by_name(GetParam()));
    const Numbering numbering(men);
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        Squares squares = random_squares(men, random);
        const u32 number = numbering.normalise(squares);
        const std::size_t man = random() % men.count;
        const int to =
            men.man[man].kind == PAWN ? static_cast<int>(8 + random() % 48) : static_cast<int>(random() % 64);
        if (number == NOWHERE || (occupied_squares(men, squares) & bit(to)) != 0)
            continue;
        Squares moved = squares;
        moved[man] = static_cast<u8>(to);
        EXPECT_EQ(numbering.after(number, squares, man, to), numbering.normalise(moved));
    }
}

INSTANTIATE_TEST_SUITE_P(Endings, NumberingOf,
                         testing::Values("kqk", "kpk", "kqkr", "kpkp", "kbbk", "kppkp", "krrkb", "knnnk"),
                         [](const auto& ending_case) { return std::string(ending_case.param); });

TEST(Men, SixAreTooMany) {
    EXPECT_ANY_THROW(ending_men(FIRST_SIX_MEN));
}

TEST(Men, AreNamedAsTheCatalogueNamesThem) {
    for (int number = 1; number < FIRST_SIX_MEN; ++number)
        EXPECT_EQ(ending_name(ending_men(number), WHITE), ending(number).name);
}

}  // namespace
}  // namespace quelmar::tablemaker
