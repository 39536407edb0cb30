// Standard Algebraic Notation, out only.
#pragma once

#include "board/types.h"

#include <string>

namespace quelmar {

// The move of the current position as SAN without check marks. A move of a piece that is not legal there
// gives
// "*"; pawn moves and castlings are taken at their word. Overwrites the move list of the current search ply.
std::string san_text(const Move& move);

}  // namespace quelmar
