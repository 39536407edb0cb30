// Everything the search remembers between nodes, in one place.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "eval/outputs.h"
#include "search/score.h"

namespace quelmar {

inline constexpr int PLY_GUARD = 5;   // rules look up to five plies back, also from the root
inline constexpr int MAX_PV = 51;     // moves read from the transposition table
inline constexpr int MAX_LINE = 256;  // moves, with those that endgame tables add

// What a node leaves for its descendants and for the nodes that follow at its ply.
struct PlyRecord {
    PackedMove threat_move = 0;   // refuted the null move here; 0 = none
    Depth extension = 0;          // of the move being searched, 60ths of a ply
    bool mate_threat = false;     // the null move was answered by a mate
    bool bm_extended = false;     // the Botvinnik-Markoff condition held
    Table<int, 2> check_count{};  // by side, along the path
    Move killer;                  // last quiet move that caused a cut-off here
    Move mate_killer;             // the move that gave mate in one here
};

struct SearchState {
    u64 nodes = 0;
    u64 nodes_since_poll = 0;  // full-width nodes
    u64 nodes_at_look = 0;     // `nodes` when input and clock were looked at last
    u64 tb_hits = 0;
    u64 qsearch_nodes = 0;  // since the last entry from the full-width search
    int sel_depth = 1;
    int iteration = 0;                                  // 1..60
    int iteration_limit = MAX_ITERATION;                // the last iteration of this search
    Table<Score, MAX_ITERATION + 1> iteration_score{};  // [0] stays 0
    Score last_score = 0;                               // of the last completed iteration
    Score root_lower = 0, root_upper = 0;               // bounds of the current iteration, root side's view
    // Previous iteration's score minus and plus m1, m2, m3: bases of futility.
    Score prev_minus_small = 0, prev_minus_medium = 0, prev_minus_large = 0;
    Score prev_plus_small = 0, prev_plus_medium = 0, prev_plus_large = 0;
    bool sharp_change = false;  // the score moved by m1 or more in this iteration
    Score m1 = 0, m2 = 0, m3 = 0;
    int grain_shift = 0;    // evaluation >> grain_shift = score
    int threat_shift = 0;   // pawns << threat_shift = score
    int history_shift = 0;  // history counters are read shifted right by this
    bool timed = true;      // false with a fixed depth: time never ends the search
    i32 target_time = 0, max_time = 0, start_time = 0, last_status_time = 0;  // milliseconds
    // Where target_time and max_time count from: start_time, or the hit of a ponder search.
    i32 budget_start = 0;
    int root_moves_searched = 0, root_legal_moves = 0;
    Move current_root_move;  // being searched
    Move root_best_move;     // last that failed high at the root of this search; empty when from = 0
    Table<Move, MAX_LINE> pv;
    int pv_length = 0;                                // when it is 0, pv[0].from is 0
    Table<PlyRecord, PLY_GUARD + PLY_RECORDS> plies;  // reached through at()
    Table<Table<u32, 64>, 64> history{};              // [from index][to index]

    // The record of a ply, -PLY_GUARD..MAX_PLY + 3. Those before the root stay empty.
    PlyRecord& at(int ply) { return *(plies.data() + PLY_GUARD + ply); }
    u32& history_of(const Move& move) {
        return history[index_of_square[move.from]][index_of_square[move.to]];
    }
};

// Written by the search; a new game, a claim and a resignation also write `last_score`, a new game
// `iteration`.
extern SearchState search_state;

// Makes ready for a new search: counters, history, abort_search, search_ply; moves the table's generation on.
// Killers and the scores of earlier iterations stay.
void reset_search();

// Derives margins and shifts from search_settings.grain().
void setup_search_constants();

// Whether the running search has to unwind. The first iteration completes whatever is asked, so that every
// search has a move to play.
bool stop_wanted();

// The moves that led to the current node, as the rules of the search see them. A null move, or no move at
// all, captures nothing, promotes nothing, checks nobody and goes nowhere: it reads as an empty move,
// whatever the stack entry still holds.

inline constexpr Move NO_MOVE{};

// The opponent's last move.
inline const Move& move_before() {
    if (position.game_ply < 1)
        return NO_MOVE;
    const Move& move = position.back(1).move;
    return move.from != 0 ? move : NO_MOVE;
}

// The last move of the side to move, two plies back.
inline const Move& own_move_before() {
    if (position.game_ply < 2)
        return NO_MOVE;
    const Move& move = position.back(2).move;
    return move.from != 0 ? move : NO_MOVE;
}

// Whether the side to move can take the king, so that the move before was illegal. evaluate() must have seen
// the position.
inline bool is_enemy_king_en_prise() {
    const Side us = position.side_to_move;
    return contains(attacks_of(us).attacked, position.king_square(other_side(us)));
}

// Whether the king of `side` stands `by` or more units worse than at the previous ply. Danger is 0 or
// negative.
inline bool king_cover_lost(Side side, int by) {
    const int ply = position.search_ply;
    if (ply == 0)
        return false;
    return outputs_at(ply - 1).ply_king_danger[side] - outputs_at(ply).ply_king_danger[side] >= by;
}

}  // namespace quelmar
