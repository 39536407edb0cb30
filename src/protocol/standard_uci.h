// The second face: UCI as today's interfaces speak it. It differs from the engine's own dialect in what it
// writes and reads (dialect.h), in its options, and in that all limits of "go" hold together. What went wrong
// is told in "info string" lines.
#pragma once

#include <string>
#include <string_view>

namespace quelmar {

// Lets the whole program write and read the standard dialect from now on.
void adopt_standard_dialect();

// Obeys UCI commands until "quit" or the end of the input. Settings and the start position must be set up.
[[noreturn]] void run_standard_uci();

// "info string " and the text, on a line of its own.
void tell(const std::string& text);

// As much of what the client said as is worth repeating.
std::string excerpt(std::string_view said);

// What "go" says behind its word. Searches the current position and prints the best move.
void standard_go(std::string_view arguments);

}  // namespace quelmar
