#include "protocol/input.h"

#include "platform/platform.h"
#include "protocol/output.h"
#include "search/search_control.h"

#include <array>
#include <cstdio>
#include <optional>
#include <utility>

namespace quelmar {

void LineReader::take_in(int timeout_ms) {
    if (ended_)
        return;
    std::array<char, 65536> bytes;
    const std::ptrdiff_t count = platform::read_arrived(descriptor_, bytes, timeout_ms);
    if (count > 0)
        add({bytes.data(), static_cast<std::size_t>(count)});
    else if (count == platform::END)
        end();
}

bool LineReader::pop_line(std::string& line) {
    if (lines_.empty())
        return false;
    line = std::move(lines_.front());
    lines_.pop_front();
    return true;
}

void LineReader::add(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\n')
            finish_line();
        else if (byte != '\0' && unfinished_.size() < LONGEST_LINE)
            unfinished_.push_back(byte);
    }
}

void LineReader::finish_line() {
    if (unfinished_.ends_with('\r'))
        unfinished_.pop_back();
    unfinished_.push_back('\n');
    lines_.push_back(std::exchange(unfinished_, {}));
}

void LineReader::end() {
    ended_ = true;
    if (!unfinished_.empty())
        finish_line();
}

namespace {

constexpr char QUIT[] = "quit\n";

struct Input {
    LineReader reader{platform::STANDARD_INPUT};
    EndOfInput at_end;
};
std::optional<Input> input;
void (*act_on_search_line)(std::string_view line) = [](std::string_view) {};

// The next line that is there, the end of the input included.
bool next_line(std::string& line) {
    if (input->reader.pop_line(line)) {
        log_input(line);
        return true;
    }
    if (!input->reader.at_end() || input->at_end == EndOfInput::IS_IGNORED)
        return false;
    line = QUIT;
    return true;
}

}  // namespace

void open_input(EndOfInput at_end) {
    input.emplace(Input{.at_end = at_end});
}

void set_search_line_handler(void (*act_on)(std::string_view line)) {
    act_on_search_line = act_on;
}

std::string read_command() {
    std::string line;
    if (!input || input->at_end == EndOfInput::IS_IGNORED)
        return QUIT;  // nobody is there to ask
    std::fflush(stdout);
    while (!next_line(line))
        input->reader.take_in(platform::FOREVER);
    return line;
}

void poll_input() {
    if (!input)
        return;
    input->reader.take_in(platform::NO_WAIT);
    std::string line;
    while (!search_control.abort_search && next_line(line)) {
        act_on_search_line(line);
    }
}

void wait_for_input() {
    if (!input) {
        search_control.abort_search = true;
        return;
    }
    std::fflush(stdout);
    while (!input->reader.has_line() && !input->reader.input_ended())
        input->reader.take_in(platform::FOREVER);
}

}  // namespace quelmar
