// Prints the static score of a position term by term, to see where a number comes from.
//
//   eval_trace "FEN" [style]      style 0..3: Normal, Active (default), Aggressive, Suicidal
//
// Each term stands in 128ths of a pawn, middlegame and endgame, as White and Black have it and as White's
// balance. The totals and the score are the side to move's.
#include "eval/eval_trace.h"

#include "board/hash_keys.h"
#include "board/position.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "protocol/command_line.h"
#include "protocol/game.h"
#include "protocol/settings.h"

#include <cstdio>
#include <cstdlib>

using namespace quelmar;

static constexpr char USAGE[] = "usage: eval_trace \"FEN\" [style 0..3]\n";

static void print_row(const EvalTrace::Row& row) {
    std::printf("%-20s %7d %7d %8d %7d %8d %7d\n", row.term, row.white.mg, row.white.eg, row.black.mg,
                row.black.eg, row.balance.mg, row.balance.eg);
}

static void print_trace(const EvalTrace& trace) {
    std::printf("%-20s %15s %16s %16s\n", "term", "White  mg     eg", "Black  mg     eg", "balance mg    eg");
    for (const EvalTrace::Row& row : trace.rows)
        print_row(row);
    if (trace.recognised) {
        std::printf("a known ending with a score of its own: the terms do not count\n");
        return;
    }
    std::printf("totals for the side to move: middlegame %d, endgame %d, blended %d\n", trace.mg, trace.eg,
                trace.blended);
    for (const Side side : {WHITE, BLACK}) {
        const char* name = side == WHITE ? "White" : "Black";
        if (trace.scale_shift[side] != 0)
            std::printf("a score for %s is divided by %d\n", name, 1 << trace.scale_shift[side]);
        if (trace.cannot_win[side])
            std::printf("%s cannot win\n", name);
    }
}

int main(int argc, char** argv) {
    if (const auto status = status_of_options({argv, static_cast<std::size_t>(argc)}, USAGE))
        return *status;
    if (argc < 2 || argc > 3) {
        std::fputs(USAGE, stderr);
        return 1;
    }
    init_hash_keys();
    build_exchange_table();
    find_modern_processor();
    if (argc == 3)
        choose_style(static_cast<int>(std::strtol(argv[2], nullptr, 10)) & 3);
    if (!set_up_or_report(argv[1]))
        return 1;
    const EvalTrace trace = trace_evaluation();
    print_trace(trace);
    std::printf("score for %s to move: %d\n", position.side_to_move == WHITE ? "White" : "Black",
                trace.score);
    return 0;
}
