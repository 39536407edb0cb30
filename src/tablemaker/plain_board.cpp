#include "tablemaker/plain_board.h"

#include <utility>

namespace quelmar::tablemaker {

namespace {

constexpr Direction KNIGHT_JUMPS[] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
constexpr Direction LINES[] = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}, {1, 1}, {1, -1}, {-1, -1}, {-1, 1}};

}  // namespace

std::span<const Direction> directions(Piece kind) {
    switch (kind) {
    case KNIGHT:
        return KNIGHT_JUMPS;
    case BISHOP:
        return std::span(LINES).last(4);
    case ROOK:
        return std::span(LINES).first(4);
    default:
        return LINES;
    }
}

namespace {

// The first square that is not empty from here on; -1 for none.
int first_man(const Board& board, int from, Direction by) {
    int square = step(from, by);
    while (square >= 0 && at(board, square) == EMPTY)
        square = step(square, by);
    return square;
}

}  // namespace

bool attacked(const Board& board, int square, Side by) {
    for (const Piece slider : {ROOK, BISHOP})
        for (const Direction direction : directions(slider)) {
            const int from = first_man(board, square, direction);
            if (from >= 0 && (at(board, from) == man_of(by, slider) || at(board, from) == man_of(by, QUEEN)))
                return true;
        }
    for (const Piece leaper : {KNIGHT, KING})
        for (const Direction direction : directions(leaper)) {
            const int from = step(square, direction);
            if (from >= 0 && at(board, from) == man_of(by, leaper))
                return true;
        }
    for (const int side : {-1, 1}) {
        const int from = step(square, {side, -up(by)});
        if (from >= 0 && at(board, from) == man_of(by, PAWN))
            return true;
    }
    return false;
}

bool king_attacked(const Board& board, Side side) {
    return attacked(board, board.king[side], other_side(side));
}

Board played(const Board& board, int from, int to, Piece becomes) {
    Board next = board;
    put(next, to, becomes);
    put(next, from, EMPTY);
    next.to_move = other_side(board.to_move);
    next.ep_square = NO_EP_SQUARE;
    return next;
}

bool pawn_stands_ready(const Board& board, int passed) {
    for (const int side : {-1, 1}) {
        const int from = step(passed, {side, -up(board.to_move)});
        if (from >= 0 && at(board, from) == man_of(board.to_move, PAWN))
            return true;
    }
    return false;
}

std::string fen(const Board& board) {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        for (int file = 0; file < 8; ++file) {
            const Piece man = at(board, 8 * rank + file);
            if (man != EMPTY && empty > 0)
                text += std::to_string(std::exchange(empty, 0));
            if (man == EMPTY)
                ++empty;
            else
                text += side_of(man) == WHITE ? UPPER_LETTERS[man] : LOWER_LETTERS[man];
        }
        if (empty > 0)
            text += std::to_string(empty);
        text += rank > 0 ? "/" : "";
    }
    text += board.to_move == WHITE ? " w - " : " b - ";
    if (board.ep_square == NO_EP_SQUARE)
        return text + "-";
    return text + static_cast<char>('a' + board.ep_square % 8) + static_cast<char>('1' + board.ep_square / 8);
}

}  // namespace quelmar::tablemaker
