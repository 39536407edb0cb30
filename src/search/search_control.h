// How the outside steers a search: what kind of search it is, the stop, and what the user may set.
#pragma once

#include "board/types.h"

namespace quelmar {

enum class Pondering {
    NO,
    YES,  // on the opponent's time, behind a move that he has not played yet
    HIT,  // he has played it: the search goes on as ours
};

// Written by the front ends before think() and, while it runs, by those that act on its input; the time check
// sets abort_search, reset_search clears it.
struct SearchControl {
    bool abort_search = false;  // the running search must stop
    Pondering ponder_state = Pondering::NO;
    bool analyze_mode = false;
    bool uci_infinite = false;
    bool test_mode = false;  // a mate that was found does not end the search
    // A clock's moves_per_control says how many are left, not how many a control has.
    bool counts_moves_left = false;
    // Keeps root_lines: variations that end where the game does and are continued as far as the tables of
    // either kind prove them, and root moves ranked by endgame tables. No node changes without the latter.
    bool keeps_lines = false;
    u64 nodes_between_looks = 0;  // of all kinds, between looks at input and clock; 0: see search_limits.h
};

inline SearchControl search_control;

// Whether only the front end can end the search.
inline bool is_endless() {
    return search_control.ponder_state == Pondering::YES || search_control.analyze_mode ||
           search_control.uci_infinite;
}

// What the user may set about the search. Written by the protocol's options, only read by the search.
// Flags are ints holding 0 or 1, so that the tables of keys and options can address every field alike.
struct SearchSettings {
    int selectivity = 6;             // 0..10; 0 switches late-move reductions off
    int null_reduction = 3;          // plies; 0 switches the null move off
    int null_reduction_endgame = 2;  // plies, with little material
    int qsearch_checks = 1;
    int bm_exts = 1;     // Botvinnik-Markoff extension
    int iid = 1;         // internal iterative deepening
    int grain_size = 4;  // evaluation units per unit of search score; used through grain()

    // grain_size clamped to what the search can divide and shift by, 1..31.
    int grain() const { return grain_size < 1 ? 1 : grain_size > 31 ? 31 : grain_size; }
};

inline SearchSettings search_settings;

}  // namespace quelmar
