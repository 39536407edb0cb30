// Benchmarks: of each program, and positions of an EPD file for a fixed time.
#pragma once

#include <string_view>

namespace quelmar {

// The benchmark of quelmar-uci: fixed positions to a fixed depth, each as in a fresh process. `arguments` are
// "[DEPTH] [HASH]", iterations and megabytes. Prints a line per position and last "N nodes M nps". The nodes
// are the same on every machine, with the same settings and endgame tables; the speed is that of the machine.
// Game, hash size and limits are as before afterwards, the hash table is empty. "stop" ends it. Returns
// false, and says why, for arguments that are none.
bool run_bench(std::string_view arguments);

// "quelmar test": searches the positions of the file, up to the first line too short to be one, for
// `seconds_text` seconds each (what is no number counts as 0) with the usual thinking output, and prints
// nodes, time and speed. Lines that are no position are reported and passed over. Ends the process with exit
// status 1 when the file cannot be opened.
void run_epd_test(const char* file_name, std::string_view seconds_text);

// The benchmark of quelmar: searches one position for five minutes with the usual thinking output and prints
// nodes and speed. The position stays set up afterwards.
void run_benchmark();

}  // namespace quelmar
