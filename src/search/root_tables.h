// Endgame tables beyond the tree: lines that are followed to the mate, and the moves of a root that the
// tables know.
#pragma once

#include "search/principal_variation.h"
#include "search/score.h"

#include <optional>

namespace quelmar {

// A score counts plies from a node: that of a position, as it is seen from the position a move before, and
// the other way round.
constexpr Score seen_from_before(Score score) {
    return score > 0 ? 1 - score : score < 0 ? -score - 1 : 0;
}
constexpr Score seen_from_behind(Score score) {
    return score > 0 ? -score - 1 : score < 0 ? 1 - score : 0;
}

// What the tables say of the current position, for the side to move and with the mate counted from here;
// nothing when they do not know it. The fifty-move rule plays no part. Counts as a hit. search_ply must be 0.
std::optional<Score> table_score();

enum class LineEnd { MATE, DRAWN, UNKNOWN };

// Goes on with best moves of the tables from the current position, which has this table_score() and is no
// draw, until it is mate or a draw by the rules, or a table or room is missing.
LineEnd follow_tables(LinePlayer& line, Score score);

// Fills root_choice.ranked where search_control.keeps_lines and the tables know every move of the root.
void rank_root_moves();

}  // namespace quelmar
