#include "search/search_limits.h"

#include "board/generate.h"
#include "board/position.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

bool is_node_limit_reached() {
    return search_limits.nodes != 0 && search_state.nodes >= search_limits.nodes && !is_endless();
}

bool is_mate_in(Score score, int moves) {
    const Score mated_in_none = MATE_SCORE - 2 * moves;
    return score > mated_in_none || score <= -mated_in_none;
}

void apply_search_limits() {
    SearchState& s = search_state;
    s.iteration_limit = std::min(s.iteration_limit, search_limits.iterations);
    if (search_limits.move_time == 0)
        return;
    s.target_time = std::min(s.target_time, search_limits.move_time);
    s.max_time = std::min(s.max_time, search_limits.move_time);
}

bool is_wanted_at_root(const Move& move) {
    const auto& wanted = search_limits.moves;
    return wanted.empty() || std::any_of(wanted.begin(), wanted.end(),
                                         [&move](const Move& one) { return same_move(one, move); });
}

static bool is_listed(const Move& move) {
    const auto& listed = root_choice.listed;
    return std::any_of(listed.begin(), listed.end(),
                       [&move](const Move& one) { return same_move(one, move); });
}

// What the tables say of the best move that is left; nothing where they were not asked.
static const RankedMove* best_ranked_move() {
    for (const RankedMove& one : root_choice.ranked) {
        if (!is_listed(one.move))
            return &one;
    }
    return nullptr;
}

static bool is_as_good(const RankedMove& best, const Move& move) {
    const auto& ranked = root_choice.ranked;
    return std::any_of(ranked.begin(), ranked.end(), [&](const RankedMove& one) {
        return same_move(one.move, move) && one.score == best.score && one.by_table == best.by_table;
    });
}

void generate_root_moves() {
    generate_legal_moves();
    const RankedMove* best = best_ranked_move();
    if (search_limits.moves.empty() && root_choice.listed.empty() && best == nullptr)
        return;
    const int ply = position.search_ply;
    Move*& end = move_list.start_of(ply + 1);
    end = std::remove_if(move_list.start_of(ply), end, [best](const Move& move) {
        return !is_wanted_at_root(move) || is_listed(move) || (best != nullptr && !is_as_good(*best, move));
    });
}

void forget_restricted_root() {
    if (!search_limits.moves.empty() || search_limits.lines > 1 || !root_choice.ranked.empty())
        tt_forget(position.current().key);
}

}  // namespace quelmar
