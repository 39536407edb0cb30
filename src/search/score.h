// Units of the search. A score is the evaluation divided by the grain (search_settings.grain_size); a depth
// is counted in 60ths of a ply.
#pragma once

#include "board/types.h"

namespace quelmar {

using Score = int;
using Depth = int;

inline constexpr Depth ONE_PLY = 60;

inline constexpr Score MATE_SCORE = 30000;        // 30000 - p: mate p plies from the root
inline constexpr Score INFINITE_SCORE = 30001;    // bounds the window; "no bound" in the transposition table
inline constexpr Score TT_MATE_LIMIT = 29800;     // from here on the table stores node-relative scores
inline constexpr Score FOUND_MATE_LIMIT = 29900;  // beyond this the root driver and the null move see a mate

inline constexpr int MAX_PLY = 80;  // plies of a search, 0..79
// What is kept by ply has so many records: a node clears two plies ahead, and moves are tried beyond the
// last.
inline constexpr int PLY_RECORDS = MAX_PLY + 4;
inline constexpr int MAX_ITERATION = 60;

}  // namespace quelmar
