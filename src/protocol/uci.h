// The UCI protocol.
#pragma once

#include <string_view>

namespace quelmar {

// Identifies the engine, announces the options and obeys UCI commands for the rest of the run. The caller has
// changed the settings that come with the protocol.
[[noreturn]] void enter_uci();

// Carries out one command line (with its "\n"). Lines that are no command are ignored.
void dispatch_uci_command(std::string_view line);

// The same for a line that arrives in the middle of a search: "stop" and "ponderhit" act on it; what would
// change the position, the table or the settings, or would search itself, waits until it has returned.
void dispatch_uci_during_search(std::string_view line);

// The "bestmove" line of the search that has just ended.
void print_best_move();

// The "id" lines.
void print_identity();

}  // namespace quelmar
