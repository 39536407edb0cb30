#include "search/root_tables.h"

#include "board/game_result.h"
#include "board/position.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "tablebase/probe.h"

#include <algorithm>
#include <tuple>

namespace quelmar {

namespace {

constexpr Score MATED_NOW = -MATE_SCORE;

// Tables know no castling.
bool can_be_in_tables() {
    const UndoRecord& here = position.current();
    return here.men_us + here.men_them <= tb_max_men && (here.castle_lost & CASTLE_ANY) == CASTLE_ANY;
}

bool are_kings_alone() {
    const UndoRecord& here = position.current();
    return here.men_us + here.men_them == 2;
}

// Plays a legal move that leads to what the tables promise; false when they do not know one.
bool play_table_move(LinePlayer& line, Score score) {
    for (const Move& move : legal_moves()) {
        line.play(move);
        const auto after = table_score();
        if (after && seen_from_before(*after) == score)
            return true;
        line.take_back();
    }
    return false;
}

// What the move just played is worth when the best line behind it is held against the fifty-move rule and the
// repetitions of the game. The line is followed only if it is long enough to come to that.
Score worth_under_rules(LinePlayer& line, Score after) {
    if (is_drawn_by_rules())
        return 0;
    const int plies_left = MATE_SCORE - std::abs(after);
    if (after == 0 || position.current().halfmove_clock + plies_left <= FIFTY_MOVES)
        return seen_from_before(after);
    const std::size_t played = line.moves().size();
    const LineEnd end = follow_tables(line, after);
    line.take_back_to(played);
    return end == LineEnd::DRAWN ? 0 : seen_from_before(after);
}

bool is_better(const RankedMove& a, const RankedMove& b) {
    return std::tie(a.score, a.by_table) > std::tie(b.score, b.by_table);
}

}  // namespace

std::optional<Score> table_score() {
    if (tb_max_men == 0 || !can_be_in_tables())
        return std::nullopt;
    if (are_kings_alone())
        return 0;
    Score score = 0;
    if (!probe_tablebase(score))
        return std::nullopt;
    ++search_state.tb_hits;
    return score;
}

LineEnd follow_tables(LinePlayer& line, Score score) {
    while (score != MATED_NOW) {
        if (!line.has_room() || !play_table_move(line, score))
            return LineEnd::UNKNOWN;
        score = seen_from_behind(score);
        if (score != MATED_NOW && is_drawn_by_rules())
            return LineEnd::DRAWN;
    }
    return LineEnd::MATE;
}

void rank_root_moves() {
    root_choice = {};
    if (!search_control.keeps_lines || tb_max_men == 0 || !can_be_in_tables())
        return;
    std::vector<RankedMove> ranked;
    LinePlayer line;
    for (const Move& move : legal_moves()) {
        if (!is_wanted_at_root(move))
            continue;
        line.play(move);
        const auto after = table_score();
        if (!after)
            return;
        ranked.push_back({move, worth_under_rules(line, *after), seen_from_before(*after)});
        line.take_back();
    }
    std::stable_sort(ranked.begin(), ranked.end(), is_better);
    root_choice.ranked = std::move(ranked);
}

}  // namespace quelmar
