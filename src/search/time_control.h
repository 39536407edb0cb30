// The millisecond clock, the chess clocks, and the budget of a move.
#pragma once

#include "board/types.h"
#include "search/search_control.h"
#include "search/search_state.h"

namespace quelmar {

inline constexpr i64 MS_PER_SECOND = 1000;

constexpr double seconds_of(i64 ms) {
    return static_cast<double>(ms) / static_cast<double>(MS_PER_SECOND);
}

// Time of day in milliseconds. Wraps; only differences mean anything (see elapsed_since).
i32 clock_ms();

i32 elapsed_since(i32 stamp);  // milliseconds since clock_ms() was `stamp`

// Sets target_time, max_time, timed and iteration_limit of search_state from the clock of the side to move.
void allocate_time();

// After a game move: both clocks move into the new entry; the mover is charged `elapsed` milliseconds and
// gets the increment, unless the clock runs per move.
void update_clocks_after_move(i32 elapsed);

// The same for the entry of the search root, charging `side` whatever its kind of clock.
void update_root_clock(Side side, i32 elapsed);

// Called after every input poll of the search: status lines, and abort_search when time is up. Does nothing
// during the first iteration.
void time_check();

// Polls the input and checks the time.
void look_outside();

// For a search that counts all its nodes (search_control.nodes_between_looks): looks outside when enough of
// them have passed.
inline void look_when_due() {
    const u64 between = search_control.nodes_between_looks;
    if (between != 0 && search_state.nodes - search_state.nodes_at_look >= between)
        look_outside();
}

// Sets abort_search when the search runs on a clock and its time is up, in any iteration.
void stop_when_time_is_up();

}  // namespace quelmar
