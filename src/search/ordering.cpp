#include "search/ordering.h"

#include "board/move_list.h"
#include "board/position.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "search/path.h"
#include "search/search_state.h"

#include <algorithm>
#include <limits>
#include <span>

namespace quelmar {

namespace {

constexpr i32 HANDED_OUT = std::numeric_limits<i32>::min();

// The scores of the moves on the move stack, each in the place of its move. They lie apart from the moves so
// that the picker reads nothing else.
Table<i32, decltype(MoveList::move_stack)::size()> scores;

std::span<i32> scores_of(std::span<Move> moves) {
    return {scores.data() + (moves.data() - move_list.move_stack.data()), moves.size()};
}

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

i32 score_of(const Move& move, i32 worth) {
    return worth * WORTH_UNIT + cheapness[move.piece];
}

void lift_first(Square from, Square to, i32 worth) {
    const std::span<Move> moves = move_list.current();
    const auto move = std::find_if(moves.begin(), moves.end(), [from, to](const Move& candidate) {
        return candidate.from == from && candidate.to == to;
    });
    if (move != moves.end())
        scores_of(moves)[static_cast<std::size_t>(move - moves.begin())] = score_of(*move, worth);
}

// The place of the best score, the first of equals.
std::size_t place_of_best(std::span<const i32> left) {
    i32 best = HANDED_OUT;
    for (const i32 score : left)
        best = std::max(best, score);
    std::size_t place = 0;
    while (place < left.size() && left[place] != best)
        ++place;
    return place;
}

QUELMAR_MODERN_COPY std::size_t place_of_best_on_modern_processor(std::span<const i32> left) {
    return place_of_best(left);
}

}  // namespace

void order_moves(PackedMove table_move) {
    const UndoRecord& here = position.current();
    const std::span<Move> moves = move_list.current();
    std::transform(moves.begin(), moves.end(), scores_of(moves).begin(),
                   [&here](const Move& move) { return score_of(move, worth_of(here, move)); });
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
    const std::span<Move> moves = move_list.current();
    const std::span<i32> left = scores_of(moves);
    const std::size_t place =
        modern_processor ? place_of_best_on_modern_processor(left) : place_of_best(left);
    if (place == left.size() || left[place] == HANDED_OUT)
        return nullptr;
    left[place] = HANDED_OUT;
    return &moves[place];
}

void update_history_and_killer(const Move& move, Depth depth) {
    u32& counter = search_state.history_of(move);
    counter += static_cast<u32>(depth >> HISTORY_DEPTH_SHIFT);
    if (counter > HISTORY_LIMIT << search_state.history_shift)
        ++search_state.history_shift;
    search_state.at(position.search_ply).killer = move;
}

}  // namespace quelmar
