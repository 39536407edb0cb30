// The fields of a FEN behind the side to move. Private to board/.
#pragma once

#include "board/types.h"

#include <string_view>

namespace quelmar {

struct FenFields {
    std::string_view castling, en_passant, halfmove_clock;
};

// `text` begins at the side to move; fields that are missing are empty.
FenFields split_fen_fields(std::string_view text);

// Squares of the rooks that may castle, White short, long, Black short, long; 0 without the right. A right
// without its rook is dropped. The functions that find them need board and piece lists.
using CastlingRooks = std::array<Square, 4>;

// Which of several rooks on one side of the king a letter of KQkq means.
enum class RookMeant { NEAREST, OUTERMOST };

// KQkq, or file letters (A to H for White, a to h for Black) for the rook on that file. For outermost rooks,
// and in all file letters, the king has to stand on its back rank.
CastlingRooks castling_rooks(std::string_view field, RookMeant meant);

// The square that the field names if the last move can have been the double step over it, otherwise 0. Needs
// the side to move as well.
Square possible_en_passant(std::string_view field);

// What fits into the clock; 0 if the field is no number.
u8 read_halfmove_clock(std::string_view field);

}  // namespace quelmar
