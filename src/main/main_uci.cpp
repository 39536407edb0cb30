// The engine for UCI clients: no mode to choose, UCI from the first line on.

#include "platform/platform.h"
#include "protocol/command_line.h"
#include "protocol/input.h"
#include "protocol/standard_uci.h"
#include "protocol/startup.h"

using namespace quelmar;

static constexpr char USAGE[] =
    "usage: quelmar-uci [--help | --version]\n"
    "A chess engine for clients that speak UCI, on standard input and output.\n"
    "Settings are read from quelmar.ini; the manual page quelmar-uci(6) tells everything.\n";

int main(int argc, char** argv) {
    platform::prepare_standard_streams();
    const std::span<char*> arguments{argv, static_cast<std::size_t>(argc)};
    if (const auto status = status_of_options(arguments, USAGE))
        return *status;
    end_when_memory_runs_out();
    start_engine(UciKind::STANDARD);
    open_input(EndOfInput::QUITS);
    greet_terminal(arguments[0], "a chess engine that waits for commands of UCI");
    run_standard_uci();
}
