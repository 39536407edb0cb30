#include "search/full_line.h"

#include "board/make_move.h"
#include "board/move_list.h"
#include "board/position.h"
#include "search/line_player.h"
#include "search/mate_line.h"
#include "search/root_tables.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr PackedMove WITHOUT_CHECK_FLAG = 0x7FFFFFFF;

// Positions whose moves may be listed to complete a mate: about a millisecond on a clock, some dozens without
// one, and some seconds for a search that was asked for the mate.
int mate_positions() {
    constexpr int ON_CLOCK = 200, WITHOUT_CLOCK = 5000, WANTED = 500000;
    return search_limits.mate > 0 ? WANTED : search_state.timed ? ON_CLOCK : WITHOUT_CLOCK;
}

bool is_move_of_entry(const TTEntry* entry, const Move& move) {
    return entry != nullptr && entry->move != 0 &&
           ((pack_move(move) ^ entry->move) & WITHOUT_CHECK_FLAG) == 0;
}

// Whether the table knows the position behind `move` to be bad enough for the opponent.
bool is_proved_by_child(const Move& move, Score score) {
    const TTEntry* child = tt_probe(key_after_packed_move(position.current().key, pack_move(move)));
    return child != nullptr && child->upper_score <= seen_from_behind(score);
}

// The table's move in a position of this score; empty when there is none.
Move next_move(const std::vector<Move>& moves, Score score) {
    const TTEntry* entry = tt_probe(position.current().key);
    auto found = std::find_if(moves.begin(), moves.end(),
                              [entry](const Move& move) { return is_move_of_entry(entry, move); });
    if (found == moves.end())
        found = std::find_if(moves.begin(), moves.end(),
                             [score](const Move& move) { return is_proved_by_child(move, score); });
    return found != moves.end() ? *found : Move{};
}

std::vector<Move> root_moves() {
    generate_root_moves();
    return {move_list.current().begin(), move_list.current().end()};
}

bool is_at_end(const LinePlayer& line) {
    return !line.has_room() || is_drawn_by_rules() || is_repetition();
}

void follow_entries(LinePlayer& line, Score score) {
    do {
        const Move move = next_move(line.moves().empty() ? root_moves() : legal_moves(), score);
        if (move.from == 0)
            return;
        line.play(move);
        score = seen_from_behind(score);
        if (is_drawn_by_rules())
            return;
        if (const auto known = table_score(); known.value_or(0) != 0) {
            follow_tables(line, *known);
            return;
        }
    } while (!is_at_end(line));
}

bool is_mate(Score score) {
    return std::abs(score) >= TT_MATE_LIMIT;
}

bool is_whole_mate(const LinePlayer& line, Score score) {
    return is_mate(score) && line.moves().size() == static_cast<std::size_t>(MATE_SCORE - std::abs(score)) &&
           is_checkmate();
}

}  // namespace

void read_full_line(RootLine& line) {
    LinePlayer player;
    follow_entries(player, line.score);
    line.moves = player.moves();
    line.is_whole_mate = is_whole_mate(player, line.score);
    if (line.is_whole_mate || !is_mate(line.score) || line.kind != LineKind::EXACT)
        return;
    player.take_back_to(0);
    const Move first = line.moves.empty() ? Move{} : line.moves.front();
    if (play_mate_line(player, first, line.score, mate_positions())) {
        line.moves = player.moves();
        line.is_whole_mate = true;
    }
}

}  // namespace quelmar
