// Lines of play read back from the transposition table.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <span>

namespace quelmar {

// Making moves and taking them back changes the order of the piece lists, and with it the order in which the
// search tries its moves. What is only to be looked at or printed is played under this guard.
class PieceOrderGuard {
public:
    PieceOrderGuard() : links(position.piece_links) {}
    ~PieceOrderGuard() { position.piece_links = links; }
    PieceOrderGuard(const PieceOrderGuard&) = delete;
    PieceOrderGuard& operator=(const PieceOrderGuard&) = delete;

private:
    Table<PieceLink, BOARD_SIZE> links;
};

// Follows the table's moves from the current position into `line`, as far as they are legal and at most to
// its end, and returns how many there are. A line ends after the move that repeats a position since the root.
// Overwrites the move lists from the current ply on.
int walk_table(std::span<Move> line);

// Reads the principal variation of the current position into search_state.pv.
void read_principal_variation();

// A legal move that the search may play and that does not take the king, empty when there is none.
Move first_playable_move();

}  // namespace quelmar
