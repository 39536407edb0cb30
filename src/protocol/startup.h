// Settings at the start of the program.
#pragma once

namespace quelmar {

// Makes sure that descriptors 0, 1 and 2 are open (on the null device if need be): otherwise the first file
// opened would become standard input or output. Lets a closed output end the process, and hands every line of
// output on at once.
void prepare_standard_streams();

// From here on an allocation that fails, where nobody knows another way, ends the process with a message and
// exit status 1.
void end_when_memory_runs_out();

// Defaults, then "quelmar.ini"; then what depends on them: endgame tables and the transposition table.
void load_settings();

}  // namespace quelmar
