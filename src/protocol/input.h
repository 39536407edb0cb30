// Standard input as lines, without ever blocking a search.
#pragma once

#include <string>

namespace quelmar {

// Called by the search every few thousand nodes. Never blocks. Acts on every complete line that has
// arrived (in UCI mode by the UCI rules): may set abort_search and ponder_state, change clocks and flags,
// queue commands for later; never changes the position. Does nothing before input has been opened (tests,
// tools).
void poll_input();

}  // namespace quelmar
