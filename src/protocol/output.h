// Standard output of the protocols, and the record that a tester may ask for of all that went in and out.
#pragma once

#include <string>
#include <string_view>

namespace quelmar {

// std::printf on standard output. Whole lines go to the log file as well, when there is one.
[[gnu::format(printf, 1, 2)]] void print(const char* format, ...);

// The same with text as it stands.
void print_text(std::string_view text);

// From here on every line in and out is added to the file `path`, with the time (UTC) and its direction; with
// an empty path none is. Returns what stands against it ("cannot be written"), in which case a log that is
// kept goes on; empty when nothing does. A file that fails later on is closed with a message.
std::string open_log_file(const std::string& path);

// A line that has been read, its line end included or not.
void log_input(std::string_view line);

}  // namespace quelmar
