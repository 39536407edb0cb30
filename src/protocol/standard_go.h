// "go" of the standard UCI.
#pragma once

#include <string_view>

namespace quelmar {

// What "go" says behind its word. Searches the current position and prints the best move.
void standard_go(std::string_view arguments);

}  // namespace quelmar
