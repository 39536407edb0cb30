#include "search/line_player.h"

#include "board/attacks.h"
#include "board/game_result.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "search/search_state.h"

#include <algorithm>
#include <iterator>

namespace quelmar {

LinePlayer::LinePlayer() {
    position.search_ply = 0;
}

LinePlayer::~LinePlayer() {
    take_back_to(0);
    position.search_ply = search_ply_then_;
}

void LinePlayer::play(const Move& move) {
    const Move copy = move;  // the caller's may be a record that playing overwrites
    make_move(&copy);
    position.search_ply = 0;
    moves_.push_back(copy);
}

void LinePlayer::take_back() {
    position.search_ply = 1;  // where the move stands as seen from the position it is taken back to
    unmake_move(&moves_.back());
    moves_.pop_back();
}

void LinePlayer::take_back_to(std::size_t length) {
    while (moves_.size() > length)
        take_back();
}

bool LinePlayer::has_room() const {
    constexpr int TRIAL_MOVES = 2;  // of the generators
    return moves_.size() < static_cast<std::size_t>(MAX_LINE) &&
           position.game_ply + TRIAL_MOVES < POSITION_STACK_SIZE - 1;
}

std::vector<Move> legal_moves() {
    generate_legal_moves();
    std::vector<Move> moves;
    std::copy_if(move_list.current().begin(), move_list.current().end(), std::back_inserter(moves),
                 [](const Move& move) { return kind_of(move.captured) != KING; });
    return moves;
}

bool is_checkmate() {
    return in_check(position.side_to_move) && legal_moves().empty();
}

// How often the current position has stood on the board before.
static int earlier_occurrences() {
    const UndoRecord& here = position.current();
    int count = 0;
    for (int back = 2; back <= here.halfmove_clock && back <= position.game_ply; back += 2)
        count += position.back(back).key == here.key ? 1 : 0;
    return count;
}

bool is_drawn_by_rules() {
    constexpr int TWICE = 2;
    return (position.current().halfmove_clock >= FIFTY_MOVES && !is_checkmate()) ||
           earlier_occurrences() >= TWICE || is_material_insufficient();
}

bool is_repetition() {
    return earlier_occurrences() > 0;
}

}  // namespace quelmar
