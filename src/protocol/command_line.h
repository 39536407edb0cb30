// What all programs understand on their command line, and what they say when a person started them.
#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace quelmar {

// "-h" and "--help" print `usage`, "-V" and "--version" the version, on standard output. `arguments` begins
// with the program's name, the questions may stand anywhere behind it. Returns true when one was answered.
bool answers_question(std::span<char* const> arguments, const char* usage);

// The same, and any other word that begins with "-" is refused on standard error, unless it is one of `known`
// or stands behind one of them that ends with "=", which means that a value follows. Returns the exit status
// with which the program has to end, nothing when it goes on.
std::optional<int> status_of_options(std::span<char* const> arguments, const char* usage,
                                     std::initializer_list<std::string_view> known = {});

// Says on standard error what the program is ("a chess engine ..."), when standard input is a terminal: a
// person who started it would look at nothing.
void greet_terminal(std::string_view program, const char* what);

bool errors_reach_terminal();  // whether standard error is one

// The two batch modes: an EPD file, each position for a fixed time, and the benchmark, one position for five
// minutes.

// Searches the positions of the file, up to the first line too short to be one, for `seconds_text` seconds
// each (what is no number counts as 0) with the usual thinking output, and prints nodes, time and speed.
// Lines that are no position are reported and passed over. Ends the process with exit status 1 when the file
// cannot be opened.
void run_epd_test(const char* file_name, std::string_view seconds_text);

// Searches the benchmark position for five minutes with the usual thinking output and prints nodes and speed.
// The position stays set up afterwards.
void run_benchmark();

}  // namespace quelmar
