// The two attack maps that an evaluation leaves: one byte per square and colour.
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

using AttackMap = std::array<u8, BOARD_SIZE>;

// [WHITE] and [BLACK]; written by evaluate() only. Bytes of off-board squares are never read.
extern std::array<AttackMap, 2> attack_map;

inline int attack_byte(Side side, Square square) {
    return attack_map[static_cast<std::size_t>(side)][static_cast<std::size_t>(square)];
}

}  // namespace quelmar
