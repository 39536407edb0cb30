#include "protocol/root_view.h"

#include "board/make_move.h"
#include "board/position.h"
#include "eval/outputs.h"
#include "protocol/protocol_state.h"
#include "search/search_control.h"

namespace quelmar {

struct RootView::Saved {
    Position position_then = position;
    Table<AttackMap, 2> attack_map_then = attack_map;
    decltype(ply_outputs) ply_outputs_then = ply_outputs;
};

namespace {

void step_back() {
    const Move last = position.previous().move;
    if (last.from == 0)
        unmake_null_move();
    else
        unmake_move(&last);
}

}  // namespace

RootView::RootView() {
    if (!protocol_state.searching)
        return;
    saved_ = std::make_unique<const Saved>();
    while (position.search_ply > 0)
        step_back();
    // Behind a move that nobody has played yet; under UCI the client has set that position up itself.
    if (search_control.ponder_state == Pondering::YES && !protocol_state.uci_mode) {
        position.search_ply = 1;
        step_back();
    }
}

RootView::~RootView() {
    if (!saved_)
        return;
    position = saved_->position_then;
    attack_map = saved_->attack_map_then;
    ply_outputs = saved_->ply_outputs_then;
}

}  // namespace quelmar
