// Everything the search remembers between nodes, in one place.
#pragma once

#include "board/types.h"
#include "search/score.h"

namespace quelmar {

inline constexpr int PLY_RECORDS = MAX_PLY + 4;  // a node clears two plies ahead
inline constexpr int MAX_PV = 51;

// What a node leaves for its descendants and for the nodes that follow at its ply.
struct PlyRecord {
    PackedMove threat_move = 0;        // refuted the null move here; 0 = none
    Depth extension = 0;               // of the move being searched, 60ths of a ply
    bool reduced = false;              // the move being searched is searched with a late-move reduction
    bool mate_threat = false;          // the null move was answered by a mate
    bool bm_extended = false;          // the Botvinnik-Markoff condition held
    bool ply_in_check = false;         // the side to move is in check
    std::array<int, 2> check_count{};  // by side, along the path
    Move killer;                       // last quiet move that caused a cut-off here
    Move mate_killer;                  // the move that gave mate in one here
    Move current_move;                 // the move being searched (root and null moves only)
};

struct SearchState {
    u64 nodes = 0;
    u64 nodes_since_poll = 0;  // full-width nodes
    u64 tb_hits = 0;
    u64 qsearch_nodes = 0;  // since the last entry from the full-width search
    int sel_depth = 1;
    int iteration = 0;  // 1..60
    std::array<Score, MAX_ITERATION + 1> iteration_score{};
    Score last_score = 0;                  // of the last completed iteration
    Score root_lower = 0, root_upper = 0;  // bounds of the current iteration, root side's view
    // Previous iteration's score minus and plus m1, m2, m3: bases of futility.
    Score prev_minus_small = 0, prev_minus_medium = 0, prev_minus_large = 0;
    Score prev_plus_small = 0, prev_plus_medium = 0, prev_plus_large = 0;
    bool sharp_change = false;  // the score moved by m1 or more in this iteration
    Score m1 = 0, m2 = 0, m3 = 0;
    int grain_shift = 0;    // evaluation >> grain_shift = score
    int threat_shift = 0;   // pawns << threat_shift = score
    int history_shift = 0;  // history counters are read shifted right by this
    i32 target_time = 0, max_time = 0, start_time = 0, last_status_time = 0;  // milliseconds
    int root_moves_searched = 0, root_legal_moves = 0;
    std::array<Move, MAX_PV> pv;
    int pv_length = 0;
    std::array<PlyRecord, PLY_RECORDS> plies;
    std::array<std::array<u32, 64>, 64> history{};  // [from index][to index]

    PlyRecord& at(int ply) { return plies[static_cast<std::size_t>(ply)]; }
};

// Written by the search and, for `last_score`, by the front ends' new game and result claim.
extern SearchState search_state;

// Makes ready for a new search: counters, history, abort_search, search_ply; moves the table's generation on.
void reset_search();

// Derives margins and shifts from settings.grain().
void setup_search_constants();

}  // namespace quelmar
