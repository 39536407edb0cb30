#include "protocol/command_line.h"

#include "board/position.h"
#include "platform/platform.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/text_values.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace quelmar {

namespace {

constexpr int UNKNOWN_OPTION = 2;  // exit status

std::string name_of(std::string_view program) {
    return std::string(platform::file_name(program));
}

}  // namespace

bool answers_question(std::span<char* const> arguments, const char* usage) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string_view word = arguments[i];
        const bool asks_for_version = word == "-V" || word == "--version";
        if (asks_for_version)
            std::printf("%s (%s) %s\n", name_of(arguments[0]).c_str(), ENGINE_NAME, ENGINE_VERSION);
        else if (word == "-h" || word == "--help")
            std::fputs(usage, stdout);
        else
            continue;
        return true;
    }
    return false;
}

std::optional<int> status_of_options(std::span<char* const> arguments, const char* usage,
                                     std::initializer_list<std::string_view> known) {
    if (answers_question(arguments, usage))
        return EXIT_SUCCESS;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string word = arguments[i];
        if (!word.starts_with('-'))
            continue;
        if (std::find(known.begin(), known.end(), word + "=") != known.end()) {
            ++i;
        } else if (std::find(known.begin(), known.end(), word) == known.end()) {
            const std::string name = name_of(arguments[0]);
            std::fprintf(stderr, "%s: unknown option %s; %s --help tells more\n", name.c_str(), word.c_str(),
                         name.c_str());
            return UNKNOWN_OPTION;
        }
    }
    return std::nullopt;
}

void greet_terminal(std::string_view program, const char* what) {
    const std::string name = name_of(program);
    if (platform::is_terminal(platform::STANDARD_INPUT))
        std::fprintf(stderr, "%s %s: %s; %s --help tells more\n", ENGINE_NAME, ENGINE_VERSION, what,
                     name.c_str());
}

bool errors_reach_terminal() {
    return platform::is_terminal(platform::STANDARD_ERROR);
}

namespace {

constexpr std::size_t LONGEST_END_LINE = 9;  // characters, line end included: no position is as short

// Reads a line with its line end; false at the end of the file, which a NUL byte ends too: a device or a
// binary file is no suite. What exceeds a line's length is the next line.
bool read_line(std::FILE* file, std::string& line) {
    line.clear();
    while (line.size() < LONGEST_LINE && !line.ends_with('\n')) {
        const int byte = std::getc(file);
        if (byte == EOF || byte == '\0')
            break;
        line.push_back(static_cast<char>(byte));
    }
    return !line.empty();
}

// Returns the nodes searched.
u64 search_position(const std::string& line) {
    const bool usable = set_up_or_report(line.c_str());
    print_board();
    std::printf("%s\n", line.c_str());
    if (usable)
        run_search();
    std::printf("\n\n");
    return usable ? search_state.nodes : 0;
}

void print_summary(u64 nodes, i32 elapsed_ms) {
    const float seconds = static_cast<float>(elapsed_ms / 1000.0);
    const float least = 0.001f;  // a suite without positions takes no time at all
    const float nodes_per_second = static_cast<float>(nodes) / std::max(seconds, least);
    std::printf("%" PRIu64 " nodes searched, %f seconds.\n", nodes, static_cast<double>(seconds));
    std::printf("%f nodes per second.\n", static_cast<double>(nodes_per_second));
}

}  // namespace

void run_epd_test(const char* file_name, std::string_view seconds_text) {
    constexpr i64 MS_PER_SECOND = 1000;
    time_control.kind = ClockKind::PER_MOVE;
    time_control.base_ms = clamp_to_i32(read_number(seconds_text).value_or(0) * MS_PER_SECOND);
    search_control.test_mode = true;
    std::printf("Time per move: %d\n", time_control.base_ms);

    std::FILE* file = std::fopen(file_name, "r");
    if (!file) {
        std::printf("Failed to open file!\n");
        std::exit(EXIT_FAILURE);
    }
    const i32 start = clock_ms();
    u64 nodes = 0;
    std::string line;
    while (read_line(file, line) && line.size() > LONGEST_END_LINE)
        nodes += search_position(line);
    std::fclose(file);
    print_summary(nodes, elapsed_since(start));
}

namespace {

// Ranks that end early are filled with empty squares.
constexpr char BENCHMARK_POSITION[] = "r5k/ppp2r1p/3p3b/3Pn/1n2PPp/1P2K1P/PBB1N2q/R2Q3R b";
constexpr int BENCHMARK_MINUTES = 5, BENCHMARK_SECONDS = 60 * BENCHMARK_MINUTES;

}  // namespace

void run_benchmark() {
    std::printf("Running benchmark.  This will take %d minutes.\n", BENCHMARK_MINUTES);
    set_up_game(BENCHMARK_POSITION);
    SideClock& clock = position.current().clock[position.side_to_move];
    clock.kind = ClockKind::PER_MOVE;
    clock.time_left_ms = 1000 * BENCHMARK_SECONDS;

    // Analysis and pondering know no end.
    const bool analyze_mode = std::exchange(search_control.analyze_mode, false);
    search_control.ponder_state = Pondering::NO;
    run_search();
    search_control.analyze_mode = analyze_mode;

    const float nodes_per_second =
        static_cast<float>(search_state.nodes) / static_cast<float>(BENCHMARK_SECONDS);
    std::printf("%" PRIu64 " nodes searched, %f nodes per second.\n", search_state.nodes,
                static_cast<double>(nodes_per_second));
}

}  // namespace quelmar
