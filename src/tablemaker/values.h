// How good a position is for the side to move, in the two codes that occur here.
//
// While a table is made, a position's value counts plies:
//     0            open: nothing known yet; what is still open at the end is a draw
//     odd  2n + 1  lost, mated in 2n plies; 1 is mate on the board
//     even 2n      won, mate in 2n - 1 plies
//     255          no position: men on one square, kings touching, the side that has moved in check
// In a table file a signed byte counts moves:
//     0            draw
//     127 - n      mate in n moves, n = 1..126; -128 is mate in 127
//     n - 126      mated in n moves, n = 0..125; -127 is mated in 126
//     127          no position
#pragma once

#include "board/types.h"

namespace quelmar::tablemaker {

inline constexpr u8 OPEN = 0;
inline constexpr u8 ILLEGAL = 255;
inline constexpr int DEEPEST_LOSS = 252, DEEPEST_WIN = 253;  // plies

// A conversion that holds the draw; other conversions are coded as positions, with OPEN for "there is none".
// Being neither a win nor a loss, it never decides a position.
inline constexpr u8 HOLDS_DRAW = 255;

constexpr u8 value_of_plies(int plies) {
    return static_cast<u8>(plies + 1);
}
constexpr bool is_win(u8 value) {
    return value != OPEN && value % 2 == 0;
}
constexpr bool is_loss(u8 value) {
    return value != ILLEGAL && value % 2 == 1;
}

inline constexpr int BYTE_ILLEGAL = 127;
inline constexpr int BYTE_MATED = -126;

// Between the two codes; OPEN counts as a draw.
constexpr i8 byte_of_value(u8 value) {
    if (value == ILLEGAL)
        return BYTE_ILLEGAL;
    if (value == OPEN)
        return 0;
    const int moves = value / 2;  // to mate or to be mated
    const int byte = is_win(value) ? 127 - moves : BYTE_MATED + moves;
    // The deepest value of either kind no longer fits on its own side of 0.
    if (is_win(value) && byte == 0)
        return -128;
    return static_cast<i8>(!is_win(value) && byte == 0 ? -127 : byte);
}

constexpr u8 value_of_byte(i8 byte) {
    if (byte == BYTE_ILLEGAL)
        return ILLEGAL;
    if (byte == 0)
        return OPEN;
    if (byte == -128)
        return value_of_plies(DEEPEST_WIN);
    if (byte == -127)
        return value_of_plies(DEEPEST_LOSS);
    return static_cast<u8>(byte > 0 ? 2 * (127 - byte) : 2 * (byte - BYTE_MATED) + 1);
}

}  // namespace quelmar::tablemaker
