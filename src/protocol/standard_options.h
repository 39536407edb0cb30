// The options of the standard UCI: one table for what is announced and what is understood.
#pragma once

#include <string_view>

namespace quelmar {

inline constexpr int MAX_HASH_MB = sizeof(void*) > 4 ? 65536 : 1024;

// The values the settings have now are announced as the defaults from here on.
void remember_standard_defaults();

// Says which tables were found, unless nobody has asked for any: no path is set and none is there.
void tell_start_tables();

// The "option name ..." lines.
void print_standard_options();

// Sets an option from what follows "setoption": "name NAME" or "name NAME value VALUE". Upper and lower case
// are the same. An unknown option, and a value that the option does not take, change nothing and are told.
void set_standard_option(std::string_view arguments);

// Milliseconds of every move that get lost between the engine and the clock.
int move_overhead_ms();

// How many lines a search shall find.
int lines_wanted();

}  // namespace quelmar
