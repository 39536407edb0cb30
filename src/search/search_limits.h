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
    int lines = 1;            // best root moves to be found, each with its line; keeps_lines must be set
    bool plays_only_move_at_once = true;  // does not search deeper when there is nothing to choose
    // Full-width nodes without a look at limits, clock and input; 0 with a node limit, which is kept exactly.
    u64 unasked_nodes = NODES_BETWEEN_POLLS;
};

inline SearchLimits search_limits;

// A root move and what the endgame tables say of it.
struct RankedMove {
    Move move;
    Score score = 0;     // from the root; 0 also where the fifty-move rule comes before the mate
    Score by_table = 0;  // the same without that rule
};

// What is left of the wanted moves for the line that is being searched.
struct RootChoice {
    std::vector<Move> listed;        // taken by better lines
    std::vector<RankedMove> ranked;  // best first; empty unless the tables know every move
};

inline RootChoice root_choice;

bool is_node_limit_reached();             // and ends the search, which is not endless
bool is_mate_in(Score score, int moves);  // a mate in at most so many moves, for either side

// After allocate_time(): cuts budget and iterations down to the limits.
void apply_search_limits();

bool is_wanted_at_root(const Move& move);

// generate_legal_moves(), without what the limits and root_choice leave out: of ranked moves only the best
// that are not listed stay. For the root only.
void generate_root_moves();

// What the table says of a root that was searched with some of its moves only holds for no other search.
void forget_restricted_root();

}  // namespace quelmar
