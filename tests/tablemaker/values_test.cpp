#include "tablemaker/values.h"

#include <gtest/gtest.h>

namespace quelmar::tablemaker {
namespace {

TEST(Values, EveryByteStandsForOneValue) {
    for (int i = -128; i <= 127; ++i) {
        const auto byte = static_cast<i8>(i);
        EXPECT_EQ(byte_of_value(value_of_byte(byte)), byte) << i;
    }
}

TEST(Values, BytesCountMovesToMate) {
    const struct {
        int plies, byte;
        const char* meaning;
    } cases[] = {
        {0, -126, "mated on the board"}, {1, 126, "mate in one"},          {2, -125, "mated in one"},
        {3, 125, "mate in two"},         {250, -1, "mated in 125"},        {251, 1, "mate in 126"},
        {252, -127, "mated in 126"},     {253, -128, "mate in 127 moves"},
    };
    for (const auto& [plies, byte, meaning] : cases)
        EXPECT_EQ(byte_of_value(value_of_plies(plies)), byte) << meaning;
    EXPECT_EQ(byte_of_value(OPEN), 0);
    EXPECT_EQ(byte_of_value(ILLEGAL), 127);
}

TEST(Values, WinsAndLossesAreToldApart) {
    for (int plies = 0; plies <= DEEPEST_WIN; ++plies)
        EXPECT_TRUE(plies % 2 == 1 ? is_win(value_of_plies(plies)) && !is_loss(value_of_plies(plies))
                                   : is_loss(value_of_plies(plies)) && !is_win(value_of_plies(plies)))
            << plies;
    EXPECT_FALSE(is_win(OPEN) || is_loss(OPEN) || is_win(ILLEGAL) || is_loss(ILLEGAL));
}

}  // namespace
}  // namespace quelmar::tablemaker
