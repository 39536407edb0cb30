// A board of 64 squares with slow, obvious move generation, for checking what the quick code made.
#pragma once

#include "tablebase/index.h"

#include <span>
#include <string>

namespace quelmar::tablemaker {

// Men by square, a plain board without any cleverness.
struct Board {
    Table<u8, 64> piece{};  // EMPTY or a man
    Table<int, 2> king{};
    Side to_move = WHITE;
    int ep_square = NO_EP_SQUARE;
};

struct Direction {
    int file, rank;
};

// The square one step away, -1 beyond the edge.
inline int step(int square, Direction by) {
    const int file = square % 8 + by.file, rank = square / 8 + by.rank;
    return file < 0 || file > 7 || rank < 0 || rank > 7 ? -1 : 8 * rank + file;
}

inline Piece at(const Board& board, int square) {
    return board.piece[square];
}

// Puts a man, or EMPTY, on a square.
inline void put(Board& board, int square, Piece man) {
    board.piece[square] = static_cast<u8>(man);
    if (man != EMPTY && kind_of(man) == KING)
        board.king[side_of(man)] = square;
}

// The steps of a kind KNIGHT..KING.
std::span<const Direction> directions(Piece kind);

constexpr bool leaps(Piece kind) {
    return kind == KNIGHT || kind == KING;
}
// The direction in which a side's pawns go, in ranks.
constexpr int up(Side side) {
    return side == WHITE ? 1 : -1;
}

bool attacked(const Board& board, int square, Side by);
bool king_attacked(const Board& board, Side side);

// The board after a man went from one square to the other and became this.
Board played(const Board& board, int from, int to, Piece becomes);

// Whether a pawn of the side to move could take on the square that a pawn has just passed.
bool pawn_stands_ready(const Board& board, int passed);

// The position in FEN, without the counters.
std::string fen(const Board& board);

// Calls f(to) for each square that the piece (no pawn) attacks.
template <typename F> void for_each_attacked(const Board& board, int from, Piece kind, const F& f) {
    for (const Direction by : directions(kind))
        for (int to = step(from, by); to >= 0; to = step(to, by)) {
            f(to);
            if (leaps(kind) || at(board, to) != EMPTY)
                break;
        }
}

template <typename F> void for_each_pawn_arrival(const Board& board, int from, int to, const F& f) {
    if (to / 8 != 0 && to / 8 != 7) {
        f(played(board, from, to, at(board, from)));
        return;
    }
    for (Piece kind = KNIGHT; kind <= QUEEN; ++kind)
        f(played(board, from, to, man_of(board.to_move, kind)));
}

template <typename F> void for_each_pawn_push(const Board& board, int from, const F& f) {
    const int one = step(from, {0, up(board.to_move)});
    if (at(board, one) != EMPTY)
        return;
    for_each_pawn_arrival(board, from, one, f);
    const int two = step(one, {0, up(board.to_move)});
    if (from / 8 != (board.to_move == WHITE ? 1 : 6) || at(board, two) != EMPTY)
        return;
    Board next = played(board, from, two, at(board, from));
    if (pawn_stands_ready(next, one))
        next.ep_square = one;
    f(next);
}

template <typename F> void for_each_pawn_move(const Board& board, int from, const F& f) {
    for_each_pawn_push(board, from, f);
    for (const int side : {-1, 1}) {
        const int to = step(from, {side, up(board.to_move)});
        if (to < 0)
            continue;
        if (is_man_of(at(board, to), other_side(board.to_move)))
            for_each_pawn_arrival(board, from, to, f);
        if (to == board.ep_square) {
            Board next = played(board, from, to, at(board, from));
            put(next, step(to, {0, -up(board.to_move)}), EMPTY);
            f(next);
        }
    }
}

// Calls f(board after the move) for each legal move.
template <typename F> void for_each_move(const Board& board, const F& f) {
    const auto if_legal = [&](const Board& next) {
        if (!king_attacked(next, board.to_move))
            f(next);
    };
    for (int from = 0; from < 64; ++from) {
        const Piece man = at(board, from);
        if (!is_man_of(man, board.to_move))
            continue;
        if (is_pawn(man)) {
            for_each_pawn_move(board, from, if_legal);
            continue;
        }
        for_each_attacked(board, from, kind_of(man), [&](int to) {
            if (!is_man_of(at(board, to), board.to_move))
                if_legal(played(board, from, to, man));
        });
    }
}

}  // namespace quelmar::tablemaker
