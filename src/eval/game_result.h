// Whether the game has ended in the current position.
#pragma once

namespace quelmar {

// Result codes of a game. game_state() answers the first five and RESULT_MATE.
inline constexpr int RESULT_NONE = 0, RESULT_FIFTY_MOVES = 1, RESULT_REPETITION = 2, RESULT_MATERIAL = 3,
                     RESULT_STALEMATE = 4, RESULT_AGREEMENT = 5, RESULT_MATE = 6, RESULT_TIME = 7,
                     RESULT_RESIGN = 8;

// The reason as the protocol prints it in braces, "" for RESULT_NONE. `code` 0..8.
const char* result_text(int code);

// Whether one side won: codes above 5.
bool is_decisive_result(int code);

// Whether the current position stands for the third time within the reversible part of the game.
bool is_threefold_repetition();

// State of the game for the side to move. Overwrites the current ply's move list with the legal moves.
int game_state();

}  // namespace quelmar
