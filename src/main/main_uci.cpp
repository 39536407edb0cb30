// The engine for UCI clients: UCI from the first line on, or one of two batch modes for testers.

#include "platform/platform.h"
#include "protocol/bench.h"
#include "protocol/command_line.h"
#include "protocol/input.h"
#include "protocol/standard_uci.h"
#include "protocol/startup.h"
#include "protocol/suite.h"
#include "protocol/text_values.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

using namespace quelmar;

namespace {

constexpr char USAGE[] =
    "usage: quelmar-uci                       play: UCI on standard input and output\n"
    "       quelmar-uci bench [DEPTH] [HASH]  count the nodes of fixed searches and measure the speed\n"
    "       quelmar-uci test FILE SECONDS     solve the positions of an EPD file\n"
    "       quelmar-uci --help | --version\n"
    "A chess engine for clients that speak UCI.\n"
    "Settings are read from quelmar.ini; the manual page quelmar-uci(6) tells everything.\n";

int bench(std::span<char*> arguments) {
    std::string words;
    for (const char* word : arguments)
        words.append(word).append(" ");
    return run_bench(words) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int test(std::span<char*> arguments) {
    std::string_view seconds = arguments.size() == 2 ? arguments[1] : "";
    const std::optional<i32> milliseconds = take_thousandths(seconds);
    if (!milliseconds || *milliseconds < 1 || !seconds.empty()) {
        std::fprintf(stderr, "usage: quelmar-uci test FILE SECONDS\n");
        return EXIT_FAILURE;
    }
    if (run_suite(arguments[0], *milliseconds))
        return EXIT_SUCCESS;
    std::fprintf(stderr, "quelmar-uci: %s cannot be read\n", arguments[0]);
    return EXIT_FAILURE;
}

// The function of a batch mode, nullptr for the protocol.
auto mode_of(std::string_view word) -> int (*)(std::span<char*>) {
    return word == "bench" ? bench : word == "test" ? test : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    platform::prepare_standard_streams();
    end_when_memory_runs_out();
    const std::span<char*> arguments{argv, static_cast<std::size_t>(argc)};
    if (const auto status = status_of_options(arguments, USAGE))
        return *status;
    start_engine(UciKind::STANDARD);
    auto* const batch_mode = mode_of(argc > 1 ? argv[1] : "");
    open_input(batch_mode != nullptr ? EndOfInput::IS_IGNORED : EndOfInput::QUITS);
    if (batch_mode != nullptr)
        return batch_mode(arguments.subspan(2));
    greet_terminal(arguments[0], "a chess engine that waits for commands of UCI");
    run_standard_uci();
}
