// A file descriptor as lines, for readers that must not block.
//
// Bytes are taken in when they arrive and handed out as whole lines, so half a line in the pipe is never
// acted on and several lines in one write are all seen. A line ends with LF or CR LF; it is handed out with
// exactly one "\n", also when it is the unfinished last one. NUL bytes are dropped. A line that grows beyond
// LONGEST_LINE loses its tail.
#pragma once

#include <deque>
#include <string>
#include <string_view>

namespace quelmar {

inline constexpr std::size_t LONGEST_LINE = std::size_t{1} << 20;  // bytes

class LineReader {
public:
    static constexpr int NO_WAIT = 0, FOREVER = -1;

    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    // Waits up to `timeout_ms`, or as NO_WAIT and FOREVER say, for bytes and takes in what one read gives. A
    // closed or broken descriptor counts as the end of the input.
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

}  // namespace quelmar
