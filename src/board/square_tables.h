// Values and geometry of squares that several parts share. All are made by the compiler.
#pragma once

#include "board/types.h"

namespace quelmar {

// Tables are written as the board lies before White.
using SquareValues = Table<i8, BOARD_SIZE>;
using SquareBytes = Table<u8, BOARD_SIZE>;
using Drawing = Table<Table<int, 8>, 8>;  // rank 8 first, files a to h

// Spreads a drawing onto the 16x16 board; off-board entries are 0.
template <typename Values = SquareValues> consteval Values on_board(const Drawing& drawing) {
    Values values{};
    for (int i = 0; i < 64; ++i) {
        const int rank = i / 8, file = i % 8;
        values[square_at(file, rank)] = static_cast<typename Values::value_type>(drawing[7 - rank][file]);
    }
    return values;
}

// By piece code: 128ths of a pawn. Kings never enter a material sum.
inline constexpr Table<int, 14> piece_value = {0,   128, 416, 416, 646,  1248,  10000,
                                               128, 416, 416, 646, 1248, 10000, 0};

constexpr int value_of(Piece piece) {
    return piece_value[piece];
}

inline constexpr int PAWN_VALUE = 128, MINOR_VALUE = 416, ROOK_VALUE = 646, QUEEN_VALUE = 1248;

// Placement of a man, [code][square], 128ths of a pawn; 0 off the board and for EMPTY.
extern const Table<Table<i8, BOARD_SIZE>, 13> piece_square;

inline int placement_of(Piece piece, Square square) {
    return piece_square[piece][square];
}

// Placement of either king in an endgame, not mirrored.
extern const Table<i8, BOARD_SIZE> king_endgame_square;

constexpr int file_mask(int file) {
    return 1 << file;
}
// a1 is dark.
constexpr bool is_dark(Square square) {
    return ((file_of(square) + rank_of(square)) & 1) == 0;
}

// A table indexed by the difference of two playing squares, -119..119.
struct DifferenceTable {
    static constexpr int MIDDLE = 128;
    Table<i8, 256> entries{};
    constexpr int operator[](int difference) const {
        const int index = difference + MIDDLE;
        return entries[index];
    }
};

// King moves between two squares: the larger of the file and rank differences. distance[a - b]
extern const DifferenceTable distance;

// The step from b towards a when a man of that kind on a attacks b on an empty board, else 0.
// Index: a - b.
extern const DifferenceTable knight_direction, bishop_direction;
extern const DifferenceTable line_step;  // bishop and rook lines together

}  // namespace quelmar
