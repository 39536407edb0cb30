// The xboard commands that set clocks. All write every entry of the position stack up to the current one, so
// that moves taken back find the new values too. Arguments that cannot be read
// change nothing, nor do time controls with negative numbers.
#pragma once

#include "board/types.h"

#include <string_view>

namespace quelmar {

// "time" and "otim": the side has `centiseconds` left, a decimal number.
void set_time_left(Side side, std::string_view centiseconds);

// "level": "MOVES MINUTES[:SECONDS] INCREMENT"; 0 moves: the whole game.
void set_level(std::string_view arguments);

// "st": a fixed number of seconds for every move.
void set_seconds_per_move(std::string_view seconds);

}  // namespace quelmar
