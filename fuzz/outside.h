// The engine's outside, as a fuzzer plays it.
//
// The linker sends the engine's calls of poll, read, gettimeofday, fopen, calloc and exit here (-Wl,--wrap).
// So a whole run of the program, searches and the end of the process included, takes place inside one call of
// the fuzzer, and the same bytes always give the same run: standard input is the fuzzer's bytes, the clock
// ticks with every question asked, and the end of the process is an exception.
#pragma once

#include "board/types.h"

#include <span>

namespace quelmar::fuzz {

// In the bytes of standard input: nothing has arrived at this poll of a search.
inline constexpr u8 NOTHING_YET = 1;

// Larger blocks are not to be had, so that an absurd hash size cannot exhaust the machine.
inline constexpr std::size_t LARGEST_BLOCK = std::size_t{8} << 20;

// Once per process: what the program does before it reads its settings. Output goes to the null device.
void start_engine();

// The state of a process that has just started, with the default settings and a small hash table.
void reset_engine();

// Runs `session` with `input` as standard input and as "quelmar.ini", until it returns or ends the process.
// Aborts when the process would have ended with another status than 0.
void run(std::span<const u8> input, void (*session)());

}  // namespace quelmar::fuzz
