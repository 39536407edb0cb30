// The two batch modes: an EPD file, each position for a fixed time, and the benchmark, one position for five
// minutes.
#pragma once

#include <string_view>

namespace quelmar {

// Searches the positions of the file, up to the first line too short to be one, for `seconds_text` seconds
// each (what is no number counts as 0) with the usual thinking output, and prints nodes, time and speed.
// Lines that are no position are reported and passed over. Ends the process with exit status 1 when the file
// cannot be opened.
void run_epd_test(const char* file_name, std::string_view seconds_text);

// Searches the benchmark position for five minutes with the usual thinking output and prints nodes and speed.
// The position stays set up afterwards.
void run_benchmark();

}  // namespace quelmar
