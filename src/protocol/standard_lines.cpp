#include "protocol/standard_lines.h"

#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/thinking.h"
#include "search/search_reports.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <span>
#include <string>

namespace quelmar {

namespace {

constexpr i32 BOUNDS_AFTER_MS = 1000;

// A root that is mated is "mate 0"; one that may take the king has at least a move left.
std::string score_text(Score score) {
    if (!is_mate_score(score))
        return "cp " + std::to_string(centipawns(score));
    const int moves = score > 0 ? std::max(1, (MATE_SCORE + 1 - score) / 2) : -(score + MATE_SCORE) / 2;
    return "mate " + std::to_string(moves);
}

const char* bound_text(LineKind kind) {
    return kind == LineKind::UPPER_BOUND ? " upperbound" : kind == LineKind::LOWER_BOUND ? " lowerbound" : "";
}

void print_line(const RootLine& line, int number) {
    const i32 elapsed = elapsed_since(search_state.start_time);
    const auto nodes = static_cast<long long>(search_state.nodes);
    std::string variation;
    for (const Move& move : line.moves)
        variation += (variation.empty() ? " pv " : " ") + move_text(move);
    print("info depth %d seldepth %d time %d nodes %lld nps %lld hashfull %d tbhits %lld multipv %d "
          "score %s%s%s\n",
          line.depth, std::max(search_state.sel_depth, line.depth), elapsed, nodes,
          nodes * 1000 / std::max(elapsed, 1), tt_hashfull(), static_cast<long long>(search_state.tb_hits),
          number, score_text(line.score).c_str(), bound_text(line.kind), variation.c_str());
}

void print_lines(const std::vector<RootLine>& lines) {
    int number = 0;
    for (const RootLine& line : lines)
        print_line(line, ++number);
}

void print_bound(Score score, i32 elapsed_ms, LineKind kind) {
    if (elapsed_ms < BOUNDS_AFTER_MS)
        return;
    const std::span<const Move> moves(search_state.pv.data(),
                                      static_cast<std::size_t>(search_state.pv_length));
    print_line({.depth = search_state.iteration,
                .score = score,
                .kind = kind,
                .moves = {moves.begin(), moves.end()}},
               1);
}

}  // namespace

void print_standard_lines() {
    search_reports.line = print_bound;
    search_reports.lines = print_lines;
}

}  // namespace quelmar
