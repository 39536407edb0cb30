// The order in which a node tries its moves. Every move of the current ply's list is scored, and the picker
// then hands them out one by one; the list itself stays in the generator's order.
#pragma once

#include "board/types.h"
#include "search/score.h"

namespace quelmar {

// What a kind of move is worth to the order. Among moves of equal worth the cheaper man goes first, then the
// earlier in the list.
inline constexpr i32 ORDER_TABLE_MOVE = 10000000, ORDER_MATE_KILLER = 9999999,
                     ORDER_WINS_THREATENED = 9999900, ORDER_CAPTURE = 9999000,
                     ORDER_QUEEN_PROMOTION = 9999000, ORDER_LOSING_QUEEN_PROMOTION = 9995000,
                     ORDER_UNDERPROMOTION = 9994000, ORDER_LOSING_UNDERPROMOTION = 9993000,
                     ORDER_KILLER = 8998000, ORDER_OLDER_KILLER = 8997000;
// Below all of them stand the history counters, kept under this by history_shift.
inline constexpr u64 HISTORY_LIMIT = 8000000;

// Scores every move of the current ply's list. `table_move` is the move of the node's table entry, 0 if none.
// find_threats must have seen the position.
void order_moves(PackedMove table_move);

// The best move of the current ply's list that has not been handed out, nullptr when there is none left.
Move* pick_move();

// Credits a quiet move that caused a cut-off at the current ply and remaining `depth`.
void update_history_and_killer(const Move& move, Depth depth);

}  // namespace quelmar
