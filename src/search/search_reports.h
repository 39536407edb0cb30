// What the search has to say to the outside, and when it looks there. The protocol fills the record in at
// start-up; until then every report goes nowhere. Reports come per line, per root move and per some thousand
// nodes, never per node.
#pragma once

#include "board/types.h"
#include "search/score.h"
#include "search/search_control.h"

namespace quelmar {

// What is known of the score of a thinking line.
enum class LineKind { UPPER_BOUND, LOWER_BOUND, EXACT };

struct SearchReports {
    void (*iteration_begins)() = [] {};
    // A variation has been read into search_state.pv. `score` is that of the root side.
    void (*line)(Score score, i32 elapsed_ms, LineKind kind) = [](Score, i32, LineKind) {};
    // After a second of search: the root turns to search_state.current_root_move; a root move was not good
    // enough.
    void (*root_move_begins)() = [] {};
    void (*root_move_refuted)(const Move& move) = [](const Move&) {};
    void (*status)() = [] {};  // about once a second
    // Acts on the input that has arrived without ever blocking: may stop the search or change its control,
    // never the position.
    void (*poll_input)() = [] {};
    // Blocks until there is something for poll_input to act on. Where nobody could ever answer it stops the
    // search.
    void (*wait_for_input)() = [] { search_control.abort_search = true; };
};

inline SearchReports search_reports;

}  // namespace quelmar
