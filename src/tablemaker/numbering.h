// The maker's own numbering of an ending's positions: loose, but quick to compute and to step through.
//
// number = ((pair * radix + square of man 2) * radix + square of man 3) ... where `pair` numbers the places
// of the two kings and the radix is 64, or 48 for a pawn. Board symmetry brings White's king to files a-d,
// and without pawns further into the triangle a1-d1-d4; with it on the diagonal a1-h8, Black's king stands on
// or below that line. A position with both kings on that line and its reflection are two numbers: whoever
// writes the value of one must write the other ("two-faced").
//
// Equal men are kept in increasing order of their squares; the other orders are numbers of no position.
#pragma once

#include "tablemaker/men.h"

#include <array>
#include <vector>

namespace quelmar::tablemaker {

inline constexpr u32 NOWHERE = 0xffffffff;

class Numbering {
public:
    explicit Numbering(const Men& men);

    u32 size() const { return size_; }
    const Men& men() const { return men_; }

    // Squares of a number below size(); false if two men share a square or equal men are out of order.
    bool squares_of(u32 number, Squares& squares) const;

    // Turns the board so that the position is one of the numbered ones and returns its number; NOWHERE if the
    // kings touch or coincide. No two men may share a square.
    u32 normalise(Squares& squares) const;

    // Number after one man of a normalised position went to a free square; NOWHERE if the kings then touch.
    u32 after(u32 number, const Squares& squares, std::size_t man, int to) const;

    // Whether the normalised position and its reflection in the diagonal are different numbers.
    bool two_faced(const Squares& squares) const;
    // Reflects in the diagonal and sorts; returns the number. Only for two-faced positions.
    u32 reflect(Squares& squares) const;

private:
    struct KingPair {
        u16 pair = NO_PAIR;
        u8 turn = 0;
    };
    static constexpr u16 NO_PAIR = 0xffff;

    void number_king_pairs();
    void find_turns();
    bool canonical(int white_king, int black_king) const;
    u32 number_in_place(Squares& squares, u32 pair) const;

    Men men_;
    bool pawns_;
    u32 size_ = 0;
    std::array<u32, MAX_MEN> stride_{}, radix_{};
    std::array<u8, MAX_MEN> first_square_{};
    std::array<bool, MAX_MEN> same_as_before_{}, has_twin_{};
    std::vector<std::array<u8, 2>> kings_;  // of each pair
    Table<Table<KingPair, 64>, 64> pair_of_{};
};

}  // namespace quelmar::tablemaker
