// The benchmark of the second program: fixed positions to a fixed depth, each as in a fresh process.
#pragma once

#include <string_view>

namespace quelmar {

// "[DEPTH] [HASH]", iterations and megabytes. Prints a line per position and last "N nodes M nps". The nodes
// are the same on every machine, with the same settings and endgame tables; the speed is that of the machine.
// Game, hash size and limits are as before afterwards, the hash table is empty. "stop" ends it. Returns
// false, and says why, for arguments that are none.
bool run_bench(std::string_view arguments);

}  // namespace quelmar
