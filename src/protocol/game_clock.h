// The game's time control and the xboard commands that set it and the clocks. All write every entry of the
// position stack up to the current one, so that moves taken back find the new values too. Arguments that
// cannot be read change nothing, nor do time controls with negative numbers. Seconds take fractions where it
// says so.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <optional>
#include <string_view>

namespace quelmar {

// The game's time control. Written by the protocol front ends, copied into the clocks by position set-up.
struct TimeControl {
    ClockKind kind = ClockKind::WHOLE_GAME;
    i32 moves_per_control = 0;
    i32 base_ms = 300000;
    i32 depth_limit = 0;  // iterations; above 0 it holds instead of `kind`, which is kept for the next game
    i32 increment_ms = 0;

    // A clock that has just been set to this control.
    SideClock fresh_clock() const {
        return {depth_limit > 0 ? ClockKind::FIXED_DEPTH : kind, moves_per_control, base_ms, depth_limit,
                increment_ms};
    }
};

extern TimeControl time_control;

// The argument of "time" and "otim" in milliseconds; nothing when it is no number.
std::optional<i32> read_centiseconds(std::string_view text);

// `side` has so many milliseconds left.
void set_time_left(Side side, i32 ms);

// Forgets what "time" and "otim" have said: a "go" changes no clock then.
void forget_times();

// "level": "MOVES MINUTES[:SECONDS] INCREMENT", the increment in seconds with a fraction; 0 moves: the whole
// game.
void set_level(std::string_view arguments);

// "st": a fixed number of seconds, with a fraction, for every move.
void set_seconds_per_move(std::string_view seconds);

// "sd": so many iterations for every move, whatever the clock says; below 1 changes nothing. Ended by
// "level", "st" and a new game, which finds the time control from before.
void set_depth(std::string_view iterations);

}  // namespace quelmar
