#include "protocol/root_moves.h"

#include "board/generate.h"
#include "board/position.h"
#include "search/search_state.h"

#include <algorithm>

namespace quelmar {

Table<Move, MAX_MOVES_IN_POSITION + 1> root_moves;

void build_root_moves() {
    reset_search();
    root_moves[0].from = 0;
    if (!position.usable)
        return;
    generate_legal_moves();
    // A set-up position may let the side to move take the king; no game goes on after that.
    Move* const end = std::copy_if(move_list.current().begin(), move_list.current().end(), root_moves.begin(),
                                   [](const Move& move) { return kind_of(move.captured) != KING; });
    end->from = 0;
}

Move find_legal(const Move& move) {
    for (const Move* legal = root_moves.data(); legal->from != 0; ++legal) {
        if (same_move(*legal, move))
            return *legal;
    }
    return {};
}

}  // namespace quelmar
