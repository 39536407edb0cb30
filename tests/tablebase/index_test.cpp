// The numbering is proved by the catalogue: its entry counts are exact, so a single digit in the wrong place
// shows as a legal position above a count or as a count that no legal position reaches.
#include "support/ending_positions.h"
#include "tablebase/index.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace quelmar::testing {
namespace {

// The endings from `first` to before `end` and the named ones. The full forms take minutes; with
// QUELMAR_SLOW_TESTS=1 in the environment all from `slow_first` to before `slow_end` come instead of the
// names.
std::vector<int> endings_of(int first, int end, std::initializer_list<const char*> names,
                            int slow_first = FIRST_FIVE_MEN, int slow_end = ENDING_COUNT + 1) {
    const bool slow = std::getenv("QUELMAR_SLOW_TESTS") != nullptr;
    std::vector<int> numbers;
    for (int number = 1; number <= ENDING_COUNT; ++number)
        if ((number >= first && number < end) ||
            (slow ? number >= slow_first && number < slow_end
                  : std::count(names.begin(), names.end(), ending(number).name) > 0))
            numbers.push_back(number);
    return numbers;
}

bool pawns_on_both_sides(int number) {
    return ending(number).men[0][PAWN] > 0 && ending(number).men[1][PAWN] > 0;
}

// The highest number of any legal position: the numbers grow with the pair of kings, en-passant positions
// last, so the last pair that has a position decides.
u64 highest_index(int number, Side to_move) {
    const bool pawns = ending(number).has_pawns(), en_passant = pawns_on_both_sides(number);
    const int flip = pawns && to_move == BLACK ? 56 : 0;
    u64 highest = 0;
    for (int pair = 64 * 64 - 1; pair >= 0 && highest == 0; --pair) {
        if (!is_canonical_pair(pair / 64, pair % 64, pawns))
            continue;
        TablePosition start = with_kings(to_move, (pair / 64) ^ flip, (pair % 64) ^ flip);
        place_men(start, men_of(number), 0, to_move, [&](const TablePosition& position) {
            if ((position.ep_square != NO_EP_SQUARE) == en_passant)
                highest = std::max(highest, u64{index_of(number, to_move, position)});
        });
    }
    return highest;
}

void check_highest_index(int number) {
    for (const Side side : {WHITE, BLACK})
        EXPECT_EQ(highest_index(number, side) + 1, ending(number).entry_count[side])
            << ending(number).name << (side == WHITE ? " White" : " Black");
}

template <typename Map> TablePosition mapped(const TablePosition& position, Map map) {
    TablePosition result = position;
    for (SideSquares& men : result.side) {
        men.king = static_cast<u8>(map(men.king));
        for (int row = 0; row < 5; ++row) {
            for (int i = 0; i < men.count[row]; ++i)
                men.men[row][i] = static_cast<u8>(map(men.men[row][i]));
            std::reverse(men.men[row].begin(), men.men[row].begin() + men.count[row]);
        }
    }
    if (position.ep_square != NO_EP_SQUARE)
        result.ep_square = map(position.ep_square);
    return result;
}

int transposed(int square) {
    return file64(square) * 8 + rank64(square);
}

bool on_diagonal(int square) {
    return file64(square) == rank64(square);
}

// All images have the number of the position itself. With both kings on the diagonal the tables hold a
// position and its reflection apart, so there the reflected images share the reflection's number.
void check_mirror_images(int number, Side to_move, const TablePosition& position, u32 index) {
    const auto expect_same = [&](const TablePosition& original, u32 expected, bool pawns) {
        for (const int flip : {7, 56, 63}) {
            const TablePosition image = mapped(original, [flip](int square) { return square ^ flip; });
            const int mirror = pawns && (flip & 56) != 0 ? 1 : 0;
            ASSERT_EQ(table_index(number, to_move, image.side[0], image.side[1], image.ep_square, mirror),
                      expected);
        }
    };
    const bool pawns = ending(number).has_pawns();
    expect_same(position, index, pawns);
    if (pawns)
        return;
    const TablePosition reflected = mapped(position, transposed);
    const u32 reflected_index = index_of(number, to_move, reflected);
    if (!on_diagonal(position.side[0].king) || !on_diagonal(position.side[1].king)) {
        ASSERT_EQ(reflected_index, index);
    }
    expect_same(reflected, reflected_index, pawns);
}

// Every legal position has a number below the count, and no two have the same.
void check_exhaustively(int number, Side to_move) {
    const u32 count = ending(number).entry_count[to_move];
    std::vector<bool> used(count);
    u64 positions = 0, clashes = 0, beyond = 0;
    for_each_position(number, to_move, [&](const TablePosition& position) {
        const u32 index = index_of(number, to_move, position);
        if (index >= count) {
            ++beyond;
            return;
        }
        clashes += used[index] ? 1 : 0;
        used[index] = true;
        if (++positions % 64 == 0)
            check_mirror_images(number, to_move, position, index);
    });
    EXPECT_EQ(clashes, 0u) << ending(number).name << to_move;
    EXPECT_EQ(beyond, 0u) << ending(number).name << to_move;
    EXPECT_GT(positions, 0u);
}

// The same for all positions of one pair of kings, for endings that are too large.
void check_one_pair(int number, Side to_move, std::mt19937& random) {
    const bool pawns = ending(number).has_pawns();
    int mover = 0, waiting = 0;
    do {
        mover = static_cast<int>(random() % 64);
        waiting = static_cast<int>(random() % 64);
    } while (!is_canonical_pair(mover, waiting, pawns));
    const u32 count = ending(number).entry_count[to_move];
    std::vector<u32> numbers;
    TablePosition start = with_kings(to_move, mover, waiting);
    place_men(start, men_of(number), 0, to_move, [&](const TablePosition& position) {
        numbers.push_back(index_of(number, to_move, position));
        if (numbers.size() % 512 == 0)
            check_mirror_images(number, to_move, position, numbers.back());
    });
    std::sort(numbers.begin(), numbers.end());
    EXPECT_LT(numbers.back(), count) << ending(number).name << to_move;
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end())
        << ending(number).name << to_move;
}

