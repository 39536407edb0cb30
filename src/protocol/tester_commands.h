// Commands for people who test the engine, beside those of UCI. Their answers are lines for a person.
#pragma once

#include <string_view>

namespace quelmar {

// "d": the position as a diagram, its FEN, its key and the men that give check.
void show_position();

// "eval": the table of the terms.
void show_evaluation();

// "go perft DEPTH": how many games of so many plies there are, by their first move. "stop" ends it. Anything
// but one depth from 1 to 60 is told.
void count_games(std::string_view arguments);

// Prints one row per term, in 128ths of a pawn for middlegame and endgame, as White and Black have it and as
// White's balance; then the totals and the score, which are the side to move's. Needs a usable position,
// which is evaluated.
void print_evaluation();

}  // namespace quelmar
