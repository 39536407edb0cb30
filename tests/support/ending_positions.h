// All positions of an ending, enumerated without regard to how they are numbered: the tables' numbering is
// checked against this.
#pragma once

#include "tablebase/catalogue.h"
#include "tablebase/index.h"
#include "tablemaker/men.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace quelmar::testing {

struct TablePosition {
    Table<SideSquares, 2> side{};  // of the first and the second group of the name
    int ep_square = NO_EP_SQUARE;
};

// a1 = 0 ... h8 = 63.
inline int file64(int square) {
    return square & 7;
}
inline int rank64(int square) {
    return square >> 3;
}
inline bool adjacent(int a, int b) {
    return std::max(std::abs(file64(a) - file64(b)), std::abs(rank64(a) - rank64(b))) <= 1;
}

inline u64 occupied_squares(const TablePosition& position) {
    u64 occupied = 0;
    for (const SideSquares& men : position.side) {
        occupied |= u64{1} << men.king;
        for (int row = 0; row < 5; ++row)
            for (int i = 0; i < men.count[row]; ++i)
                occupied |= u64{1} << men.men[row][i];
    }
    return occupied;
}

// The side that is not to move is in check.
inline bool king_could_be_taken(const TablePosition& position, Side to_move) {
    const SideSquares& mover = position.side[to_move];
    const u64 king = tablemaker::bit(position.side[other_side(to_move)].king);
    const u64 occupied = occupied_squares(position);
    for (int row = 0; row < 5; ++row)
        for (int i = 0; i < mover.count[row]; ++i) {
            const int square = mover.men[row][i];
            const u64 attacked = row == 0 ? tablemaker::pawn_attacks(to_move, square)
                                          : tablemaker::attacks(row + 1, square, occupied);
            if ((attacked & king) != 0)
                return true;
        }
    return false;
}

// Squares that a pawn of the side to move could capture on after a double step, at most one per pawn.
inline std::vector<int> en_passant_squares(const TablePosition& position, Side to_move) {
    const SideSquares& mover = position.side[to_move];
    const SideSquares& waiting = position.side[other_side(to_move)];
    const u64 occupied = occupied_squares(position);
    const int forward = to_move == WHITE ? 8 : -8, rank = to_move == WHITE ? 4 : 3;
    const auto stands_beside = [rank](int pawn, int stepped) {
        return rank64(pawn) == rank && std::abs(pawn - stepped) == 1;
    };
    std::vector<int> targets;
    for (int i = 0; i < waiting.count[0]; ++i) {
        const int stepped = waiting.men[0][i], target = stepped + forward;
        if (rank64(stepped) != rank || (occupied >> target & 1) || (occupied >> (target + forward) & 1))
            continue;
        if (std::any_of(mover.men[0].begin(), mover.men[0].begin() + mover.count[0],
                        [&](int pawn) { return stands_beside(pawn, stepped); }))
            targets.push_back(target);
    }
    return targets;
}

struct Man {
    int group, row;
};

inline std::vector<Man> men_of(int number) {
    std::vector<Man> men;
    for (int group = 0; group < 2; ++group)
        for (int kind = PAWN; kind <= QUEEN; ++kind)
            men.insert(men.end(), ending(number).men[group][kind], {group, kind - 1});
    return men;
}

// Calls `visit` with every position of these men beside the kings that `position` holds; no two men share a
// square, and equal men come in ascending order. Positions with the other side in check are left out.
template <typename Visit>
void place_men(TablePosition& position, const std::vector<Man>& men, std::size_t next, Side to_move,
               Visit&& visit) {
    if (next == men.size()) {
        if (king_could_be_taken(position, to_move))
            return;
        visit(position);
        for (const int target : en_passant_squares(position, to_move)) {
            position.ep_square = target;
            visit(position);
        }
        position.ep_square = NO_EP_SQUARE;
        return;
    }
    const auto [group, row] = men[next];
    SideSquares& side = position.side[group];
    const u64 occupied = occupied_squares(position);
    const int placed = side.count[row];
    const int first = placed > 0 ? side.men[row][placed - 1] + 1 : row == 0 ? 8 : 0;
    for (int square = first; square < (row == 0 ? 56 : 64); ++square) {
        if (occupied >> square & 1)
            continue;
        side.men[row][placed] = static_cast<u8>(square);
        ++side.count[row];
        place_men(position, men, next + 1, to_move, visit);
        --side.count[row];
    }
}

// King squares that the mirror images of an ending have in common, {side to move, other side}.
inline bool is_canonical_pair(int mover, int waiting, bool pawns) {
    if (adjacent(mover, waiting) || file64(mover) > 3)
        return false;
    if (pawns || rank64(mover) < file64(mover))
        return true;
    return rank64(mover) == file64(mover) && rank64(waiting) <= file64(waiting);
}

inline TablePosition with_kings(Side to_move, int mover, int waiting) {
    TablePosition position;
    position.side[to_move].king = static_cast<u8>(mover);
    position.side[other_side(to_move)].king = static_cast<u8>(waiting);
    return position;
}

inline u32 index_of(int number, Side to_move, const TablePosition& position) {
    return table_index(number, to_move, position.side[0], position.side[1], position.ep_square, 0);
}

// Visits every position of the ending whose kings stand on a canonical pair.
template <typename Visit> void for_each_position(int number, Side to_move, Visit&& visit) {
    const std::vector<Man> men = men_of(number);
    for (int mover = 0; mover < 64; ++mover)
        for (int waiting = 0; waiting < 64; ++waiting)
            if (is_canonical_pair(mover, waiting, ending(number).has_pawns())) {
                TablePosition position = with_kings(to_move, mover, waiting);
                place_men(position, men, 0, to_move, visit);
            }
}

}  // namespace quelmar::testing
