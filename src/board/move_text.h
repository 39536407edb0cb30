// Squares, moves and the board as text, and moves read back from it.
#pragma once

#include "board/types.h"

#include <string>
#include <string_view>

namespace quelmar {

std::string square_text(Square square);  // "e4"

// Coordinates ("e2e4", "e7e8Q", in UCI mode "e7e8q"); castling as the dialect writes it ("O-O"); the null
// move is "0000" in UCI mode and "-" otherwise.
std::string move_text(const Move& move);

void print_move(const Move& move);  // move_text on standard output, no line end

// Prints origin and destination of a code that holds two indices 0..63 in its low 14 bits.
void print_coded_move(int code);

// The move of root_moves that `text` names, nullptr if there is none. root_moves must have been built for
// this position.
const Move* find_root_move(std::string_view text);

// Copies the move that `text` names in root_moves to protocol_state.user_move and returns 1. Otherwise prints
// the legal moves, the board and the key and returns 0.
int parse_move(std::string_view text);

void print_board();  // the diagram of the board on standard output

}  // namespace quelmar
