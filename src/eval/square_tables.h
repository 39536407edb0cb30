// Values and geometry of squares that several parts share. All are made by the compiler.
#pragma once

#include "board/types.h"

namespace quelmar {

// By piece code: 128ths of a pawn. Kings never enter a material sum.
inline constexpr std::array<int, 14> piece_value = {0,   128, 416, 416, 646,  1248,  10000,
                                                    128, 416, 416, 646, 1248, 10000, 0};

constexpr int value_of(Piece piece) {
    return piece_value[static_cast<std::size_t>(piece)];
}

inline constexpr int PAWN_VALUE = 128, MINOR_VALUE = 416, ROOK_VALUE = 646, QUEEN_VALUE = 1248;

// Placement of a man, [code][square], 128ths of a pawn; 0 off the board and for EMPTY.
extern const std::array<std::array<i8, BOARD_SIZE>, 13> piece_square;

inline int placement_of(Piece piece, Square square) {
    return piece_square[static_cast<std::size_t>(piece)][static_cast<std::size_t>(square)];
}

// Placement of either king in an endgame, not mirrored.
extern const std::array<i8, BOARD_SIZE> king_endgame_square;

// Mirror a playing square in ranks (a1 <-> a8) and in files (a1 <-> h1).
constexpr Square flip_rank(Square square) {
    return square ^ 0xF0;
}
constexpr Square flip_file(Square square) {
    return square ^ 7;
}
static_assert(flip_rank(A1) == A8 && flip_rank(square_at(7, 3)) == square_at(7, 4) && flip_file(A8) == H8);
constexpr int file_mask(int file) {
    return 1 << file;
}
constexpr bool is_dark(Square square) {
    return ((file_of(square) + rank_of(square)) & 1) == 0;
}  // a1 is dark

// A table indexed by the difference of two playing squares, -119..119.
struct DifferenceTable {
    static constexpr int MIDDLE = 128;
    std::array<i8, 256> entries{};
    constexpr int operator[](int difference) const {
        const int index = difference + MIDDLE;
        return entries[static_cast<std::size_t>(index)];
    }
};

// King moves between two squares: the larger of the file and rank differences. distance[a - b]
extern const DifferenceTable distance;

// The step from b towards a when a man of that kind on a attacks b on an empty board, else 0.
// Index: a - b.
extern const DifferenceTable knight_direction, bishop_direction, rook_direction, king_direction;
extern const DifferenceTable line_step;  // bishop and rook lines together

}  // namespace quelmar
