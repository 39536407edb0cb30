// The static evaluation.
#pragma once

#include "board/position.h"
#include "board/square_tables.h"
#include "board/types.h"

namespace quelmar {

// How much the king's safety weighs, and whether shelter counts.
enum class Style { NORMAL, ACTIVE, AGGRESSIVE, SUICIDAL };

extern Style playing_style;  // set by the protocol's options

// Score of the current position in 128ths of a pawn, for the side to move. Writes ply_outputs at search_ply
// and both attack maps. Uses playing_style.
int evaluate();

// What ply_material_placement would roughly be after `move`, from the mover's view, without making it: the
// present balance of material and placement, and what the move adds to it.
inline int material_placement_balance() {
    const UndoRecord& here = position.current();
    return here.pst_us + here.material_us - (here.pst_them + here.material_them);
}
inline int material_placement_gain(const Move& move) {
    const Piece arriving = move.promotion != EMPTY ? move.promotion : move.piece;
    return placement_of(arriving, move.to) - placement_of(move.piece, move.from) + value_of(move.captured) +
           placement_of(move.captured, move.to);
}
inline int material_placement_after_move(const Move& move) {
    return material_placement_balance() + material_placement_gain(move);
}

}  // namespace quelmar
