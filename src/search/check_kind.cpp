#include "search/check_kind.h"

#include "board/position.h"
#include "eval/square_tables.h"

namespace quelmar {

namespace {

bool is_diagonal(int step) {
    return step != 1 && step != -1 && step != 16 && step != -16;
}

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
        const int forward = side_of(man) == WHITE ? 16 : -16;
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

int check_kind(const Move& move) {
    const Square king = position.king_square(other_side(position.side_to_move));
    if (checks_directly(move, king))
        return DIRECT_CHECK;
    return uncovers(move, king) ? DISCOVERED_CHECK : NO_CHECK;
}

}  // namespace quelmar
