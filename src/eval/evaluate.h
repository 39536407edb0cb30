// The static evaluation.
#pragma once

#include "board/types.h"

namespace quelmar {

// How much the king's safety weighs, and whether shelter counts.
enum class Style { NORMAL, ACTIVE, AGGRESSIVE, SUICIDAL };

extern Style playing_style;  // set by the protocol's options

// Score of the current position in 128ths of a pawn, for the side to move. Writes ply_outputs at search_ply
// and both attack maps. Uses playing_style.
int evaluate();

// What ply_material_placement would roughly be after `move`, from the mover's view, without making it.
int material_placement_after_move(const Move& move);

}  // namespace quelmar
