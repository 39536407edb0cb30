#include "search/time_control.h"

#include "board/position.h"
#include "platform/platform.h"
#include "search/search_reports.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr i32 STATUS_INTERVAL_MS = 1000;
constexpr i64 RESERVE_MS = 1000;  // kept for the move that reaches the time control
constexpr i64 MOVES_AHEAD = 40;   // plies over which the time of a control is spread at most
constexpr i64 MAX_MOVES_PER_CONTROL = 1 << 20;

void set_budget(i64 target, i64 maximum) {
    search_state.target_time = clamp_to_i32(target);
    search_state.max_time = clamp_to_i32(maximum);
}

// Unless the client says how many moves are left, they are counted from the start of the game.
i64 plies_to_control(const SideClock& clock) {
    const i64 plies = 2 * std::clamp<i64>(clock.moves_per_control, 1, MAX_MOVES_PER_CONTROL);
    if (search_control.counts_moves_left)
        return plies;
    return plies - (position.game_ply + position.dropped_plies) % plies;
}

void budget_for_control(const SideClock& clock) {
    const i64 plies = plies_to_control(clock);
    const i64 left = clock.time_left_ms;
    set_budget(left / std::min(plies, MOVES_AHEAD),
               plies <= 2 ? left - RESERVE_MS : std::min(left / 4, 3 * left / plies));
}

void budget_for_game(const SideClock& clock) {
    const i64 left = clock.time_left_ms, increment = clock.increment_ms;
    if (increment == 0)
        set_budget(left / 50, left / 12);
    else
        set_budget(left / 40 + (increment >> 2), std::max(increment - 100, left / 10));
}

void charge(SideClock& clock, i32 elapsed) {
    clock.time_left_ms = clamp_to_i32(i64{clock.time_left_ms} - (i64{elapsed} - clock.increment_ms));
}

}  // namespace

i32 clock_ms() {
    return static_cast<i32>(static_cast<u32>(platform::time_of_day_ms()));
}

static i32 time_between(i32 earlier, i32 later) {
    return static_cast<i32>(static_cast<u32>(later) - static_cast<u32>(earlier));
}

i32 elapsed_since(i32 stamp) {
    return time_between(stamp, clock_ms());
}

void allocate_time() {
    const SideClock& clock = position.current().clock[position.side_to_move];
    search_state.timed = clock.kind != ClockKind::FIXED_DEPTH;
    search_state.iteration_limit =
        search_state.timed ? MAX_ITERATION : std::clamp(clock.depth_limit, 1, MAX_ITERATION);
    switch (clock.kind) {
    case ClockKind::WHOLE_GAME:
        budget_for_game(clock);
        break;
    case ClockKind::PER_MOVE:
        set_budget(clock.time_left_ms, clock.time_left_ms);
        break;
    case ClockKind::MOVES_IN_TIME:
        budget_for_control(clock);
        break;
    default:  // a search without a clock keeps the budget of the one before
        break;
    }
}

void update_clocks_after_move(i32 elapsed) {
    if (position.game_ply < 1)
        return;
    UndoRecord& here = position.current();
    here.clock = position.previous().clock;
    SideClock& mover = here.clock[other_side(position.side_to_move)];
    if (mover.kind != ClockKind::PER_MOVE)
        charge(mover, elapsed);
}

void update_root_clock(Side side, i32 elapsed) {
    UndoRecord& root = position.back(position.search_ply);
    if (position.game_ply > position.search_ply)
        root.clock = position.back(position.search_ply + 1).clock;
    charge(root.clock[side], elapsed);
}

void time_check() {
    if (search_state.iteration <= 1)
        return;
    const i32 now = clock_ms();
    const i32 elapsed = time_between(search_state.start_time, now);
    if (elapsed < STATUS_INTERVAL_MS)
        search_state.last_status_time = search_state.start_time;
    if (time_between(search_state.last_status_time, now) > STATUS_INTERVAL_MS) {
        search_reports.status();
        search_state.last_status_time = now;
    }
    stop_when_time_is_up();
}

void look_outside() {
    search_state.nodes_at_look = search_state.nodes;
    search_reports.poll_input();
    time_check();
}

void stop_when_time_is_up() {
    if (is_endless() || !search_state.timed)
        return;
    const i32 elapsed = elapsed_since(search_state.budget_start);
    const bool ponder_hit_used_up =
        search_control.ponder_state == Pondering::HIT && elapsed > 3 * i64{search_state.target_time};
    if (elapsed > search_state.max_time || ponder_hit_used_up)
        search_control.abort_search = true;
}

}  // namespace quelmar
