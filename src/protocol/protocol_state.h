// Flags of the front ends, which write and read them. What the search reads as well stands in SearchControl.
// A set-up clears game_over, parse_move writes user_move.
#pragma once

#include "board/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

inline constexpr char ENGINE_NAME[] = "Quelmar FRC";
inline constexpr char ENGINE_AUTHOR[] = "Edrin Talvose";
inline constexpr char ENGINE_VERSION[] = QUELMAR_VERSION;  // from CMakeLists.txt

struct ProtocolState {
    bool xboard_mode = false;   // the interface said "xboard": thinking lines in its format
    bool uci_mode = false;      // UCI is active: move text, thinking lines
    bool standard_uci = false;  // UCI as today's clients speak it (standard_uci.h), not the engine's own
    bool uci_debug = false;     // echo every command
    bool ics_mode = false;      // playing on a chess server
    bool force_mode = false;    // record moves, never think unasked
    bool engine_white = false;
    bool engine_black = false;
    bool easy_mode = false;  // no pondering
    bool clock_running = false;
    bool game_over = false;  // a result was printed for the current position
    bool ics_computer_opponent = false;
    bool searching = false;                     // think() runs: commands come from its input poll
    std::vector<std::string> pending_commands;  // read during a search, to be run after it, in their order
    Move ponder_move;                           // expected from the opponent; empty when from = 0
    Move user_move;                             // last move parsed by parse_move; empty when from = 0
    i32 last_clock_stamp = 0;                   // clock_ms at the last charge
    int resign_count = 0;                       // consecutive engine moves that met the resign test
    // What "time" and "otim" said last, until the next move of a running game makes it old.
    std::optional<i32> engine_time_ms, opponent_time_ms;
};

extern ProtocolState protocol_state;

// A line that the active protocol ignores: "# TEXT" or "info string TEXT".
void tell(const std::string& text);

// As much of what the client said as is worth repeating.
std::string excerpt(std::string_view said);

}  // namespace quelmar
