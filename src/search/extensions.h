// The rules that decide how deep a move is searched, kept apart from the node that asks them, and the draws
// that the search sees. Depths are 60ths of a ply.
#pragma once

#include "board/position.h"
#include "board/square_tables.h"
#include "board/types.h"
#include "search/score.h"

namespace quelmar {

// Of both sides together, pawns included. The evaluation looks for endings with less (ENDING_MATERIAL).
inline constexpr int ENDGAME_MATERIAL = 3840;

// What the rules ask about the node whose moves they judge.
struct MoveContext {
    bool in_check = false;
    int evasions = 0;          // legal moves of a side in check
    bool mate_threat = false;  // passing would be answered by a mate
    // From the attack maps of the node's own evaluation, which its descendants overwrite.
    int recapture_attackers = 0;                 // of ours on the square of the move before
    Table<Table<u8, 8>, 2> promotion_attacks{};  // [colour][file] on our last rank; endgames only
    Depth common = 0;                            // common_extension of the fields above
};

// Copies from the attack maps what the rules need later. evaluate() must just have seen the position.
void keep_attack_facts(MoveContext& context);

// What every move of the node is extended by, before the limit. To be asked once its moves are listed.
Depth common_extension(const MoveContext& context);

// Extension of `move`, not yet made: 0..60, or 90, 120 or 150 when it leads into a pawn ending. `best` is the
// node's best score so far.
Depth move_extension(const MoveContext& context, const Move& move, Score best);

// Plies, 0..2, by which `move`, which has just been made, is searched less deep.
int late_move_reduction(const Move& move);

int null_move_reduction();  // plies, 0 = no null move

// Whether quiet moves of this node may be left out on a static estimate.
bool pruning_allowed();

bool is_endgame_material();

// Whether a white pawn reaches the seventh (sixth) rank, or a black one the second (third).
bool pawn_to_seventh(const Move& move);
bool pawn_to_sixth(const Move& move);

// Whether the position occurred before within the reversible part of the path; once is enough.
bool is_search_repetition();

// Repetition, fifty moves, or too little material. Not meant for the root.
bool is_search_draw();

// Material of both sides without pawns and kings.
inline int piece_material(const UndoRecord& here) {
    return here.material_us + here.material_them - PAWN_VALUE * (here.pawns_us + here.pawns_them);
}

}  // namespace quelmar
