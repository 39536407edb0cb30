// What an evaluation leaves for the search: two attack maps, one byte per square and colour, and the outputs
// of its ply.
//
// Bits 0-2 count the attackers, bits 3-7 say their kinds. An x-ray attack counts but sets no kind. An eighth
// attacker carries into bit 3; nothing guards against it.
#pragma once

#include "board/types.h"

namespace quelmar {

inline constexpr int ATTACK_COUNT = 7;  // mask
inline constexpr int ATTACK_PAWN = 8, ATTACK_MINOR = 16, ATTACK_ROOK = 32, ATTACK_QUEEN = 64,
                     ATTACK_KING = 128;
inline constexpr int ATTACK_XRAY = 0;
inline constexpr int ATTACK_KIND_SHIFT = 3;

using AttackMap = Table<u8, BOARD_SIZE>;

// [WHITE] and [BLACK]; written by evaluate() only. Bytes of off-board squares are never read.
inline Table<AttackMap, 2> attack_map;

inline int attack_byte(Side side, Square square) {
    return attack_map[side][square];
}

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
