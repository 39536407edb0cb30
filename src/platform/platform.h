// What differs between systems: the one header for it, with one source per kind of system, of which the build
// takes its own. Everything else is the same everywhere.
//
// Names of files are bytes as main() and the C library take them, or std::filesystem paths where a caller has
// those.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quelmar::platform {

inline constexpr int STANDARD_INPUT = 0, STANDARD_ERROR = 2;  // descriptors

// Makes sure that descriptors 0, 1 and 2 are open (on the null device if need be): otherwise the first file
// opened would become standard input or output. Lets a closed output end the process where the system can,
// makes "\n" one byte, and hands every line of output on at once; where the C library buffers no lines,
// read_arrived() and the end of the process do that.
void prepare_standard_streams();

// Whether a person sits at the other end of the descriptor.
bool is_terminal(int descriptor);

inline constexpr int NO_WAIT = 0, FOREVER = -1;         // as timeouts
inline constexpr std::ptrdiff_t NOTHING = 0, END = -1;  // instead of a count of bytes

// Waits up to `timeout_ms` until the descriptor has something to read, then reads once. Returns the count of
// bytes, NOTHING when none came or a signal interrupted, END when the descriptor is at its end, closed or
// broken. With NO_WAIT it never blocks; at a console whole lines count, half a line is nothing yet.
std::ptrdiff_t read_arrived(int descriptor, std::span<char> bytes, int timeout_ms);

// Time of day in milliseconds; only differences mean anything.
std::uint64_t time_of_day_ms();

// The last part of a path.
std::string_view file_name(std::string_view path);
// The characters that may stand between the directories of a list.
std::string_view list_separators();
bool is_regular_file(const char* path);
bool is_directory(const char* path);

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

// A binary file; nullptr with errno set if it cannot be opened.
std::FILE* open_to_read(const std::filesystem::path& path);

// Opens a file to be written, empty, and holds it as long as it is open: by that other processes see that its
// process has not ended. Returns a descriptor, or -1 with errno set. The three below return false with errno
// set on failure; close_file releases the descriptor in any case.
int open_held(const std::filesystem::path& path);
bool write_all(int descriptor, std::span<const std::uint8_t> bytes);
bool flush_to_disk(int descriptor);
bool close_file(int descriptor);
// Removes the file unless a process holds it. Does nothing where that cannot be told, or for what is no file.
void remove_unless_held(const std::filesystem::path& path);

// Another number for every process that runs.
int process_number();

// What a program prints on standard output, called by path with arguments of plain words; nothing if it
// cannot be run.
std::string output_of(const std::string& program, const std::string& arguments);

// At least `bytes` bytes of zeros that begin at a multiple of 64 KB, on huge pages where the system has them
// for everybody; they come from the system as they are touched. nullptr when there is not so much.
void* allocate_large(std::size_t bytes);
// `memory` is what allocate_large(bytes) returned, or nullptr.
void release_large(void* memory, std::size_t bytes);

}  // namespace quelmar::platform
