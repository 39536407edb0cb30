// The UCI options: what is announced and what is understood.
#pragma once

#include <span>
#include <string_view>

namespace quelmar {

// The "option name ..." lines in their order, without line ends.
std::span<const std::string_view> announced_uci_options();

void print_uci_options();

// Sets an option from what follows "setoption name ": an option text and its value. Upper and lower case are
// the same. Unknown options and values, and numbers that cannot be read, change nothing; numbers are not held
// against the announced range.
void set_uci_option(std::string_view text);

}  // namespace quelmar
