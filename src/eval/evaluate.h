// The static evaluation.
#pragma once

#include "board/types.h"

namespace quelmar {

// Score of the current position in 128ths of a pawn, for the side to move. Writes ply_outputs at search_ply
// and both attack maps. Uses settings.style.
int evaluate();

// What ply_material_placement would roughly be after `move`, from the mover's view, without making it.
int material_placement_after_move(const Move& move);

// Forgets the pawn structures met so far, as in a process that has just started.
void forget_pawn_structures();

}  // namespace quelmar
