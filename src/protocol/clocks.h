// Chess clocks: plain data, written by the protocol front ends, read by time management.
#pragma once

#include "board/types.h"

namespace quelmar {

// Values of `kind`.
inline constexpr i32 CLOCK_WHOLE_GAME = 0;     // time_left_ms for the rest of the game, plus increment
inline constexpr i32 CLOCK_PER_MOVE = 1;       // time_left_ms for each move, never charged
inline constexpr i32 CLOCK_FIXED_DEPTH = 2;    // depth_limit iterations, time does not count
inline constexpr i32 CLOCK_UNLIMITED = 3;      // "go infinite"; has no budget of its own
inline constexpr i32 CLOCK_MOVES_IN_TIME = 4;  // moves_per_control moves in time_left_ms

// One side's clock, kept in every entry of the position stack.
struct SideClock {
    i32 kind = CLOCK_WHOLE_GAME;
    i32 moves_per_control = 0;
    i32 time_left_ms = 0;  // may become negative
    i32 depth_limit = 0;   // iterations, for CLOCK_FIXED_DEPTH
    i32 increment_ms = 0;
};

// The game's time control. Written by the protocol front ends, copied into the clocks by position set-up.
struct TimeControl {
    i32 kind = CLOCK_WHOLE_GAME;
    i32 moves_per_control = 0;
    i32 base_ms = 300000;
    i32 depth_limit = 0;  // iterations; above 0 it holds instead of `kind`, which is kept for the next game
    i32 increment_ms = 0;

    // A clock that has just been set to this control.
    SideClock fresh_clock() const {
        return {depth_limit > 0 ? CLOCK_FIXED_DEPTH : kind, moves_per_control, base_ms, depth_limit,
                increment_ms};
    }
};

extern TimeControl time_control;  // defined in protocol_state.cpp

}  // namespace quelmar
