// What the numbering of positions is computed from: where a man may stand relative to the king it faces, the
// numbers of the pairs of king squares, and how many positions come before each pair.
//
// The side to move cannot have been left a king to capture, so its men never touch the other king: that is
// what "placement" counts. Only contact checks are left out; a check from a distance keeps its number.
// Squares are numbered a1 = 0, b1 = 1, ... h8 = 63.
#pragma once

#include "board/types.h"
#include "tablebase/table_memory.h"

namespace quelmar {

constexpr int file_of_index(int square) {
    return square & 7;
}
constexpr int rank_of_index(int square) {
    return square >> 3;
}

// Kinds of placement: 1..5 are the kinds of men, PAWN..QUEEN, that must not touch the king they face.
inline constexpr int FREE_PAWN = 0;  // a pawn that may give check: its side is not on move
inline constexpr int PLACEMENT_KINDS = 6;
inline constexpr u8 NOT_PLACEABLE = 255;

inline constexpr u16 INVALID_KING_PAIR = 4000;
inline constexpr int PAWNLESS_KING_PAIRS = 462, PAWN_KING_PAIRS = 1806;

template <typename T> using BySquares = Table<Table<T, 64>, 64>;

// Two schemes of pairs: without pawns the reference king stands in the triangle a1-d1-d4, with pawns on the
// files a-d.
enum class Scheme { PAWNLESS, PAWNS };

// For one to three placement kinds of one side: positions before each king pair, and in all.
struct BaseTable {
    TableVector<u32> before;  // indexed by the number of the pair
    u32 total = 0;
};

struct IndexTables {
    // [kind][faced king][square]: the square's number among those the kind may stand on, or NOT_PLACEABLE.
    Table<BySquares<u8>, PLACEMENT_KINDS> placement;
    Table<Table<u8, 64>, PLACEMENT_KINDS> placement_count;  // [kind][faced king]
    Table<BySquares<u16>, 2> king_pairs;                    // [scheme][reference king][other king]

    bool can_stand(int kind, int faced_king, int square) const;
    // Squares for a man of `kind` that faces `faced_king` while its own king stands on `own_king`.
    int room(int kind, int faced_king, int own_king) const;
};

// The kinds of men that are placed together, in non-increasing order; `count` is 1..3.
struct PlacedKinds {
    Table<u8, 3> kind{};
    u8 count = 0;
};

// Builds everything on the first call. The other two functions must not be called before.
void build_placement_tables();
const IndexTables& index_tables();
// A combination with a pawn exists in the pawn scheme only.
const BaseTable& base_table(const PlacedKinds& kinds, Scheme scheme);

// n over k for k = 0..3, the number of ways to choose equal men.
constexpr u64 choose(u64 n, int k) {
    u64 result = 1;
    for (u64 i = 0; i < static_cast<u64>(k); ++i)
        result = n >= i ? result * (n - i) : 0;
    return k == 3 ? result / 6 : k == 2 ? result / 2 : result;
}

}  // namespace quelmar
