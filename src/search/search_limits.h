// Limits of a search beside the clocks.
#pragma once

#include "board/types.h"
#include "search/score.h"

#include <vector>

namespace quelmar {

inline constexpr u64 NODES_BETWEEN_POLLS = 4999;  // full-width nodes

// The front end writes the limits before think() and takes them back after it; with the values they have here
// nothing is limited, and the search takes the nodes it always took. Searches without end (pondering,
// analysis, "infinite") pass by `nodes` and `mate`; the other limits hold.
struct SearchLimits {
    int iterations = MAX_ITERATION;
    u64 nodes = 0;            // 0: as many as it takes
    int mate = 0;             // in moves; 0: two iterations with a mate of any length end the search
    i32 move_time = 0;        // milliseconds that the clocks' budget must not exceed; 0: none
    std::vector<Move> moves;  // the only ones for the root; empty: all
    // Full-width nodes without a look at limits, clock and input; 0 with a node limit, which is kept exactly.
    u64 unasked_nodes = NODES_BETWEEN_POLLS;
};

inline SearchLimits search_limits;

bool is_node_limit_reached();             // and ends the search, which is not endless
bool is_mate_in(Score score, int moves);  // a mate in at most so many moves, for either side

// After allocate_time(): cuts budget and iterations down to the limits.
void apply_search_limits();

bool is_wanted_at_root(const Move& move);

// generate_legal_moves(), without what the limits leave out. For the root only.
void generate_root_moves();

// What the table says of a root that was searched with some of its moves only holds for no other search.
void forget_restricted_root();

}  // namespace quelmar
