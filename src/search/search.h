// The searches. All work on the current position and return with it as it was.
#pragma once

#include "search/score.h"

namespace quelmar {

// Searches the current position with the current clocks and modes until its limits, or a stop, end it. The
// variation found is then in search_state.pv, its score in search_state.last_score. Iteration 1 always
// completes, so pv has at least one move whenever the position has one.
void think();

// Null-window search of the node at search_ply: returns a lower bound >= beta or an upper bound < beta. After
// a stop (search_control.abort_search) it returns 0 with the board back at the root.
Score search(Score beta, Depth depth, bool null_allowed);

// The same below the horizon. `depth` is only the depth stored in the table; no checks are searched beyond
// ply `check_limit`. Polls only where search_control.nodes_between_looks says so; a stop or a swollen tree
// makes every node stand on its static score.
Score qsearch(Score beta, Depth depth, int check_limit);

// More nodes than any game's position takes in one quiescence search. With dozens of queens on the board the
// captures would never end; from here on every node stands on its static score.
inline constexpr u64 SWOLLEN_QSEARCH = 20000;

// One iteration: null-window searches from `guess` until the root score is known.
Score mtd_driver(Score guess, Depth depth);

}  // namespace quelmar
