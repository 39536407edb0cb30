// What the search tells while it thinks, in three forms: xboard, UCI and console.
#pragma once

#include "board/types.h"
#include "search/score.h"
#include "search/search_reports.h"

#include <string>

namespace quelmar {

// From now on thinking lines, and under UCI "info" lines about iterations, root moves, refutations and the
// state of the search, are printed as the search reports them.
void print_what_the_search_says();

// The variation is that of search_state.pv.
void print_thinking_line(int depth, Score score, i32 elapsed_ms, u64 nodes, LineKind kind);

// Scores beyond are shown as mates.
inline constexpr Score MATE_DISPLAY_LIMIT = 28999;

// The score of a line in hundredths of a pawn, for any but a mate.
int centipawns(Score score);
bool is_mate_score(Score score);

// "+0.50" in pawns, "#3", "-#2" for mates.
std::string score_text(Score score);

void print_stat01();   // xboard analysis status
void print_tellall();  // whisper to a chess server

void clear_last_pv_text();  // a new game has no variation to whisper

std::string format_time(i32 ms);  // "4.07", "1:01", "1:02:03"

}  // namespace quelmar
