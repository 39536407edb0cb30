#include "protocol/root_moves.h"

#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "eval/outputs.h"
#include "protocol/protocol_state.h"
#include "search/search_control.h"
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

struct RootView::Saved {
    Position position_then = position;
    Table<AttackMap, 2> attack_map_then = attack_map;
    decltype(ply_outputs) ply_outputs_then = ply_outputs;
};

RootView::RootView() {
    if (!protocol_state.searching)
        return;
    saved_ = std::make_unique<const Saved>();
    while (position.search_ply > 0)
        unmake_last_move();
    // Behind a move that nobody has played yet; under UCI the client has set that position up itself.
    if (search_control.ponder_state == Pondering::YES && !protocol_state.uci_mode)
        unmake_played_move();
}

RootView::~RootView() {
    if (!saved_)
        return;
    position = saved_->position_then;
    attack_map = saved_->attack_map_then;
    ply_outputs = saved_->ply_outputs_then;
}

}  // namespace quelmar
