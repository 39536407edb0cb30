#include "search/root_lines.h"

#include "board/position.h"
#include "search/full_line.h"
#include "search/principal_variation.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

namespace {

bool begins_with(const RootLine& line, const Move& move) {
    return !line.moves.empty() && same_move(line.moves.front(), move);
}

bool is_better(const RootLine& a, const RootLine& b) {
    return a.score > b.score;
}

// What is told of a line is what the tables say, if they know the root.
Score score_to_tell(const Move& move, Score searched) {
    const auto& ranked = root_choice.ranked;
    const auto found = std::find_if(ranked.begin(), ranked.end(),
                                    [&move](const RankedMove& one) { return same_move(one.move, move); });
    return found != ranked.end() ? found->score : searched;
}

// The move that the search has settled on, where the table has lost it.
Move best_move_of_search() {
    const Move& best = search_state.root_best_move;
    return best.from != 0 ? best : first_playable_move();
}

Move first_move_of_root() {
    const TTEntry* entry = tt_probe(position.current().key);
    const Move move = entry != nullptr ? unpack_move(entry->move) : Move{};
    return move.from != 0 && is_wanted_at_root(move) ? move : Move{};
}

RootLine read_line(Score score, LineKind kind) {
    RootLine line{
        .depth = search_state.iteration, .score = score, .searched = score, .kind = kind, .moves = {}};
    if (kind == LineKind::EXACT)
        line.score = score_to_tell(first_move_of_root(), score);
    read_full_line(line);
    if (const Move move = line.moves.empty() ? best_move_of_search() : Move{}; move.from != 0)
        line.moves = {move};
    return line;
}

RootLine line_of(const Move& move) {
    RootLine line = read_line(search_state.last_score, LineKind::EXACT);
    line.moves = {move};
    line.is_whole_mate = false;
    return line;
}

void show(const RootLine& line) {
    search_state.pv_length = static_cast<int>(line.moves.size());
    search_state.pv[0] = Move{};
    std::copy(line.moves.begin(), line.moves.end(), search_state.pv.begin());
}

}  // namespace

void RootLines::forget() {
    known_.clear();
    fresh_.clear();
    bound_ = {};
    root_choice.listed.clear();
}

void RootLines::prepare_root() const {
    if (search_limits.lines == 1)
        return;
    tt_forget(position.current().key);
    for (const RootLine& line : known_) {
        const bool is_listed = std::any_of(fresh_.begin(), fresh_.end(), [&line](const RootLine& one) {
            return !line.moves.empty() && begins_with(one, line.moves.front());
        });
        if (is_listed || line.moves.empty())
            continue;
        tt_store_lower(0, pack_move(line.moves.front()), -INFINITE_SCORE, 0);
        return;
    }
}

Score RootLines::score_before() const {
    const std::size_t place = fresh_.size();
    return place < known_.size() ? known_[place].searched : fresh_.empty() ? 0 : fresh_.back().searched;
}

void RootLines::add(Score searched) {
    fresh_.push_back(read_line(searched, LineKind::EXACT));
    if (fresh_.size() == 1)
        show(fresh_.front());
    if (!fresh_.back().moves.empty())
        root_choice.listed.push_back(fresh_.back().moves.front());
    search_state.root_best_move = Move{};
}

const RootLine& RootLines::note_bound(Score score, LineKind kind) {
    bound_ = read_line(score, kind);
    if (fresh_.empty())
        show(bound_);
    return bound_;
}

void RootLines::complete_iteration() {
    std::stable_sort(fresh_.begin(), fresh_.end(), is_better);
    known_ = std::move(fresh_);
    fresh_.clear();
    root_choice.listed.clear();
    show(known_.front());
}

void RootLines::settle() {
    root_choice.listed.clear();
    const bool was_interrupted = !fresh_.empty();
    std::vector<RootLine> lines = std::move(fresh_);
    fresh_.clear();
    std::stable_sort(lines.begin(), lines.end(), is_better);
    // A move that had beaten the best one when the search was stopped is played.
    const Move best = search_state.pv[0];
    if (!was_interrupted && best.from != 0 && (known_.empty() || !begins_with(known_.front(), best)))
        lines.push_back(begins_with(bound_, best) ? bound_ : line_of(best));
    const auto is_new = [&lines](const RootLine& line) {
        return std::none_of(lines.begin(), lines.end(), [&line](const RootLine& one) {
            return line.moves.empty() || begins_with(one, line.moves.front());
        });
    };
    std::copy_if(known_.begin(), known_.end(), std::back_inserter(lines), is_new);
    if (lines.empty())
        return;
    const std::size_t wanted = static_cast<std::size_t>(search_limits.lines);
    lines.resize(std::min(lines.size(), wanted));
    known_ = std::move(lines);
    show(known_.front());
}

}  // namespace quelmar
