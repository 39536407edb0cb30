// The evaluation by kind of position, the exchange evaluation, and the table that is filled at every start.
#include "board/hash_keys.h"
#include "board/setup.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/threats.h"

#include <benchmark/benchmark.h>

namespace quelmar {
namespace {

void start() {
    static const bool started = [] {
        init_hash_keys();
        build_exchange_table();
        return true;
    }();
    (void)started;
}

void evaluate_position(benchmark::State& state, const char* fen) {
    start();
    parse_fen(fen);
    for (auto _ : state)
        benchmark::DoNotOptimize(evaluate());
}
BENCHMARK_CAPTURE(evaluate_position, opening, START_FEN);
BENCHMARK_CAPTURE(evaluate_position, middlegame,
                  "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -");
BENCHMARK_CAPTURE(evaluate_position, heavy_pieces, "3r2k1/pp1q1pp1/2p4p/3r4/3P4/P1Q1R2P/1P3PP1/4R1K1 w - -");
BENCHMARK_CAPTURE(evaluate_position, passed_pawns, "8/1p1k1pp1/p1n4p/P2P4/1P3P2/3BK2P/6P1/8 w - -");
BENCHMARK_CAPTURE(evaluate_position, pawn_ending, "8/5pk1/p1p3p1/1p2P2p/1P1K1P1P/P5P1/8/8 w - -");
BENCHMARK_CAPTURE(evaluate_position, rook_and_pawn, "8/8/4k3/8/3P4/3K4/8/r6R w - -");

void list_threats(benchmark::State& state) {
    start();
    parse_fen("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -");
    evaluate();
    for (auto _ : state)
        find_threats();
}
BENCHMARK(list_threats);

void exchange_on_a_crowded_square(benchmark::State& state) {
    start();
    parse_fen("2rr2k1/1b1nqpp1/p3pn1p/1p1p4/3N4/1PN1P3/PBQ1BPPP/2RR2K1 w - -");
    const Square from = 16 * 6 + 2, to = 16 * 8 + 3;
    for (auto _ : state)
        benchmark::DoNotOptimize(static_exchange(from, to));
}
BENCHMARK(exchange_on_a_crowded_square);

void fill_exchange_table(benchmark::State& state) {
    for (auto _ : state)
        build_exchange_table();
}
BENCHMARK(fill_exchange_table)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quelmar
