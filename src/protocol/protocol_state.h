// Flags shared by the front ends and the search. The front ends write them; the search and its output only
// read them. Exceptions: the input polls and the time check set abort_search and ponder_state during a
// search, reset_search clears abort_search, a set-up clears game_over, parse_move writes user_move.
#pragma once

#include "board/types.h"

#include <optional>
#include <string>
#include <vector>

namespace quelmar {

inline constexpr char ENGINE_NAME[] = "Quelmar FRC";
inline constexpr char ENGINE_VERSION[] = QUELMAR_VERSION;  // from CMakeLists.txt

// Values of ProtocolState::ponder_state.
inline constexpr int NOT_PONDERING = 0, PONDERING = 1, PONDER_HIT = 2;

struct ProtocolState {
    bool xboard_mode = false;  // the interface said "xboard": thinking lines in its format
    bool uci_mode = false;     // UCI is active: input poll, move text, thinking lines
    bool uci_debug = false;    // echo every command
    bool ics_mode = false;     // playing on a chess server
    bool force_mode = false;   // record moves, never think unasked
    bool engine_white = false;
    bool engine_black = false;
    bool post_thinking = false;  // stored only
    bool easy_mode = false;      // no pondering
    bool analyze_mode = false;
    bool clock_running = false;
    bool abort_search = false;  // the running search must stop
    bool random_mode = false;   // stored only
    bool game_over = false;     // a result was printed for the current position
    int ponder_state = NOT_PONDERING;
    bool own_book = false;  // stored only
    bool ics_computer_opponent = false;
    bool uci_infinite = false;
    bool test_mode = false;                     // EPD test runner: a found mate does not end the search
    bool searching = false;                     // think() runs: commands come from its input poll
    std::vector<std::string> pending_commands;  // read during a search, to be run after it, in their order
    Move ponder_move;                           // expected from the opponent; empty when from = 0
    Move user_move;                             // last move parsed by parse_move; empty when from = 0
    i32 last_clock_stamp = 0;                   // clock_ms at the last charge
    int resign_count = 0;                       // consecutive engine moves that met the resign test
    // What "time" and "otim" said last, until the next move of a running game makes it old.
    std::optional<i32> engine_time_ms, opponent_time_ms;
};

extern ProtocolState protocol_state;  // defined in protocol_state.cpp

}  // namespace quelmar
