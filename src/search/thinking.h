// What the search tells while it thinks, in three dialects: xboard, UCI and console.
#pragma once

#include "board/types.h"
#include "search/score.h"

#include <string>

namespace quelmar {

// Kinds of a thinking line.
inline constexpr int LINE_UPPER_BOUND = 1, LINE_LOWER_BOUND = 2, LINE_EXACT = 3;

// Reads the principal variation from the transposition table into search_state.pv, then prints a thinking
// line.
void walk_pv_and_print(Score score, i32 elapsed_ms, int kind);

void print_thinking_line(int depth, Score score, i32 elapsed_ms, u64 nodes, int kind);

void print_refutation(const Move& root_move);  // UCI "info refutation"
void print_current_move();                     // UCI "info currmove"
void print_current_line();                     // UCI "info currline"
void print_status();                           // UCI "info nodes"
void print_stat01();                           // xboard analysis status
void print_tellall();                          // whisper to a chess server

void clear_last_pv_text();  // a new game has no variation to whisper

std::string format_time(i32 ms);  // "4.07", "1:01", "1:02:03"

}  // namespace quelmar
