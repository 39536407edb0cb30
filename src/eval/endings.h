// What is known about endings: solved ones, drawish ones, and races of pawns. Private to eval/.
#pragma once

#include "eval/eval_context.h"

namespace quelmar {

// Looks for a known ending; to be asked when there is no more than ENDING_MATERIAL on the board. Returns true
// with the final score for the side to move, or false after setting scale shifts and cannot_win flags.
[[gnu::noinline]] bool recognise_endgame(EvalContext& context, int& score);

// Pure pawn endings only: sets cannot_win where all pawns are rook pawns before the enemy king.
[[gnu::noinline]] void flag_rook_pawns(EvalContext& context);

// Pure pawn endings only: kings, pawns and races in points for each side. Needs both attack maps.
Table<int, 2> eval_pawn_ending(const EvalContext& context);

// The solved endings. Each finds its strong side (more material; with equal material the side that is not to
// move) and returns the score of the side to move.
int eval_kpk();
int eval_krkp();
int eval_kbnk();
int eval_kbpk();
int eval_krpkr();
int eval_rook_vs_minor(Side strong);

// Points for mating a lone king with the men of `attacker`, beside their material. 0 when they cannot mate.
int eval_mate_lone_king(Side lone, const SideTerms& attacker);

}  // namespace quelmar
