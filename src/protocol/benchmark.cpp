#include "protocol/benchmark.h"

#include "board/position.h"
#include "board/setup.h"
#include "protocol/clocks.h"
#include "protocol/game.h"
#include "protocol/protocol_state.h"
#include "search/search_state.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

namespace quelmar {

namespace {

// Ranks that end early are filled with empty squares.
constexpr char BENCHMARK_POSITION[] = "r5k/ppp2r1p/3p3b/3Pn/1n2PPp/1P2K1P/PBB1N2q/R2Q3R b";
constexpr int BENCHMARK_MINUTES = 5, BENCHMARK_SECONDS = 60 * BENCHMARK_MINUTES;

}  // namespace

void run_benchmark() {
    std::printf("Running benchmark.  This will take %d minutes.\n", BENCHMARK_MINUTES);
    parse_fen(BENCHMARK_POSITION);
    SideClock& clock = position.current().clock[static_cast<std::size_t>(position.side_to_move)];
    clock.kind = CLOCK_PER_MOVE;
    clock.time_left_ms = 1000 * BENCHMARK_SECONDS;

    // Analysis and pondering know no end.
    const bool analyze_mode = std::exchange(protocol_state.analyze_mode, false);
    protocol_state.ponder_state = NOT_PONDERING;
    run_search();
    protocol_state.analyze_mode = analyze_mode;

    const float nodes_per_second =
        static_cast<float>(search_state.nodes) / static_cast<float>(BENCHMARK_SECONDS);
    std::printf("%" PRIu64 " nodes searched, %f nodes per second.\n", search_state.nodes,
                static_cast<double>(nodes_per_second));
}

}  // namespace quelmar
