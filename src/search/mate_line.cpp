#include "search/mate_line.h"

#include "board/attacks.h"
#include "board/position.h"
#include "search/root_tables.h"
#include "search/search_limits.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

namespace {

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
    bool may_list() { return positions_-- > 0; }

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

}  // namespace

bool play_mate_line(LinePlayer& line, const Move& first, Score score, int positions) {
    const int plies = MATE_SCORE - std::abs(score);
    return plies > 0 && MateFinder(line, positions).play_from_root(first, plies);
}

}  // namespace quelmar
