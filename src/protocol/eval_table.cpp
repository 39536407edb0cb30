#include "protocol/eval_table.h"

#include "board/position.h"
#include "eval/eval_trace.h"
#include "protocol/output.h"

namespace quelmar {

namespace {

void print_row(const EvalTrace::Row& row) {
    print("%-20s %7d %7d %8d %7d %8d %7d\n", row.term, row.white.mg, row.white.eg, row.black.mg, row.black.eg,
          row.balance.mg, row.balance.eg);
}

void print_trace(const EvalTrace& trace) {
    print("%-20s %15s %16s %16s\n", "term", "White  mg     eg", "Black  mg     eg", "balance mg    eg");
    for (const EvalTrace::Row& row : trace.rows)
        print_row(row);
    if (trace.recognised) {
        print("a known ending with a score of its own: the terms do not count\n");
        return;
    }
    print("totals for the side to move: middlegame %d, endgame %d, blended %d\n", trace.mg, trace.eg,
          trace.blended);
    for (const Side side : {WHITE, BLACK}) {
        const char* name = side == WHITE ? "White" : "Black";
        if (trace.scale_shift[side] != 0)
            print("a score for %s is divided by %d\n", name, 1 << trace.scale_shift[side]);
        if (trace.cannot_win[side])
            print("%s cannot win\n", name);
    }
}

}  // namespace

void print_evaluation() {
    const EvalTrace trace = trace_evaluation();
    print_trace(trace);
    print("score for %s to move: %d\n", position.side_to_move == WHITE ? "White" : "Black", trace.score);
}

}  // namespace quelmar
