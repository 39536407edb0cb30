// Sets of playing squares in one word, so that a question about many squares takes one operation. Bit i
// stands for the square of index i: a1 = 0, h1 = 7, ... h8 = 63. PieceSets keeps the men of a position as
// such sets.
#pragma once

#include "board/types.h"

#include <bit>

namespace quelmar {

using SquareSet = u64;

inline constexpr SquareSet NO_SQUARES = 0;
inline constexpr SquareSet FILE_A_SQUARES = 0x0101010101010101, FILE_H_SQUARES = FILE_A_SQUARES << 7;

// The set of one square, by square; empty off the board, where no set reaches.
inline constexpr auto set_of_square = [] {
    Table<SquareSet, BOARD_SIZE> table{};
    for (int i = 0; i < 64; ++i)
        table[square_of_index[i]] = SquareSet{1} << i;
    return table;
}();

constexpr SquareSet set_of(Square square) {
    return set_of_square[square];
}
// A playing square's bit, 0..63, and the way back.
constexpr int index_of(Square square) {
    return index_of_square[square];
}
constexpr Square square_of(int index) {
    return square_of_index[index];
}
// False for every square off the board.
constexpr bool contains(SquareSet set, Square square) {
    return (set & set_of(square)) != 0;
}

// How many squares the set has. Written out, since the library's function is a call wherever the processor
// need not have the instruction; where it has, compilers know this form.
constexpr int size_of(SquareSet set) {
    set -= set >> 1 & 0x5555555555555555;
    set = (set & 0x3333333333333333) + (set >> 2 & 0x3333333333333333);
    set = (set + (set >> 4)) & 0x0F0F0F0F0F0F0F0F;
    return static_cast<int>(set * 0x0101010101010101 >> 56);
}

// Whether the set has one square and no other.
constexpr bool is_single(SquareSet set) {
    return set != 0 && (set & (set - 1)) == 0;
}

// Every square of the set one step on, as `Us` looks at the board; what leaves the board is dropped.
template <Side Us> constexpr SquareSet forward(SquareSet set) {
    return Us == WHITE ? set << 8 : set >> 8;
}
// All squares of the files in `files`, bit f for file f.
constexpr SquareSet on_files(int files) {
    return FILE_A_SQUARES * static_cast<SquareSet>(files);
}
// The rank on which the men of `Us` begin.
template <Side Us> constexpr SquareSet first_rank() {
    return Us == WHITE ? SquareSet{0xFF} : SquareSet{0xFF} << 56;
}
// Every square before one of the set, as `Us` looks at the board, up to the last rank.
template <Side Us> constexpr SquareSet all_before(SquareSet set) {
    set = forward<Us>(set);
    set |= forward<Us>(set);
    set |= Us == WHITE ? set << 16 : set >> 16;
    return set | (Us == WHITE ? set << 32 : set >> 32);
}
constexpr SquareSet to_west(SquareSet set) {
    return (set & ~FILE_A_SQUARES) >> 1;
}
constexpr SquareSet to_east(SquareSet set) {
    return (set & ~FILE_H_SQUARES) << 1;
}

// For loops over the indices 0..63 of a set, ascending: for (int index : indices_of(set)).
class IndicesOf {
public:
    struct Iterator {
        SquareSet left;
        constexpr int operator*() const { return std::countr_zero(left); }
        constexpr Iterator& operator++() {
            left &= left - 1;
            return *this;
        }
        constexpr bool operator!=(const Iterator& other) const { return left != other.left; }
    };
    constexpr explicit IndicesOf(SquareSet set) : set_(set) {}
    constexpr Iterator begin() const { return {set_}; }
    constexpr Iterator end() const { return {NO_SQUARES}; }

private:
    SquareSet set_;
};

constexpr IndicesOf indices_of(SquareSet set) {
    return IndicesOf(set);
}

// Where the men stand, as sets: one per man and one per side, kept by make and unmake beside the board.
class PieceSets {
public:
    // The squares of a man, 1..12, or of all men of a side.
    SquareSet of_man(Piece man) const { return men_[man]; }
    SquareSet of_side(Side side) const { return sides_[side]; }
    SquareSet occupied() const { return sides_[WHITE] | sides_[BLACK]; }

    // Puts a man on each of `squares`, or takes it away where it stands.
    void toggle(Piece man, SquareSet squares) {
        men_[man] ^= squares;
        sides_[side_of(man)] ^= squares;
    }

    bool operator==(const PieceSets&) const = default;

private:
    Table<SquareSet, OFF_BOARD> men_{};
    Table<SquareSet, 2> sides_{};
};

}  // namespace quelmar
