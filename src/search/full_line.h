// Variations for clients that check them, and all moves of a mate whose length is known.
#pragma once

#include "search/search_reports.h"

namespace quelmar {

// Fills `moves` and `is_whole_mate` of a line of the root with this `score`. Like walk_table(), but the line
// ends where the game is drawn or a position returns; where an entry has no move, one is taken that another
// entry proves; from the first position that endgame tables decide they are followed; and a mate with an
// exact score is completed as far as that takes little time, or some seconds when the search was asked for
// one.
void read_full_line(RootLine& line);

}  // namespace quelmar
