// The start of a program.
#pragma once

namespace quelmar {

// From here on an allocation that fails, where nobody knows another way, ends the process with a message and
// exit status 1.
void end_when_memory_runs_out();

// Which UCI a program speaks: its own, after "uci" in the xboard protocol, or that of today's clients from
// the first line on.
enum class UciKind { OWN, STANDARD };

// Defaults, then "quelmar.ini" (under standard UCI that of the user when the directory has none); then what
// depends on them: endgame tables and the transposition table.
void load_settings(UciKind kind);

// Everything that must have run before a command can be obeyed, in its order: keys and tables, the search's
// reports, settings, a new game.
void start_engine(UciKind kind);

}  // namespace quelmar
