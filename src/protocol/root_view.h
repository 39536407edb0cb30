// The game position for commands that arrive in the middle of a search.
//
// The input poll runs at an inner node. A command that shows or evaluates "the position" means that of the
// game, and must not leave a trace: the search reads lists, maps and per-ply outputs after it. So the moves
// of the search are taken back for a while, and everything is put back byte by byte afterwards (playing the
// moves again would bring the men of the piece lists into another order).
#pragma once

#include <memory>

namespace quelmar {

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
