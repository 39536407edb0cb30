// The search returns bounds, not lines, so the variation is read from the table: entry by entry, each move
// leading to the next key. Generations play no part. An entry may belong to another position with the same
// buckets of keys, or to one with other castling rights, so each move is looked up among the legal ones; that
// also gives it the check flag that a packed move does not return.
#include "search/principal_variation.h"

#include "board/attacks.h"
#include "board/game_result.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "search/search_limits.h"
#include "search/search_reports.h"
#include "search/search_state.h"
#include "search/transposition.h"

#include <algorithm>
#include <iterator>

namespace quelmar {

namespace {

Move legal_move_of(PackedMove packed) {
    generate_legal_moves();
    const auto moves = move_list.current();
    const auto found = std::find_if(moves.begin(), moves.end(), [packed](const Move& move) {
        return same_packed_move(pack_move(move), packed);
    });
    return found != moves.end() ? *found : Move{};
}

// Whether the position stood on the board before, at the search's root or since.
bool repeats_since_root() {
    for (int back = 2; back <= position.search_ply; back += 2) {
        if (position.back(back).key == position.current().key)
            return true;
    }
    return false;
}

}  // namespace

int walk_table(std::span<Move> line) {
    const PieceOrderGuard guard;
    std::size_t length = 0;
    while (length < line.size()) {
        const TTEntry* entry = tt_probe(position.current().key);
        const Move move = entry != nullptr && entry->move != 0 ? legal_move_of(entry->move) : Move{};
        if (move.from == 0)
            break;
        line[length] = move;
        make_move(&line[length]);
        ++length;
        if (repeats_since_root())
            break;
    }
    for (std::size_t i = length; i > 0; --i)
        unmake_move(&line[i - 1]);
    return static_cast<int>(length);
}

Move first_playable_move() {
    const PieceOrderGuard guard;
    generate_root_moves();
    for (const Move& move : move_list.current()) {
        if (move.captured == EMPTY || kind_of(move.captured) != KING)
            return move;
    }
    return Move{};
}

void read_principal_variation() {
    search_state.pv_length = walk_table(std::span(search_state.pv).first(MAX_PV));
    if (search_state.pv_length == 0)
        search_state.pv[0] = Move{};
}

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
    unmake_played_move();
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

void LinePlayer::poll_input() const {
    position.search_ply = search_ply_then_ + static_cast<int>(moves_.size());
    search_reports.poll_input();
    position.search_ply = 0;
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
