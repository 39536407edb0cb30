// Positions from text, and the list of legal moves the front ends work with.
#pragma once

#include "board/move_list.h"
#include "board/types.h"

namespace quelmar {

inline constexpr char START_FEN[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq";

// Sets the position up from FEN or EPD text: placement, side to move, castling, and what else the dialect
// reads. Returns 0. Bad text is reported as the dialect does, by default "Error in EPD line1" (placement cut
// short), "line2" (a placement that is none) or "line3" (side to move), and gives 1; the position is then not
// usable. Forgets the game's history, clears game_over and resets the search.
int parse_fen(const char* text);

// The legal moves of the position at the root, ended by a record whose `from` is 0.
extern std::array<Move, MAX_MOVES_IN_POSITION + 1> root_moves;

// Resets the search (so search_ply is 0) and fills root_moves, without captures of the enemy king, which a
// set-up position may offer; with an unusable position it is left empty.
void build_root_moves();

}  // namespace quelmar
