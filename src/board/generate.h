// Four move generators; that of captures needs exchange values and stands with the search. All write the list
// of the current search ply and close it by setting ply_list_start[search_ply + 1]; men in piece-list order,
// a man's moves in the order of the direction tables. None writes `score`. A list square without a man means
// a corrupted position: they then print "Illegal piece: %d at %d" and the board and end the process with
// status 1.
#pragma once

namespace quelmar {

void generate_moves();        // pseudo-legal, with gives_check
void generate_legal_moves();  // the same order, legal moves only; captures of the enemy king stay

// Moves to empty squares that give check, pseudo-legal.
void generate_quiet_checks();

// All legal moves of a side in check. An empty list is checkmate.
void generate_evasions();

}  // namespace quelmar
