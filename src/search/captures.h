// The moves of the quiescence search outside check.
#pragma once

namespace quelmar {

// Writes the list of the current search ply: captures and queen promotions, pseudo-legal, without gives_check
// and score, in the order of the other generators (board/generate.h). Captures of a cheaper man that the
// attack maps call adequately defended are left out, so evaluate() must have seen the position. A list square
// without a man is passed over.
void generate_captures();

}  // namespace quelmar
