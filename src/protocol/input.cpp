#include "protocol/input.h"

#include "protocol/dialect.h"
#include "protocol/line_reader.h"
#include "protocol/protocol_state.h"
#include "protocol/xboard.h"

#include <cstdio>
#include <optional>
#include <unistd.h>

namespace quelmar {

namespace {

constexpr char QUIT[] = "quit\n";

struct Input {
    LineReader reader{STDIN_FILENO};
    EndOfInput at_end;
};
std::optional<Input> input;

// The next line that is there, the end of the input included.
bool next_line(std::string& line) {
    if (input->reader.pop_line(line))
        return true;
    if (!input->reader.at_end() || input->at_end == EndOfInput::IS_IGNORED)
        return false;
    line = QUIT;
    return true;
}

}  // namespace

void open_input(EndOfInput at_end) {
    input.emplace(Input{.at_end = at_end});
}

std::string read_command() {
    std::string line;
    if (!input || input->at_end == EndOfInput::IS_IGNORED)
        return QUIT;  // nobody is there to ask
    std::fflush(stdout);
    while (!next_line(line))
        input->reader.take_in(LineReader::FOREVER);
    return line;
}

void poll_input() {
    if (!input)
        return;
    input->reader.take_in(LineReader::NO_WAIT);
    std::string line;
    while (!protocol_state.abort_search && next_line(line)) {
        if (protocol_state.uci_mode)
            dialect.uci_line_during_search(line);
        else
            dispatch_xboard_during_search(line);
    }
}

void wait_for_input() {
    if (!input) {
        protocol_state.abort_search = true;
        return;
    }
    std::fflush(stdout);
    while (!input->reader.has_line() && !input->reader.input_ended())
        input->reader.take_in(LineReader::FOREVER);
}

}  // namespace quelmar
