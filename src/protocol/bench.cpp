#include "protocol/bench.h"

#include "board/position.h"
#include "protocol/game.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/standard_options.h"
#include "protocol/text_values.h"
#include "protocol/thinking.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <optional>

namespace quelmar {

namespace {

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

}  // namespace quelmar
