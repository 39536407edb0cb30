#include "search/full_line.h"

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/position.h"
#include "search/principal_variation.h"
#include "search/root_tables.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

namespace {

// Positions whose moves may be listed to complete a mate: about a millisecond on a clock, some dozens without
// one, and some seconds for a search that was asked for the mate and not stopped.
int mate_positions() {
    constexpr int ON_CLOCK = 200, WITHOUT_CLOCK = 5000, WANTED = 500000;
    return search_limits.mate > 0 && !search_control.abort_search ? WANTED
           : search_state.timed                                   ? ON_CLOCK
                                                                  : WITHOUT_CLOCK;
}

bool is_move_of_entry(const TTEntry* entry, const Move& move) {
    return entry != nullptr && entry->move != 0 && same_packed_move(pack_move(move), entry->move);
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

std::vector<Move> wanted_moves() {
    generate_root_moves();
    return {move_list.current().begin(), move_list.current().end()};
}

bool is_at_end(const LinePlayer& line) {
    return !line.has_room() || is_drawn_by_rules() || is_repetition();
}

void follow_entries(LinePlayer& line, Score score) {
    do {
        const Move move = next_move(line.moves().empty() ? wanted_moves() : legal_moves(), score);
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

// A side mates in an odd number of plies and is mated in an even one.
class MateFinder {
public:
    MateFinder(LinePlayer& line, int positions) : line_(line), positions_(positions) {}

    bool play_from_root(const Move& first, int plies) {
        for (const Move& move : moves_of_position()) {
            if (first.from != 0 ? same_move(move, first) : is_wanted_at_root(move)) {
                if (play_on_from(move, plies))
                    return true;
            }
        }
        return false;
    }

private:
    bool may_list() {
        constexpr int BETWEEN_LOOKS = 256;  // positions, about a millisecond
        if (positions_ > 0 && positions_ % BETWEEN_LOOKS == 0 && !search_control.abort_search)
            look_outside();
        return positions_-- > 0;
    }

    // A stop that came before is no reason to leave the line incomplete.
    void look_outside() {
        line_.poll_input();
        stop_when_time_is_up();
        if (search_control.abort_search)
            positions_ = 0;
    }

    std::vector<Move> moves_of_position() { return may_list() ? legal_moves() : std::vector<Move>{}; }

    // The table move first, then checks: they keep most mates.
    std::vector<Move> ordered_moves() {
        auto moves = moves_of_position();
        const TTEntry* entry = tt_probe(position.current().key);
        const PackedMove best = entry != nullptr ? entry->move : 0;
        const auto merit = [best](const Move& move) {
            const bool from_table = best != 0 && packed_from(best) == move.from && packed_to(best) == move.to;
            return from_table ? 2 : move.gives_check != 0 || move.promotion != EMPTY ? 1 : 0;
        };
        std::stable_sort(moves.begin(), moves.end(),
                         [&](const Move& a, const Move& b) { return merit(a) > merit(b); });
        return moves;
    }

    // Whether the side to move mates within so many plies. The generators leave promotions' checks unflagged.
    bool can_mate(int plies) {
        if (const TTEntry* entry = tt_probe(position.current().key)) {
            if (entry->lower_score >= MATE_SCORE - plies)
                return true;
            if (entry->upper_score < MATE_SCORE - plies && entry->upper_depth >= plies * ONE_PLY)
                return false;
        }
        for (const Move& move : ordered_moves()) {
            if (plies == 1 && move.gives_check == 0 && move.promotion == EMPTY)
                continue;
            line_.play(move);
            const bool mates = !is_drawn_by_rules() && is_mated(plies - 1);
            line_.take_back();
            if (mates)
                return true;
        }
        return false;
    }

    // Whether every move of the side to move runs into a mate within so many plies.
    bool is_mated(int plies) {
        const TTEntry* entry = tt_probe(position.current().key);
        if (entry != nullptr && entry->upper_score <= plies - MATE_SCORE)
            return true;
        const bool checked = in_check(position.side_to_move);
        if ((plies == 0 && !checked) || !may_list())
            return false;
        const auto moves = legal_moves();
        if (moves.empty() || plies == 0)
            return checked && moves.empty();
        return std::all_of(moves.begin(), moves.end(), [&](const Move& move) {
            line_.play(move);
            const bool lost = !is_drawn_by_rules() && can_mate(plies - 1);
            line_.take_back();
            return lost;
        });
    }

    // Plays `move`, which is to end in mate after so many plies, and all that follows.
    bool play_on_from(const Move& move, int plies) {
        if (!line_.has_room())
            return false;
        const std::size_t played = line_.moves().size();
        line_.play(move);
        if ((plies == 1 || !is_drawn_by_rules()) && is_right(plies - 1) && play_on(plies - 1))
            return true;
        line_.take_back_to(played);
        return false;
    }

    // Whether the mate is neither farther away nor nearer than said, as seen behind a move.
    bool is_right(int plies) {
        if (plies % 2 == 0)
            return is_mated(plies);
        const TTEntry* entry = tt_probe(position.current().key);
        return entry == nullptr || entry->lower_score <= MATE_SCORE - plies;
    }

    bool play_on(int plies) {
        if (plies == 0)
            return is_checkmate();
        const Score score = plies % 2 == 0 ? plies - MATE_SCORE : MATE_SCORE - plies;
        if (const auto known = table_score())
            return *known == score && follow_tables(line_, score) == LineEnd::MATE;
        const auto moves = ordered_moves();
        return std::any_of(moves.begin(), moves.end(),
                           [&](const Move& move) { return play_on_from(move, plies); });
    }

    LinePlayer& line_;
    int positions_;
};

// Plays a line of exactly the length that `score` promises, a mate counted from the current position, from
// `first` (any move when its `from` is 0) to the checkmate. Bounds of the transposition table say which moves
// keep the mate; where they are silent a search of its own does, bounded by `positions` whose moves it lists.
// It stores nothing and counts no nodes. Returns false, with nothing played, when there is no such line or it
// cannot be found.
bool play_mate_line(LinePlayer& line, const Move& first, Score score, int positions) {
    const int plies = MATE_SCORE - std::abs(score);
    return plies > 0 && MateFinder(line, positions).play_from_root(first, plies);
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
