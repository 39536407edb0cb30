// What the search has to say to the outside, and when it looks there. The protocol fills the record in at
// start-up; until then every report goes nowhere. Reports come per line, per root move and per some thousand
// nodes, never per node.
#pragma once

#include "board/types.h"
#include "search/score.h"
#include "search/search_control.h"

#include <vector>

namespace quelmar {

// What is known of the score of a thinking line.
enum class LineKind { UPPER_BOUND, LOWER_BOUND, EXACT };

// One of the best root moves and what it leads to.
struct RootLine {
    int depth = 0;       // the iteration that found it
    Score score = 0;     // of the root side; the endgame tables' where they know the root
    Score searched = 0;  // what the search itself found
    LineKind kind = LineKind::EXACT;
    std::vector<Move> moves;
    bool is_whole_mate = false;  // `moves` are all moves to the mate that `score` tells of
};

struct SearchReports {
    void (*iteration_begins)() = [] {};
    // A variation has been read into search_state.pv. `score` is that of the root side.
    void (*line)(Score score, i32 elapsed_ms, LineKind kind) = [](Score, i32, LineKind) {};
    // With search_control.keeps_lines: after every iteration and once more at the end of the search, however
    // it ended, the lines that are known, best first. Empty only when the root has no move.
    void (*lines)(const std::vector<RootLine>& lines) = [](const std::vector<RootLine>&) {};
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
