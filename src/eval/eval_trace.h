// An evaluation taken apart, for people who want to know where a score comes from.
#pragma once

#include "eval/eval_context.h"

#include <vector>

namespace quelmar {

struct EvalTrace {
    struct Row {
        const char* term;
        Points white, black;  // each seen from its own side, weights included
        Points balance;       // White minus Black as it enters the totals
    };
    std::vector<Row> rows;
    bool recognised = false;  // an ending with a score of its own, to which the rows add nothing
    int mg = 0, eg = 0;       // totals for the side to move, before they are blended
    int blended = 0;
    int score = 0;  // after scaling
    Table<int, 2> scale_shift{};
    Table<bool, 2> cannot_win{};
};

// evaluate() with a record of every term, for White and Black.
EvalTrace trace_evaluation();

}  // namespace quelmar
