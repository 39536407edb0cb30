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

}  // namespace quelmar
