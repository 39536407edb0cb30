#include "protocol/bench.h"

#include "board/position.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/standard_options.h"
#include "protocol/text_values.h"
#include "protocol/thinking.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace quelmar {

namespace {

// ---- the benchmark of quelmar-uci ----

constexpr int DEFAULT_DEPTH = 10, DEFAULT_HASH_MB = 24;

// Openings, middlegames, endings, Chess960.
constexpr const char* POSITIONS[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r1bqk2r/ppp2ppp/2np1n2/2b1p3/2B1P3/2NP1N2/PPP2PPP/R1BQK2R w KQkq - 0 6",
    "rnbq1rk1/pp2ppbp/6p1/2p5/3PP3/2P2N2/P3BPPP/R1BQK2R b KQ - 1 8",
    "r2q1rk1/1b1nbppp/pp1ppn2/8/2PQP3/1PN2NP1/P4PBP/R1BR2K1 b - - 2 11",
    "2r2rk1/pp1bqppp/2n1pn2/3p4/3P4/1PNBPN2/P4PPP/2RQ1RK1 w - - 3 13",
    "r4rk1/pp3pp1/1qp2n1p/3p4/3P1B2/2PB1Q1P/P4PP1/R4RK1 b - - 0 17",
    "1r3rk1/3bbppp/p2ppn2/q7/2p1PP2/2N1B3/PPPQB1PP/1K1R3R w - - 0 16",
    "r1b2r1k/4qp1p/p2ppb1Q/4nP2/1p1NP3/2N5/PPP4P/2KR1BR1 w - - 2 18",
    "3r2k1/1p3pp1/p1n1b2p/4p3/4P3/1PP1BN1P/1P3PP1/3R2K1 w - - 0 24",
    "8/2p2pk1/1p1p2p1/p2Pp2p/P1P1P2P/1P1K2P1/5P2/8 w - - 0 35",
    "8/5pk1/4p1p1/3pP2p/1r1P1P1P/1P2K1P1/R7/8 b - - 2 40",
    "8/8/1p1k2p1/p1p2p1p/P1P2P1P/1P1K2P1/4N3/4b3 w - - 0 46",
    "6k1/5ppp/8/1Q6/8/2q3P1/5P1P/6K1 b - - 0 37",
    "bnrbkrqn/pp1ppppp/8/2p5/4P3/8/PPPPBPPP/BNR1KRQN b FCfc - 1 3",
};

u64 search_to(const char* fen, int depth) {
    forget_all_searches();
    set_up_game(fen);
    for (SideClock& clock : position.current().clock)
        clock = {.kind = ClockKind::FIXED_DEPTH, .depth_limit = depth};
    run_search();
    return search_state.nodes;
}

// A number in the range at the front of `text`; the default when nothing is left of it.
std::optional<int> take_argument(std::string_view& text, int otherwise, int most) {
    if (skip_space(text).empty())
        return otherwise;
    const auto number = take_number(text);
    return number && *number >= 1 && *number <= most ? number : std::nullopt;
}

void bench_positions(int depth) {
    const SilentSearch silent;
    const auto start = std::chrono::steady_clock::now();
    u64 nodes = 0;
    for (const char* fen : POSITIONS) {
        const u64 taken = search_to(fen, depth);
        if (search_control.abort_search) {
            tell("stopped before the end");
            break;
        }
        nodes += taken;
        print("%10" PRIu64 "  %s  %s  %s\n", taken, score_text(search_state.last_score).c_str(),
              move_text(search_state.pv[0]).c_str(), fen);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    constexpr double LEAST = 1e-6;
    print("%" PRIu64 " nodes %.0f nps\n", nodes,
          static_cast<double>(nodes) / std::max(seconds.count(), LEAST));
}

// ---- an EPD file ----

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
    const float seconds = static_cast<float>(seconds_of(elapsed_ms));
    const float least = 0.001f;  // a suite without positions takes no time at all
    const float nodes_per_second = static_cast<float>(nodes) / std::max(seconds, least);
    std::printf("%" PRIu64 " nodes searched, %f seconds.\n", nodes, static_cast<double>(seconds));
    std::printf("%f nodes per second.\n", static_cast<double>(nodes_per_second));
}

// ---- the benchmark of quelmar ----

// Ranks that end early are filled with empty squares.
constexpr char BENCHMARK_POSITION[] = "r5k/ppp2r1p/3p3b/3Pn/1n2PPp/1P2K1P/PBB1N2q/R2Q3R b";
constexpr int BENCHMARK_MINUTES = 5, BENCHMARK_SECONDS = 60 * BENCHMARK_MINUTES;

}  // namespace

bool run_bench(std::string_view arguments) {
    const auto depth = take_argument(arguments, DEFAULT_DEPTH, MAX_ITERATION);
    const auto megabytes = take_argument(arguments, DEFAULT_HASH_MB, MAX_HASH_MB);
    if (!depth || !megabytes || !skip_space(arguments).empty()) {
        tell("bench takes a depth from 1 to " + std::to_string(MAX_ITERATION) + " and megabytes from 1 to " +
             std::to_string(MAX_HASH_MB));
        return false;
    }
    const GameKept game;
    tt_allocate(*megabytes);
    bench_positions(*depth);
    apply_hash_size();
    return true;
}

void run_epd_test(const char* file_name, std::string_view seconds_text) {
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

void run_benchmark() {
    std::printf("Running benchmark.  This will take %d minutes.\n", BENCHMARK_MINUTES);
    set_up_game(BENCHMARK_POSITION);
    SideClock& clock = position.current().clock[position.side_to_move];
    clock.kind = ClockKind::PER_MOVE;
    clock.time_left_ms = MS_PER_SECOND * BENCHMARK_SECONDS;

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
