// Start-up in its fixed order, then one of three modes: benchmark, EPD test, or play under an interface.

#include "platform/platform.h"
#include "protocol/bench.h"
#include "protocol/command_line.h"
#include "protocol/game_loop.h"
#include "protocol/input.h"
#include "protocol/startup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

using namespace quelmar;

namespace {

constexpr char USAGE[] =
    "usage: quelmar                    play: xboard protocol, UCI after \"uci\"\n"
    "       quelmar bench              measure the speed, for five minutes\n"
    "       quelmar test FILE SECONDS  search every position of an EPD file\n"
    "       quelmar --help | --version\n"
    "A chess engine for clients that speak xboard; for UCI clients there is quelmar-uci.\n"
    "Settings are read from quelmar.ini; the manual page quelmar(6) tells everything.\n";

enum class Mode { PLAY, BENCHMARK, EPD_TEST, USAGE_ERROR };

// arguments[0] is the program.
Mode choose_mode(std::span<char*> arguments) {
    if (arguments.size() < 2)
        return Mode::PLAY;
    const std::string_view word = arguments[1];
    if (word.starts_with("bench"))
        return Mode::BENCHMARK;
    if (word == "test")
        return arguments.size() < 4 ? Mode::USAGE_ERROR : Mode::EPD_TEST;
    return Mode::PLAY;
}

}  // namespace

int main(int argc, char** argv) {
    const std::span<char*> arguments{argv, static_cast<std::size_t>(argc)};
    const Mode mode = choose_mode(arguments);

    platform::prepare_standard_streams();
    end_when_memory_runs_out();
    // Whatever else stands first belongs to a mode, or nobody looks at it.
    if (answers_question(arguments.first(std::min<std::size_t>(arguments.size(), 2)), USAGE))
        return EXIT_SUCCESS;
    if (mode == Mode::USAGE_ERROR) {
        std::fprintf(stderr, "usage: %s test FILE SECONDS\n", arguments[0]);
        return EXIT_FAILURE;
    }
    start_engine(UciKind::OWN);

    open_input(mode == Mode::PLAY ? EndOfInput::QUITS : EndOfInput::IS_IGNORED);
    switch (mode) {
    case Mode::BENCHMARK:
        run_benchmark();
        return EXIT_SUCCESS;
    case Mode::EPD_TEST:
        run_epd_test(arguments[2], arguments[3]);
        return EXIT_SUCCESS;
    default:
        greet_terminal(arguments[0], "a chess engine that waits for commands of the xboard protocol");
        game_loop();
    }
}
