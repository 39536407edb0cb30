// Square tables written as the board lies before White. Private to eval/.
#pragma once

#include "board/types.h"

namespace quelmar {

using SquareValues = std::array<i8, BOARD_SIZE>;
using SquareBytes = std::array<u8, BOARD_SIZE>;
using Drawing = std::array<std::array<int, 8>, 8>;  // rank 8 first, files a to h

// Spreads a drawing onto the 16x16 board; off-board entries are 0.
template <typename Values = SquareValues> consteval Values on_board(const Drawing& drawing) {
    Values values{};
    for (int i = 0; i < 64; ++i) {
        const auto row = static_cast<std::size_t>(7 - i / 8), column = static_cast<std::size_t>(i % 8);
        values[static_cast<std::size_t>(square_at(i % 8, i / 8))] =
            static_cast<typename Values::value_type>(drawing[row][column]);
    }
    return values;
}

constexpr int value_at(const SquareValues& values, Square square) {
    return values[static_cast<std::size_t>(square)];
}
constexpr int value_at(const SquareBytes& values, Square square) {
    return values[static_cast<std::size_t>(square)];
}

// Reads a short table; the index must lie inside it.
template <typename T, std::size_t SIZE>
constexpr const T& entry_of(const std::array<T, SIZE>& table, int index) {
    return table[static_cast<std::size_t>(index)];
}

}  // namespace quelmar
