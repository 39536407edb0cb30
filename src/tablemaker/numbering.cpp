#include "tablemaker/numbering.h"

#include <utility>

namespace quelmar::tablemaker {

namespace {

constexpr int FLIP_FILES = 1, FLIP_RANKS = 2, TRANSPOSE = 4, TURNS = 8;

constexpr int transposed(int square) {
    return square % 8 * 8 + square / 8;
}

constexpr auto TURNED = [] {
    Table<Table<u8, 64>, TURNS> table{};
    for (int turn = 0; turn < TURNS; ++turn)
        for (int square = 0; square < 64; ++square) {
            int to = square ^ ((turn & FLIP_FILES) != 0 ? 7 : 0) ^ ((turn & FLIP_RANKS) != 0 ? 56 : 0);
            if ((turn & TRANSPOSE) != 0)
                to = transposed(to);
            table[turn][square] = static_cast<u8>(to);
        }
    return table;
}();

bool on_diagonal(int square) {
    return square % 9 == 0;
}

bool kings_apart(int a, int b) {
    return a != b && (attacks(KING, a, 0) & bit(b)) == 0;
}

}  // namespace

Numbering::Numbering(const Men& men) : men_(men), pawns_(men.has_pawn(WHITE) || men.has_pawn(BLACK)) {
    number_king_pairs();
    find_turns();
    u32 stride = 1;
    for (std::size_t i = men.count - 1; i >= 2; --i) {
        const bool pawn = men.man[i].kind == PAWN;
        radix_[i] = pawn ? 48 : 64;
        first_square_[i] = pawn ? 8 : 0;
        stride_[i] = stride;
        stride *= radix_[i];
        same_as_before_[i] = i > 2 && men.man[i] == men.man[i - 1];
        has_twin_[i] = same_as_before_[i] || (i + 1 < men.count && men.man[i] == men.man[i + 1]);
    }
    stride_[0] = stride;
    size_ = stride * static_cast<u32>(kings_.size());
}

bool Numbering::canonical(int white_king, int black_king) const {
    const int file = white_king % 8, rank = white_king / 8;
    if (file > 3)
        return false;
    if (pawns_)
        return true;
    return rank < file || (rank == file && black_king / 8 <= black_king % 8);
}

void Numbering::number_king_pairs() {
    for (int white_king = 0; white_king < 64; ++white_king)
        for (int black_king = 0; black_king < 64; ++black_king) {
            if (!kings_apart(white_king, black_king) || !canonical(white_king, black_king))
                continue;
            pair_of_[white_king][black_king].pair = static_cast<u16>(kings_.size());
            kings_.push_back({static_cast<u8>(white_king), static_cast<u8>(black_king)});
        }
}

void Numbering::find_turns() {
    for (int white_king = 0; white_king < 64; ++white_king)
        for (int black_king = 0; black_king < 64; ++black_king) {
            KingPair& entry = pair_of_[white_king][black_king];
            for (u8 turn = 1; turn < (pawns_ ? FLIP_FILES + 1 : TURNS) && entry.pair == NO_PAIR; ++turn) {
                const int white_to = TURNED[turn][white_king], black_to = TURNED[turn][black_king];
                if (canonical(white_to, black_to))
                    entry = {pair_of_[white_to][black_to].pair, turn};
            }
        }
}

bool Numbering::squares_of(u32 number, Squares& squares) const {
    const auto& kings = kings_[number / stride_[0]];
    squares[0] = kings[0];
    squares[1] = kings[1];
    SquareSet taken = bit(kings[0]) | bit(kings[1]);
    u32 rest = number % stride_[0];
    for (std::size_t i = men_.count - 1; i >= 2; --i) {
        const u32 square = rest % radix_[i] + first_square_[i];
        rest /= radix_[i];
        squares[i] = static_cast<u8>(square);
        if ((taken & bit(squares[i])) != 0 ||
            (i + 1 < men_.count && same_as_before_[i + 1] && squares[i] > squares[i + 1]))
            return false;
        taken |= bit(squares[i]);
    }
    return true;
}

u32 Numbering::number_in_place(Squares& squares, u32 pair) const {
    u32 number = pair * stride_[0];
    for (std::size_t i = 2; i < men_.count; ++i)
        for (std::size_t j = i; same_as_before_[j] && squares[j] < squares[j - 1]; --j)
            std::swap(squares[j], squares[j - 1]);
    for (std::size_t i = 2; i < men_.count; ++i)
        number += static_cast<u32>(squares[i] - first_square_[i]) * stride_[i];
    return number;
}

u32 Numbering::normalise(Squares& squares) const {
    const KingPair entry = pair_of_[squares[0]][squares[1]];
    if (entry.pair == NO_PAIR)
        return NOWHERE;
    for (std::size_t i = 0; i < men_.count; ++i)
        squares[i] = TURNED[entry.turn][squares[i]];
    return number_in_place(squares, entry.pair);
}

u32 Numbering::after(u32 number, const Squares& squares, std::size_t man, int to) const {
    if (man >= 2 && !has_twin_[man])
        return number + static_cast<u32>(to - squares[man]) * stride_[man];
    Squares moved = squares;
    moved[man] = static_cast<u8>(to);
    return normalise(moved);
}

bool Numbering::two_faced(const Squares& squares) const {
    return !pawns_ && on_diagonal(squares[0]) && on_diagonal(squares[1]);
}

u32 Numbering::reflect(Squares& squares) const {
    for (std::size_t i = 2; i < men_.count; ++i)
        squares[i] = TURNED[TRANSPOSE][squares[i]];
    return number_in_place(squares, pair_of_[squares[0]][squares[1]].pair);
}

}  // namespace quelmar::tablemaker
