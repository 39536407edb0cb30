// What an evaluation leaves for the search: the attack maps and the outputs of its ply.
#pragma once

#include "board/types.h"
#include "eval/attack_map.h"

namespace quelmar {

// Values stay until the next evaluation at that ply, and the search reads some of them before it evaluates a
// node itself.
struct PlyOutputs {
    int ply_material_placement = 0;    // material and placement of the side to move minus the other's
    Table<int, 2> ply_king_danger{};   // by colour, zero or negative, 128ths of a pawn
    Table<int, 2> ply_passed_score{};  // by colour
    int ply_eval = 0;                  // the score returned
};

// Indexed by search_ply. Written by evaluate() only.
inline Table<PlyOutputs, 84> ply_outputs;

inline PlyOutputs& outputs_at(int ply) {
    return ply_outputs[ply];
}

}  // namespace quelmar
