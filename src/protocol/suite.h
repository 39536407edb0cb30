// "quelmar-uci test FILE SECONDS": how many positions of a suite the engine solves.
#pragma once

#include "board/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

// Searches every position of an EPD or FEN file for so many milliseconds and compares the move with "bm" (one
// of them), "am" (none of them) and the score with "dm" (a mate in so many moves). Moves may stand there in
// SAN or in coordinates. Prints one line per position and a summary; a terminal on standard error is shown
// how far it is. Empty lines and those that begin with "#", ";" or "%" are comments; what is no position is
// told. Returns false when the file cannot be read.
bool run_suite(const char* file_name, i32 milliseconds);

// Positions of a suite with what is known of their solutions.

struct EpdOperation {
    std::string code;                   // "bm", "id"
    std::vector<std::string> operands;  // without quotes
};

struct EpdLine {
    // Placement, side, castling rights, en-passant square and counters, as far as they are there.
    std::string fen;
    std::vector<EpdOperation> operations;
};

// Takes a line apart without looking at the sense of it.
EpdLine read_epd(std::string_view line);

// The moves of root_moves that a text in SAN or coordinates may mean: none when it is illegal, several when
// it is ambiguous. Check marks and annotations do not matter. root_moves must have been built.
std::vector<Move> moves_named(std::string_view text);

}  // namespace quelmar
