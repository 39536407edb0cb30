// Whether the game has ended in the current position.
#pragma once

#include "board/position.h"
#include "board/square_tables.h"

namespace quelmar {

// game_state() answers the first five and MATE. Those behind AGREEMENT have a winner.
enum class GameResult { NONE, FIFTY_MOVES, REPETITION, MATERIAL, STALEMATE, AGREEMENT, MATE, TIME, RESIGN };

// The reason as the protocol prints it in braces, "" for NONE.
const char* result_text(GameResult result);

// Whether one side won.
bool is_decisive_result(GameResult result);

inline constexpr int FIFTY_MOVES = 100;  // plies without capture, pawn move or castling that make a draw

// Whether the current position stands for the third time within the reversible part of the game.
bool is_threefold_repetition();

// Whether neither side has pawns, or a rook's worth of pieces.
inline bool has_bare_material(const UndoRecord& record) {
    return record.pawns_us == 0 && record.pawns_them == 0 && record.material_us < ROOK_VALUE &&
           record.material_them < ROOK_VALUE;
}

// Whether nothing is left on either side that could ever mate.
bool is_material_insufficient();

// State of the game for the side to move. Overwrites the current ply's move list with the legal moves.
GameResult game_state();

}  // namespace quelmar
