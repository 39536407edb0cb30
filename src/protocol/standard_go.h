// "go" of the standard UCI, and what its searches tell the client.
#pragma once

#include <string_view>

namespace quelmar {

// What "go" says behind its word. Searches the current position and prints the best move.
void standard_go(std::string_view arguments);

// What a search tells a UCI client of today: "info" lines with every field, and the best move. From now on
// the search's lines are printed in this form, whatever print_what_the_search_says() has set. Says what is
// known before every "bestmove", however the search ended, and bounds only after a second.
void print_standard_lines();

}  // namespace quelmar
