// The commands of the xboard protocol.
#pragma once

#include <string_view>

namespace quelmar {

// Carries out one command line (with its "\n"). Lines that are no command are ignored. "uci" does not return.
void dispatch_xboard_command(std::string_view line);

// The same for a line that arrives in the middle of a search: what would change the position, or would search
// itself, stops the search and runs when it has returned; a move sent while the engine thinks only waits; the
// rest acts at once. "?" stops the search.
void dispatch_xboard_during_search(std::string_view line);

}  // namespace quelmar
