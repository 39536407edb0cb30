// All moves of a mate whose length is known.
#pragma once

#include "board/types.h"
#include "search/line_player.h"
#include "search/score.h"

namespace quelmar {

// Plays a line of exactly the length that `score` promises, a mate counted from the current position, from
// `first` (any move when its `from` is 0) to the checkmate. Bounds of the transposition table say which moves
// keep the mate; where they are silent a search of its own does, bounded by `positions` whose moves it lists.
// It stores nothing and counts no nodes. Returns false, with nothing played, when there is no such line or it
// cannot be found.
bool play_mate_line(LinePlayer& line, const Move& first, Score score, int positions);

}  // namespace quelmar
