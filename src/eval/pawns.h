// What depends on the placement of the pawns alone, classified once per pawn structure and kept in a hash
// table under the pawn key. For eval/, but for forget_pawn_structures.
#pragma once

#include "board/position.h"
#include "board/types.h"

namespace quelmar {

// State of the centre, from the d- and e-pawns.
enum CentreType : i8 {
    CENTRE_OPEN = 0,       // at most one of the four half-files is occupied
    CENTRE_HALF_OPEN = 1,  // two or three of them, nothing blocked
    CENTRE_CLOSED = 2,     // all four, both files blocked
    CENTRE_BLOCKED = 3,    // a file is blocked
    CENTRE_LEVER = 4,      // pawns can capture each other
    CENTRE_FULL = 5        // all four, nothing blocked
};
inline constexpr int CENTRE_TYPES = 6;

// Squares in the order of the piece list, 0 ends a list early. What does not fit is not listed, so that the
// order of the men is part of the result.
using ShortList = Table<u8, 4>;
using PassedList = Table<u8, 8>;

struct SidePawns {
    ShortList isolated{};       // without an own pawn in front on their file
    ShortList doubled{};        // with an own pawn behind on their file
    ShortList isolated_rear{};  // isolated, with an own pawn in front on their file
    ShortList backward{};
    PassedList passed{};
    u8 pawn_files = 0;        // bit f: a pawn on file f
    i8 storm_king_side = 0;   // against a king on files f to h
    i8 storm_queen_side = 0;  // against a king on files a to d
    i8 lowest_file = 0;       // 8 and -1 without pawns
    i8 highest_file = 0;
    i8 structure_bonus = 0;  // chains and duos
    u8 light_pawns = 0, dark_pawns = 0;
    u8 central_light = 0, central_dark = 0;  // of those, on files c to f
    u8 weak_count_penalty = 0;
    i16 structure = 0;  // what of the structure's score depends on the pawns alone
    // The squares of three lists, for those who do not ask in which order they stand.
    SquareSet isolated_set = NO_SQUARES, backward_set = NO_SQUARES, passed_set = NO_SQUARES;
};

struct PawnEntry {
    u32 key = 0;
    CentreType structure_type = CENTRE_OPEN;
    Table<SidePawns, 2> sides;

    const SidePawns& of(Side side) const { return sides[side]; }
    SidePawns& of(Side side) { return sides[side]; }
};

// The entry of the current position's pawns, classified now if the table does not hold it. Stays valid until
// the next call.
const PawnEntry& pawn_entry();

// Forgets the pawn structures met so far, as in a process that has just started.
void forget_pawn_structures();

// Where pawns stand, as a side sees it.

template <Side Us> bool own_pawn_on(Square square) {
    return position.at(square) == Facing<Us>::OUR_PAWN;
}
template <Side Us> bool enemy_pawn_on(Square square) {
    return position.at(square) == Facing<Us>::THEIR_PAWN;
}

// Whether an enemy pawn attacks the square from in front.
template <Side Us> bool attacked_by_enemy_pawn(Square square) {
    return enemy_pawn_on<Us>(square + Facing<Us>::FORWARD - 1) ||
           enemy_pawn_on<Us>(square + Facing<Us>::FORWARD + 1);
}

}  // namespace quelmar
