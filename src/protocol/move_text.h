// Squares and moves as text: in coordinates, which are read back as well, and in SAN.
#pragma once

#include "board/types.h"

#include <string>
#include <string_view>

namespace quelmar {

enum class CastlingText {
    LETTERS,          // O-O, O-O-O
    KING_MOVE,        // e1g1: where the king goes
    KING_TAKES_ROOK,  // e1h1: where the rook stands
};

// How castlings are written. In standard UCI all ways are read.
extern CastlingText castling_notation;

std::string square_text(Square square);  // "e4"

// Coordinates ("e2e4", "e7e8Q", in UCI mode "e7e8q"); castling as castling_notation says; the null
// move is "0000" in UCI mode and "-" otherwise.
std::string move_text(const Move& move);

void print_move(const Move& move);  // move_text on standard output, no line end

// Prints origin and destination of a code that holds two indices 0..63 in its low 14 bits.
void print_coded_move(int code);

// The move of root_moves that `text` names, nullptr if there is none. root_moves must have been built for
// this position.
const Move* find_root_move(std::string_view text);

// Copies the move that `text` names in root_moves to protocol_state.user_move and returns true. Otherwise
// prints the legal moves, the board and the key.
bool parse_move(std::string_view text);

// The move of the current position in Standard Algebraic Notation without check marks. A move of a piece that
// is not legal there gives "*"; pawn moves and castlings are taken at their word. Overwrites the move list of
// the current search ply.
std::string san_text(const Move& move);

}  // namespace quelmar
