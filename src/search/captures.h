// The moves of the quiescence search outside check.
#pragma once

namespace quelmar {

// Writes the list of the current search ply: captures and queen promotions, pseudo-legal, without
// gives_check, in the order of the other generators (board/generate.h). Captures of a cheaper man that the
// attack maps call adequately defended are left out, so find_threats() must have seen the position. A king
// that can be taken is no capture: whoever calls has looked for it.
void generate_captures();

}  // namespace quelmar
