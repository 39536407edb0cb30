// The signature of the search: the nodes that a fixed set of positions takes to fixed depths. Every change of
// behaviour in the board, the evaluation or the search shows in the total; a change that is meant to be for
// speed alone must not.
//
//   signature                 prints the nodes of each position, the total and the node rate
//   signature --check FILE    compares the total with the recorded one, exit status 1 if they differ
//   signature --quick FILE    the same three plies shallower, for builds with assertions
//   signature --plain FILE    as --quick, without the copies for newer processors
//   signature --write FILE    records both totals
//   signature --sample N P    searches one position, P plies shallower; --plain-sample N P
//
// Each position is searched by a process of its own, so that no killer move, table entry or evaluation of one
// reaches the next. The node rate counts the searches alone.
#include "board/hash_keys.h"
#include "board/position.h"
#include "board/processor.h"
#include "board/setup.h"
#include "eval/exchange.h"
#include "platform/platform.h"
#include "protocol/command_line.h"
#include "search/search.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

using namespace quelmar;

namespace {

constexpr int QUICK_PLIES_LESS = 3;
constexpr char USAGE[] = "usage: signature [--check FILE | --quick FILE | --plain FILE | --write FILE]\n";

struct Sample {
    int depth;  // iterations
    const char* fen;
};

constexpr Sample SAMPLES[] = {
    // Openings and middlegames
    {11, "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq"},
    {8, "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq"},
    {9, "r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR b KQkq"},
    {9, "r1bq1rk1/pp2ppbp/2np1np1/8/3NP3/2N1BP2/PPPQ2PP/R3KB1R w KQ"},
    {9, "rnbq1rk1/ppp1ppbp/3p1np1/8/2PPP3/2N2N2/PP2BPPP/R1BQK2R b KQ"},
    {9, "r2q1rk1/pbp1bppp/1pn1pn2/3p4/2PP4/1PN1PN2/PB2BPPP/R2Q1RK1 w -"},
    {9, "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w -"},
    {9, "2rq1rk1/pb1nbppp/1p2pn2/2pp4/2PP1B2/1PN1PN2/P3BPPP/2RQ1RK1 b -"},
    {9, "r2qr1k1/pb1nbppp/1pn1p3/2ppP3/3P4/2PB1NN1/PP3PPP/R1BQR1K1 w -"},
    {9, "3r1rk1/p5pp/bpp1pp2/8/q1PP1P2/b3P3/P2NQRPP/1R2B1K1 b -"},
    {9, "r1b1kb1r/1p1n1ppp/p2ppn2/6BB/2qNP3/2N5/PPP2PPP/R2Q1RK1 w kq"},
    {9, "2r2rk1/1bqnbpp1/1p1ppn1p/pP6/N1P1P3/P2B1N1P/1B2QPP1/R2R2K1 b -"},
    {9, "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b -"},
    {9, "rn1qkb1r/pp2pppp/5n2/3p1b2/3P4/2N1P3/PP3PPP/R1BQKBNR w KQkq"},
    {9, "4b3/p3kp2/6p1/3pP2p/2pP1P2/4K1P1/P3N2P/8 w -"},
    {9, "r3r1k1/ppqb1ppp/8/4p1NQ/8/2P5/PP3PPP/R3R1K1 b -"},
    // Chess960
    {9, "bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w -"},
    {9, "nrbkqbrn/pppppppp/8/8/8/8/PPPPPPPP/NRBKQBRN w KQkq"},
    {9, "rkbqnbnr/pppp1ppp/8/4p3/2P5/8/PP1PPPPP/RKBQNBNR w KQkq"},
    {7, "1rqbkrbn/1ppppp1p/1n6/p1N3p1/8/2P4P/PP1PPPP1/1RQBKRBN w KQkq"},
    {9, "brkr1qnn/pppp1ppp/3b4/4p3/4P3/3B4/PPPP1PPP/BRKR1QNN w KQkq"},
    // Endings
    {11, "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w -"},
    {16, "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w -"},
    {14, "8/8/1p1k4/p1p2p2/P1P2P1p/1P1K3P/8/8 w -"},
    {12, "6k1/5pp1/7p/8/8/r7/5PPP/1R4K1 w -"},
    {9, "8/5pk1/6p1/1Q5p/3P3P/4P1P1/q4PK1/8 b -"},
    {9, "8/8/4k3/8/8/2B1N3/8/4K3 w -"},
    {12, "8/1p3pp1/7p/5P1P/2k3P1/8/2K2P2/8 w -"},
    {10, "2r2k2/1p3p2/p2p1p1p/3P1P2/1PP2n1P/P4N2/5P2/3R2K1 w -"},
    {9, "5k2/7R/4P2p/5K2/p1r2P1p/8/8/8 b -"},
    {11, "8/3b2k1/1p4p1/p1pPp1P1/P1P1P3/3B1K2/1P6/8 w -"},
    {11, "4k3/4p3/4b3/8/8/2N5/3P4/4K3 w -"},
    // Mates in two to five, and a stalemate to avoid
    {7, "r5rk/5p1p/5R2/4B3/8/8/7P/7K w -"},
    {6, "2bqkbn1/2pppp2/np2N3/r3P1p1/p2N2B1/5Q2/PPPPKPP1/RNB2r2 w -"},
    {7, "3r1r1k/1p4pp/p4p2/8/1PQR4/6Pq/P4P2/R5K1 b -"},
    {8, "r1b2k1r/ppppq3/5N1p/4P2Q/4PP2/1B6/PP5P/n2K2R1 w -"},
    {10, "8/8/8/8/8/4k3/r3p3/4K2R w -"},
    {10, "8/8/8/8/5k2/8/4q3/7K b -"},
    {10, "7k/8/8/8/8/8/R7/1R5K w -"},
    {8, "r1bq2r1/b4pk1/p1pp1p2/1p2pP2/1P2P1PB/3P4/1PPQ2P1/R3K2R w KQ"},
};

// Which copy of what is compiled twice runs in the samples.
constexpr char BEST_COPY[] = "--sample", PLAIN_COPY[] = "--plain-sample";

void start_engine(std::string_view copy) {
    init_hash_keys();
    build_exchange_table();
    if (copy == BEST_COPY)
        find_modern_processor();
    constexpr int HASH_MB = 24;
    tt_allocate(HASH_MB);
}

// What a search takes.
struct Effort {
    unsigned long long nodes = 0;
    double seconds = 0;
};

// Prints the effort; false when there is no such position.
bool search_sample(std::size_t number, int plies_less) {
    if (number >= std::size(SAMPLES) || parse_fen(SAMPLES[number].fen) != FenError::NONE)
        return false;
    for (SideClock& clock : position.current().clock)
        clock = {.kind = ClockKind::FIXED_DEPTH, .depth_limit = SAMPLES[number].depth - plies_less};
    const auto start = std::chrono::steady_clock::now();
    think();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%llu %f\n", static_cast<unsigned long long>(search_state.nodes), elapsed.count());
    return true;
}

// Searches in a process of its own; no nodes when that fails.
Effort search_apart(const char* program, const std::string& copy, std::size_t number, int plies_less) {
    const std::string output =
        platform::output_of(program, copy + ' ' + std::to_string(number) + ' ' + std::to_string(plies_less));
    Effort effort;
    return std::sscanf(output.c_str(), "%llu %lf", &effort.nodes, &effort.seconds) == 2 ? effort : Effort{};
}

// Prints and returns the total; 0 when a position could not be searched.
u64 search_all(const char* program, int plies_less, const char* copy = BEST_COPY) {
    Effort total;
    bool complete = true;
    for (std::size_t number = 0; number < std::size(SAMPLES); ++number) {
        const Effort effort = search_apart(program, copy, number, plies_less);
        std::printf("%12llu  depth %2d  %s\n", effort.nodes, SAMPLES[number].depth - plies_less,
                    SAMPLES[number].fen);
        std::fflush(stdout);
        total.nodes += effort.nodes;
        total.seconds += effort.seconds;
        complete = complete && effort.nodes > 0;
    }
    std::printf("%12llu  total\n%12.0f  nodes per second\n", total.nodes,
                static_cast<double>(total.nodes) / total.seconds);
    return complete ? total.nodes : 0;
}

struct Totals {
    unsigned long long full = 0, quick = 0;
};

Totals recorded_totals(const char* path) {
    Totals totals;
    if (std::FILE* file = std::fopen(path, "r")) {
        if (std::fscanf(file, "%llu %llu", &totals.full, &totals.quick) != 2)
            totals = {};
        std::fclose(file);
    }
    return totals;
}

bool record(const char* program, const char* path) {
    const u64 full = search_all(program, 0), quick = search_all(program, QUICK_PLIES_LESS);
    std::FILE* file = full > 0 && quick > 0 ? std::fopen(path, "w") : nullptr;
    if (file == nullptr)
        return false;
    const bool written = std::fprintf(file, "%llu\n%llu\n", static_cast<unsigned long long>(full),
                                      static_cast<unsigned long long>(quick)) > 0;
    return std::fclose(file) == 0 && written;
}

bool agrees(u64 total, unsigned long long expected) {
    if (total != expected)
        std::printf("expected %llu\n", expected);
    return total > 0 && total == expected;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::span<char* const> arguments{argv, static_cast<std::size_t>(argc)};
    if (const auto status = status_of_options(
            arguments, USAGE,
            {"--check=", "--quick=", "--plain=", "--write=", "--sample=", "--plain-sample="}))
        return *status;
    const std::string_view what = argc > 1 ? argv[1] : "";
    const char* const program = argv[0];
    if (argc == 1)
        return search_all(program, 0) > 0 ? 0 : 1;
    if (argc == 4 && (what == BEST_COPY || what == PLAIN_COPY)) {
        start_engine(what);
        return search_sample(std::strtoul(argv[2], nullptr, 10), std::atoi(argv[3])) ? 0 : 1;
    }
    if (argc == 3 && what == "--check")
        return agrees(search_all(program, 0), recorded_totals(argv[2]).full) ? 0 : 1;
    if (argc == 3 && what == "--quick")
        return agrees(search_all(program, QUICK_PLIES_LESS), recorded_totals(argv[2]).quick) ? 0 : 1;
    if (argc == 3 && what == "--plain")
        return agrees(search_all(program, QUICK_PLIES_LESS, PLAIN_COPY), recorded_totals(argv[2]).quick) ? 0
                                                                                                         : 1;
    if (argc == 3 && what == "--write")
        return record(program, argv[2]) ? 0 : 1;
    std::fputs(USAGE, stderr);
    return 1;
}
