// The static evaluation as a table of its terms.
#pragma once

namespace quelmar {

// Prints one row per term, in 128ths of a pawn for middlegame and endgame, as White and Black have it and as
// White's balance; then the totals and the score, which are the side to move's. Needs a usable position,
// which is evaluated.
void print_evaluation();

}  // namespace quelmar
