// The engine's outside, as a fuzzer plays it.
//
// The linker sends the engine's calls of poll, read, gettimeofday, fopen, calloc and exit here (-Wl,--wrap).
// So a whole run of the program, searches and the end of the process included, takes place inside one call of
// the fuzzer, and the same bytes always give the same run: standard input and "quelmar.ini" are the fuzzer's
// bytes, the clock ticks with every question asked, and the end of the process is an exception.
#pragma once

#include <string>

namespace quelmar::fuzz {

// Every fuzzer defines this: what it runs, each time in the state of a process that has just started, with
// the default settings, a small hash table and its output in the null device. Another exit status than 0 is a
// find.
void session();

// The bytes of standard input, which has ended then.
std::string take_input();

}  // namespace quelmar::fuzz
