// Standard input as command lines, without ever blocking a search.
#pragma once

#include <string>
#include <string_view>

namespace quelmar {

// What the end of the input means: the interface is gone and the program goes too, or nothing (batch modes
// run to their end without anybody at the other side).
enum class EndOfInput { QUITS, IS_IGNORED };

// From here on the functions below read standard input. Called once, at start-up.
void open_input(EndOfInput at_end);

// Who acts on the lines that arrive during a search. Must be set before the first search.
void set_search_line_handler(void (*act_on)(std::string_view line));

// Blocks until a command line has arrived and returns it with its "\n"; "quit\n" at the end of the input.
std::string read_command();

// Called by the search every few thousand nodes. Never blocks. Acts on every complete line that has
// arrived: may set abort_search and ponder_state, change clocks and flags,
// queue commands for later; never changes the position. Once the search is to stop nothing more is read:
// what follows belongs to the time after it. Does nothing before input has been opened (tests, tools).
void poll_input();

// For a search without end that has nothing left to find: blocks until poll_input() has something to act on.
// Before input has been opened it sets abort_search, since nobody could ever end the wait.
void wait_for_input();

}  // namespace quelmar
