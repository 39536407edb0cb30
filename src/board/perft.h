// Counting the legal move tree, the classic proof of a move generator.
#pragma once

#include "board/types.h"

namespace quelmar {

// Leaves of the legal move tree `depth` plies deep below the current position, which is left as it was.
// `generate` may list pseudo-legal moves; each is tested after it was made, as the search does. depth >= 0.
u64 perft(int depth, void (*generate)());

}  // namespace quelmar
