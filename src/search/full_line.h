// Variations for clients that check them, and all moves of a mate whose length is known.
#pragma once

#include "board/types.h"
#include "search/principal_variation.h"
#include "search/score.h"
#include "search/search_reports.h"

namespace quelmar {

// Fills `moves` and `is_whole_mate` of a line of the root with this `score`. Like walk_table(), but the line
// ends where the game is drawn or a position returns; where an entry has no move, one is taken that another
// entry proves; from the first position that endgame tables decide they are followed; and a mate with an
// exact score is completed as far as that takes little time, or some seconds when the search was asked for
// one.
void read_full_line(RootLine& line);

// Plays a line of exactly the length that `score` promises, a mate counted from the current position, from
// `first` (any move when its `from` is 0) to the checkmate. Bounds of the transposition table say which moves
// keep the mate; where they are silent a search of its own does, bounded by `positions` whose moves it lists.
// It stores nothing and counts no nodes. Returns false, with nothing played, when there is no such line or it
// cannot be found.
bool play_mate_line(LinePlayer& line, const Move& first, Score score, int positions);

}  // namespace quelmar
