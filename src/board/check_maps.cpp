#include "board/check_maps.h"

#include "board/position.h"
#include "eval/attacks.h"

#include <algorithm>

namespace quelmar {

std::array<u8, BOARD_SIZE> check_square_map;
std::array<u8, BOARD_SIZE> discovery_map;

namespace {

// The rows that playing squares lie in, as the maps are cleared.
constexpr int ROWS_BEGIN = 64, ROWS_END = 192;

u8& check_bits(Square square) {
    return check_square_map[static_cast<std::size_t>(square)];
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
        discovery_map[static_cast<std::size_t>(blocker)] = static_cast<u8>(std::abs(step));
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

}  // namespace quelmar
