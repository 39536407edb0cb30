// The UCI protocol.
#pragma once

namespace quelmar {

// Identifies the engine, announces the options and obeys UCI commands for the rest of the run. The caller has
// changed the settings that come with the protocol.
[[noreturn]] void enter_uci();

// The "bestmove" line of the search that has just ended.
void print_best_move();

// The "id" lines.
void print_identity();

}  // namespace quelmar
