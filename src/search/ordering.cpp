#include "search/ordering.h"

#include "board/move_list.h"
#include "board/position.h"
#include "eval/exchange.h"
#include "search/path.h"
#include "search/search_state.h"

#include <limits>

namespace quelmar {

namespace {

constexpr i32 HANDED_OUT = std::numeric_limits<i32>::min();

// A move's score is its worth times this plus the cheapness of the man that moves, which decides between
// equals.
constexpr i32 WORTH_UNIT = 8;
constexpr Table<i32, 14> cheapness = {0, 5, 4, 4, 3, 2, 1, 5, 4, 4, 3, 2, 1, 0};

constexpr i32 THREATENED_STEP = 100;  // between the worst and the second worst hanging man
constexpr int HISTORY_DEPTH_SHIFT = 5;

// By the victim's code; a king last of all, since a move that can take it ends the node.
constexpr Table<i32, 14> capture_order = {0, 115, 116, 117, 118, 119, 126, 115, 116, 117, 118, 119, 126, 0};

i32 capture_worth(const UndoRecord& here, const Move& move) {
    for (int i = 0; i < here.threat_square_them.size(); ++i) {
        if (here.threat_value_them[i] != 0 && here.threat_square_them[i] == move.to)
            return ORDER_WINS_THREATENED - THREATENED_STEP * static_cast<i32>(i) - move.piece;
    }
    return ORDER_CAPTURE + capture_order[move.captured];
}

i32 promotion_worth(const Move& move) {
    const bool sound = static_exchange(move.from, move.to) >= 0;
    if (kind_of(move.promotion) == QUEEN)
        return sound ? ORDER_QUEEN_PROMOTION : ORDER_LOSING_QUEEN_PROMOTION;
    return sound ? ORDER_UNDERPROMOTION : ORDER_LOSING_UNDERPROMOTION;
}

i32 quiet_worth(const Move& move) {
    const int ply = position.search_ply;
    if (same_squares(move, search_state.at(ply).killer))
        return ORDER_KILLER;
    if (same_squares(move, search_state.at(ply - 2).killer))
        return ORDER_OLDER_KILLER;
    return static_cast<i32>(search_state.history_of(move) >> search_state.history_shift);
}

i32 worth_of(const UndoRecord& here, const Move& move) {
    if (move.captured != EMPTY)
        return capture_worth(here, move);
    return move.promotion != EMPTY ? promotion_worth(move) : quiet_worth(move);
}

void score_move(Move& move, i32 worth) {
    move.score = worth * WORTH_UNIT + cheapness[move.piece];
}

void lift_first(Square from, Square to, i32 worth) {
    for (Move& move : move_list.current()) {
        if (move.from == from && move.to == to) {
            score_move(move, worth);
            return;
        }
    }
}

}  // namespace

void order_moves(PackedMove table_move) {
    const UndoRecord& here = position.current();
    for (Move& move : move_list.current())
        score_move(move, worth_of(here, move));
    // The later the stronger: each may override the one before.
    const int ply = position.search_ply;
    if (table_move != 0)
        lift_first(packed_from(table_move), packed_to(table_move), ORDER_TABLE_MOVE);
    const Move& mate_killer = search_state.at(ply).mate_killer;
    if (mate_killer.from != 0)
        lift_first(mate_killer.from, mate_killer.to, ORDER_MATE_KILLER);
    const PackedMove threat = search_state.at(ply - 2).threat_move;
    if (threat != 0 && move_before().from == 0)
        lift_first(packed_from(threat), packed_to(threat), ORDER_MATE_KILLER);
}

Move* pick_move() {
    Move* best = nullptr;
    i32 best_score = HANDED_OUT;
    for (Move& move : move_list.current()) {
        if (move.score > best_score) {
            best = &move;
            best_score = move.score;
        }
    }
    if (best != nullptr)
        best->score = HANDED_OUT;
    return best;
}

void update_history_and_killer(const Move& move, Depth depth) {
    u32& counter = search_state.history_of(move);
    counter += static_cast<u32>(depth >> HISTORY_DEPTH_SHIFT);
    if (counter > HISTORY_LIMIT << search_state.history_shift)
        ++search_state.history_shift;
    search_state.at(position.search_ply).killer = move;
}

}  // namespace quelmar
