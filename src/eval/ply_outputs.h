// What an evaluation leaves for the search, by search ply. Values stay until the next evaluation at that ply,
// and the search reads some of them before it evaluates a node itself.
#pragma once

#include "board/types.h"

namespace quelmar {

struct PlyOutputs {
    int ply_material_placement = 0;         // material and placement of the side to move minus the other's
    std::array<int, 2> ply_king_danger{};   // by colour, zero or negative, 128ths of a pawn
    std::array<int, 2> ply_passed_score{};  // by colour
    int ply_eval = 0;                       // the score returned
};

// Indexed by search_ply. Written by evaluate() only.
extern std::array<PlyOutputs, 84> ply_outputs;

inline PlyOutputs& outputs_at(int ply) {
    return ply_outputs[static_cast<std::size_t>(ply)];
}

}  // namespace quelmar
