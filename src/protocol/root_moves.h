// The game's position as the front ends look at it: its legal moves, and itself in the middle of a search.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <memory>

namespace quelmar {

// The legal moves, ended by a record whose `from` is 0.
extern Table<Move, MAX_MOVES_IN_POSITION + 1> root_moves;

// Resets the search (so search_ply is 0) and fills root_moves, without captures of the enemy king, which a
// set-up position may offer; with an unusable position it is left empty.
void build_root_moves();

// The move of root_moves that `move` is; empty when it is none.
Move find_legal(const Move& move);

// The game position for commands that arrive in the middle of a search.
//
// The input poll runs at an inner node. A command that shows or evaluates "the position" means that of the
// game, and must not leave a trace: the search reads lists, maps and per-ply outputs after it. So the moves
// of the search are taken back for a while, and everything is put back byte by byte afterwards (playing the
// moves again would bring the men of the piece lists into another order).
//
// While it lives the current position is that of the game. Does nothing when no search runs.
class RootView {
public:
    RootView();
    ~RootView();
    RootView(const RootView&) = delete;
    RootView& operator=(const RootView&) = delete;

private:
    struct Saved;
    std::unique_ptr<const Saved> saved_;
};

}  // namespace quelmar
