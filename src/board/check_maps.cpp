#include "board/check_maps.h"

#include "board/attacks.h"
#include "board/position.h"
#include "board/square_tables.h"

#include <algorithm>

namespace quelmar {

Table<u8, BOARD_SIZE> check_square_map;
Table<u8, BOARD_SIZE> discovery_map;

namespace {

// The rows that playing squares lie in, as the maps are cleared.
constexpr int ROWS_BEGIN = 64, ROWS_END = 192;

u8& check_bits(Square square) {
    return check_square_map[square];
}

// Walks one line away from the enemy king: marks the squares up to the first man, or finds the one own man
// that stands between the king and an own slider of this line.
template <Side Us> void scan_line(Square king, int step, Piece slider, u8 bits) {
    Square square = king + step;
    for (; position.at(square) == EMPTY; square += step)
        check_bits(square) |= bits;
    const Piece first = position.at(square);
    if (first == OFF_BOARD)
        return;
    if (!is_man_of(first, Us)) {
        check_bits(square) |= bits;
        return;
    }
    const Square blocker = square;
    do
        square += step;
    while (position.at(square) == EMPTY);
    const Piece second = position.at(square);
    if (second == slider || second == man_of(Us, QUEEN))
        discovery_map[blocker] = static_cast<u8>(std::abs(step));
}

template <Side Us> void build_for() {
    const Square king = position.king_square(other_side(Us));
    check_bits(king - Facing<Us>::offset(15)) |= CHECK_BY_PAWN;
    check_bits(king - Facing<Us>::offset(17)) |= CHECK_BY_PAWN;
    for (int offset : knight_offsets)
        check_bits(king + offset) |= CHECK_BY_KNIGHT;
    for (int step : bishop_directions)
        scan_line<Us>(king, step, man_of(Us, BISHOP), CHECK_BY_BISHOP | CHECK_BY_QUEEN);
    for (int step : rook_directions)
        scan_line<Us>(king, step, man_of(Us, ROOK), CHECK_BY_ROOK | CHECK_BY_QUEEN);
}

}  // namespace

void build_check_maps() {
    std::fill(check_square_map.begin() + ROWS_BEGIN, check_square_map.begin() + ROWS_END, u8{0});
    std::fill(discovery_map.begin() + ROWS_BEGIN, discovery_map.begin() + ROWS_END, u8{0});
    if (position.side_to_move == WHITE)
        build_for<WHITE>();
    else
        build_for<BLACK>();
}

namespace {

bool slides_along(Piece kind, int step) {
    return kind == QUEEN || kind == (is_diagonal(step) ? BISHOP : ROOK);
}

// The first square with a man on it, or off the board, from `start` along `step`.
Square first_man(Square start, int step) {
    Square square = start + step;
    while (position.at(square) == EMPTY)
        square += step;
    return square;
}

// Whether the moved man attacks the king from its destination.
bool checks_directly(const Move& move, Square king) {
    const Piece man = move.piece, kind = kind_of(man);
    const Square square = move.to;
    if (kind == PAWN) {
        const int forward = forward_of(side_of(man));
        return square + forward - 1 == king || square + forward + 1 == king;
    }
    if (kind == KNIGHT)
        return knight_direction[square - king] != 0;
    if (kind == KING)
        return false;
    const int step = line_step[king - square];
    if (step == 0 || !slides_along(kind, step))
        return false;
    Square met = first_man(square, step);
    if (met == move.from)  // which the move has emptied
        met = first_man(met, step);
    return met == king;
}

// The man on `from` shields the king from one of our sliders and leaves the line.
bool uncovers(const Move& move, Square king) {
    const int step = line_step[move.from - king];
    if (step == 0 || line_step[move.to - king] == step || first_man(king, step) != move.from)
        return false;
    const Piece behind = position.at(first_man(move.from, step));
    return is_man_of(behind, side_of(move.piece)) && slides_along(kind_of(behind), step);
}

}  // namespace

CheckKind check_kind(const Move& move) {
    const Square king = position.king_square(other_side(position.side_to_move));
    if (checks_directly(move, king))
        return CheckKind::DIRECT;
    return uncovers(move, king) ? CheckKind::DISCOVERED : CheckKind::NONE;
}

}  // namespace quelmar
