// The benchmark: one position, a fixed time.
#pragma once

namespace quelmar {

// Searches the benchmark position for five minutes with the usual thinking output and prints nodes and speed.
// The position stays set up afterwards.
void run_benchmark();

}  // namespace quelmar