class Index : public ::testing::Test {
protected:
    void SetUp() override { build_index_tables(); }
};

// One of each shape, with the ones whose files end early.
TEST_F(Index, HighestNumberIsTheCount) {
    for (const int number : endings_of(1, FIRST_FIVE_MEN,
                                       {"kppkp", "knpkp", "krpkp", "kqqkp", "kppkr", "kbnkn", "kbnpk",
                                        "krrrk", "kqqrk", "krrpk", "kbnknn", "kqrkrr", "kbbkbb"}))
        check_highest_index(number);
}

TEST_F(Index, NumbersAreUnique) {
    for (const int number :
         endings_of(1, FIRST_FOUR_MEN, {"kppk", "knnk", "kbnk"}, FIRST_FOUR_MEN, FIRST_FIVE_MEN))
        for (const Side side : {WHITE, BLACK})
            check_exhaustively(number, side);
}

TEST_F(Index, NumbersAreUniqueForOnePairOfKings) {
    std::mt19937 random(1);
    for (const int number :
         endings_of(0, 0, {"kpkp", "kqkp", "kppkp", "krpkp", "knpkn", "kpppk", "kbbpk", "kqrbk"}))
        for (const Side side : {WHITE, BLACK})
            check_one_pair(number, side, random);
}

// Nothing promises that the board is legal, or that a pawn stands where pawns can stand.
TEST_F(Index, ImpossiblePositionsDoNoHarm) {
    std::mt19937 random(3);
    for (int number = 1; number <= ENDING_COUNT; ++number)
        for (int round = 0; round < 200; ++round) {
            TablePosition position;
            for (int group = 0; group < 2; ++group) {
                position.side[group].king = static_cast<u8>(random() % 64);
                for (int row = 0; row < 5; ++row) {
                    position.side[group].count[row] = ending(number).men[group][row + 1];
                    for (u8& square : position.side[group].men[row])
                        square = static_cast<u8>(random() % 64);
                }
            }
            position.ep_square = round % 2 ? NO_EP_SQUARE : static_cast<int>(random() % 64);
            const u32 index = index_of(number, static_cast<Side>(round / 2 % 2), position);
            EXPECT_TRUE(index == NO_INDEX || index < index_range(number, static_cast<Side>(round / 2 % 2)));
        }
}

TEST(Catalogue, NamesAndNumbers) {
    EXPECT_EQ(ending(1).name, "kpk");
    EXPECT_EQ(ending(ENDING_KPPKP).name, "kppkp");
    EXPECT_EQ(ending(FIRST_SIX_MEN).name, "knnknn");
    EXPECT_EQ(ending_by_name("kqkr"), 19);
    EXPECT_EQ(ending_by_name("krkq"), 0);
    EXPECT_EQ(men_of_ending(ENDING_COUNT), 6);
    EXPECT_EQ(ending(ENDING_KPPKP).men[0][PAWN], 2);
    EXPECT_TRUE(ending(ending_by_name("krkr")).symmetric);
    EXPECT_TRUE(ending(ending_by_name("krnknn")).wide);
    for (int number = 1; number <= ENDING_COUNT; ++number)
        EXPECT_EQ(ending_by_name(ending(number).name), number);
}

}  // namespace
}  // namespace quelmar::testing
