// Standard input as command lines, without ever blocking a search.
#pragma once

#include <deque>
#include <string>
#include <string_view>

namespace quelmar {

inline constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20;  // bytes

// A file descriptor as lines, for readers that must not block.
//
// Bytes are taken in when they arrive and handed out as whole lines, so half a line in the pipe is never
// acted on and several lines in one write are all seen. A line ends with LF or CR LF; it is handed out with
// exactly one "\n", also when it is the unfinished last one. NUL bytes are dropped. A line that grows beyond
// LONGEST_LINE loses its tail.
class LineReader {
public:
    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    // Waits up to `timeout_ms`, or as platform::NO_WAIT and FOREVER say, for bytes and takes in what one read
    // gives. A closed or broken descriptor counts as the end of the input.
    void take_in(int timeout_ms);

    // Hands out the next whole line; false when none has arrived.
    bool pop_line(std::string& line);

    bool has_line() const { return !lines_.empty(); }
    bool at_end() const { return ended_ && lines_.empty(); }
    bool input_ended() const { return ended_; }  // lines may still be waiting

private:
    void add(std::string_view bytes);
    void finish_line();
    void end();

    int descriptor_;
    bool ended_ = false;
    std::deque<std::string> lines_;
    std::string unfinished_;
};

// What the end of the input means: the interface is gone and the program goes too, or nothing (batch modes
// run to their end without anybody at the other side).
enum class EndOfInput { QUITS, IS_IGNORED };

// From here on the functions below read standard input. Called once, at start-up.
void open_input(EndOfInput at_end);

// Who acts on the lines that arrive during a search. Must be set before the first search.
void set_search_line_handler(void (*act_on)(std::string_view line));

// Blocks until a command line has arrived and returns it with its "\n"; "quit\n" at the end of the input.
std::string read_command();

// Called by the search every few thousand nodes. Never blocks. Acts on every complete line that has arrived:
// may set abort_search and ponder_state, change clocks and flags, queue commands for later; never changes the
// position. Once the search is to stop nothing more is read: what follows belongs to the time after it. Does
// nothing before input has been opened (tests, tools).
void poll_input();

// For a search without end that has nothing left to find: blocks until poll_input() has something to act on.
// Before input has been opened it sets abort_search, since nobody could ever end the wait.
void wait_for_input();

}  // namespace quelmar
