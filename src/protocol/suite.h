// "quelmar-uci test FILE SECONDS": how many positions of a suite the engine solves.
#pragma once

#include "board/types.h"

namespace quelmar {

// Searches every position of an EPD or FEN file for so many milliseconds and compares the move with "bm" (one
// of them), "am" (none of them) and the score with "dm" (a mate in so many moves). Moves may stand there in
// SAN or in coordinates. Prints one line per position and a summary; a terminal on standard error is shown
// how far it is. Empty lines and those that begin with "#", ";" or "%" are comments; what is no position is
// told. Returns false when the file cannot be read.
bool run_suite(const char* file_name, i32 milliseconds);

}  // namespace quelmar
