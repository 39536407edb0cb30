// The vocabulary of the whole program: squares, men, sides, moves. Plain values, no state.
//
// The board has 16 columns and 16 rows, of which 8x8 are played on: square = 16 * (rank + 4) + file with
// rank and file 0..7, so a1 = 64 and h8 = 183. Whatever step a man makes from a playing square lands inside
// 0..255, and on OFF_BOARD when it leaves the board, so that no generator compares coordinates.
#pragma once

#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>  // of loops over {WHITE, BLACK}
#include <type_traits>

namespace quelmar {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

using Square = int;   // 0..255, playing squares as above
using Piece = int;    // 0..13, see below
using Side = int;     // WHITE or BLACK
using HashKey = u64;  // Zobrist key; its low half addresses the transposition table

// Stores a wide value in a narrow field; the value must fit.
template <typename Narrow, typename Wide> constexpr Narrow narrow(Wide value) {
    static_assert(std::is_integral_v<Narrow> && std::is_integral_v<Wide>);
    assert(static_cast<Wide>(static_cast<Narrow>(value)) == value);
    return static_cast<Narrow>(value);
}

// An array that is indexed by what the program counts in: squares, men, sides and plies are ints.
template <typename T, int SIZE> struct Table {
    using value_type = T;
    T cells[SIZE];

    constexpr T& operator[](int index) {
        assert(index >= 0 && index < SIZE);
        return cells[index];
    }
    constexpr const T& operator[](int index) const {
        assert(index >= 0 && index < SIZE);
        return cells[index];
    }
    static constexpr int size() { return SIZE; }
    constexpr T* data() { return cells; }
    constexpr const T* data() const { return cells; }
    constexpr T* begin() { return cells; }
    constexpr const T* begin() const { return cells; }
    constexpr T* end() { return cells + SIZE; }
    constexpr const T* end() const { return cells + SIZE; }
    constexpr void fill(const T& value) {
        for (T& cell : cells)
            cell = value;
    }
    bool operator==(const Table&) const = default;
};

// The nearest value that fits.
constexpr i32 clamp_to_i32(i64 value) {
    constexpr i64 LEAST = INT32_MIN, MOST = INT32_MAX;
    return static_cast<i32>(value < LEAST ? LEAST : value > MOST ? MOST : value);
}

inline constexpr Side WHITE = 0, BLACK = 1;

constexpr Side other_side(Side side) {
    return side ^ 1;
}

// The step of a pawn.
constexpr int forward_of(Side side) {
    return side == WHITE ? 16 : -16;
}

// White's men are also the names of the kinds.
inline constexpr Piece EMPTY = 0, PAWN = 1, KNIGHT = 2, BISHOP = 3, ROOK = 4, QUEEN = 5, KING = 6;
inline constexpr Piece WHITE_PAWN = 1, WHITE_KNIGHT = 2, WHITE_BISHOP = 3, WHITE_ROOK = 4, WHITE_QUEEN = 5,
                       WHITE_KING = 6;
inline constexpr Piece BLACK_PAWN = 7, BLACK_KNIGHT = 8, BLACK_BISHOP = 9, BLACK_ROOK = 10, BLACK_QUEEN = 11,
                       BLACK_KING = 12;
inline constexpr Piece OFF_BOARD = 13;

// The following three take a man (1..12), not OFF_BOARD.
constexpr Side side_of(Piece man) {
    return man > WHITE_KING ? BLACK : WHITE;
}
// EMPTY stays EMPTY.
constexpr Piece kind_of(Piece man) {
    return man > WHITE_KING ? man - 6 : man;
}
constexpr Piece man_of(Side side, Piece kind) {
    return kind + 6 * side;
}

// The following take any code.
constexpr bool is_pawn(Piece piece) {
    return piece == WHITE_PAWN || piece == BLACK_PAWN;
}
constexpr bool is_man(Piece piece) {
    return piece > EMPTY && piece < OFF_BOARD;
}
constexpr bool is_man_of(Piece piece, Side side) {
    return side == WHITE ? piece >= WHITE_PAWN && piece <= WHITE_KING
                         : piece >= BLACK_PAWN && piece <= BLACK_KING;
}

inline constexpr char UPPER_LETTERS[] = " PNBRQKPNBRQK";
inline constexpr char LOWER_LETTERS[] = " pnbrqkpnbrqk";

inline constexpr Square FIRST_SQUARE = 64, LAST_SQUARE = 183;  // a1, h8
inline constexpr int BOARD_SIZE = 256;

// File and rank are 0..7 on the board; the names of ranks also serve for those that a side counts from its
// own first one.
inline constexpr int RANK_1 = 0, RANK_2 = 1, RANK_3 = 2, RANK_4 = 3, RANK_5 = 4, RANK_6 = 5, RANK_7 = 6,
                     RANK_8 = 7;
inline constexpr int FILE_A = 0, FILE_B = 1, FILE_C = 2, FILE_D = 3, FILE_E = 4, FILE_F = 5, FILE_G = 6,
                     FILE_H = 7;
constexpr Square square_at(int file, int rank) {
    return 16 * (rank + 4) + file;
}
constexpr int file_of(Square square) {
    return square & 15;
}
constexpr int rank_of(Square square) {
    return (square >> 4) - 4;
}
constexpr bool is_playing_square(Square square) {
    return square >= FIRST_SQUARE && square <= LAST_SQUARE && file_of(square) < 8;
}

// a1 = 0, h1 = 7, ... h8 = 63, the numbering of the history table and of the endgame tables.
constexpr auto index_of_square = [] {
    Table<u8, BOARD_SIZE> table{};  // 0 for every off-board square
    for (int i = 0; i < 64; ++i)
        table[square_at(i % 8, i / 8)] = static_cast<u8>(i);
    return table;
}();
constexpr auto square_of_index = [] {
    Table<u8, 64> table{};
    for (int i = 0; i < 64; ++i)
        table[i] = static_cast<u8>(square_at(i % 8, i / 8));
    return table;
}();

inline constexpr Square A1 = 64, B1 = 65, C1 = 66, D1 = 67, E1 = 68, F1 = 69, G1 = 70, H1 = 71;
inline constexpr Square A8 = 176, B8 = 177, C8 = 178, D8 = 179, E8 = 180, F8 = 181, G8 = 182, H8 = 183;

// Mirror a playing square in ranks (a1 <-> a8) and in files (a1 <-> h1).
constexpr Square flip_rank(Square square) {
    return square ^ 0xF0;
}
constexpr Square flip_file(Square square) {
    return square ^ 7;
}
static_assert(flip_rank(A1) == A8 && flip_rank(square_at(7, 3)) == square_at(7, 4) && flip_file(A8) == H8);

// Squares with a meaning of their own in the piece lists: two heads and the end.
inline constexpr Square WHITE_LIST = 0, BLACK_LIST = 1, LIST_END = 255;

// Flags of a move and bits of `castle_lost`.
inline constexpr int CASTLE_WHITE_SHORT = 1, CASTLE_WHITE_LONG = 2, CASTLE_BLACK_SHORT = 4,
                     CASTLE_BLACK_LONG = 8, CASTLE_ANY = 15, EN_PASSANT = 16;

// What differs between the sides, for code that is written once as a template.
template <Side Us> struct Facing {
    static constexpr Side THEM = other_side(Us);
    static constexpr int SIGN = Us == WHITE ? 1 : -1;
    static constexpr int FORWARD = forward_of(Us);
    static constexpr Piece OUR_PAWN = man_of(Us, PAWN), OUR_KNIGHT = man_of(Us, KNIGHT),
                           OUR_BISHOP = man_of(Us, BISHOP), OUR_ROOK = man_of(Us, ROOK),
                           OUR_QUEEN = man_of(Us, QUEEN), OUR_KING = man_of(Us, KING);
    static constexpr Piece THEIR_PAWN = man_of(THEM, PAWN), THEIR_KNIGHT = man_of(THEM, KNIGHT),
                           THEIR_BISHOP = man_of(THEM, BISHOP), THEIR_ROOK = man_of(THEM, ROOK),
                           THEIR_QUEEN = man_of(THEM, QUEEN), THEIR_KING = man_of(THEM, KING);
    // An offset as White sees it, turned into one that `Us` sees: ranks mirrored, files kept.
    static constexpr int offset(int white_offset) {
        // Split into a rank step and a file step in -7..7.
        const int ranks = (white_offset + 8 + 256) / 16 - 16;
        const int files = white_offset - 16 * ranks;
        return Us == WHITE ? white_offset : files - 16 * ranks;
    }
    // Rank 0..7 counted from our own first rank.
    static constexpr int rank(Square square) { return Us == WHITE ? rank_of(square) : 7 - rank_of(square); }
    // A playing square as White sees it, turned into the one in the same place for `Us`, and the other way
    // round too.
    static constexpr Square mirror(Square square) { return Us == WHITE ? square : flip_rank(square); }
};

// A move as the generators write it, in one word.
struct Move {
    u8 from = 0;         // 0 marks the null move
    u8 to = 0;           // for castling the king's destination
    u8 piece = 0;        // the moving man before the move
    u8 captured = 0;     // 0 if none; the pawn for an en-passant capture
    u8 promotion = 0;    // in the mover's colour, 0 if none
    u8 flags = 0;        // 0, one CASTLE_ bit, or EN_PASSANT
    u8 gives_check = 0;  // 0 or 1, set by the generators
    u8 spare = 0;
};
static_assert(sizeof(Move) == 8);

// A move in one word, see pack_move; 0 = no move.
using PackedMove = u32;

constexpr Square packed_from(PackedMove packed) {
    return static_cast<Square>(packed & 255);
}
constexpr Square packed_to(PackedMove packed) {
    return static_cast<Square>(packed >> 8 & 255);
}
// Both, as squares_of() a move.
constexpr u16 packed_squares(PackedMove packed) {
    return static_cast<u16>(packed);
}

// The same move of one position, whatever its score and flag of check.
inline bool same_move(const Move& a, const Move& b) {
    return a.from == b.from && a.to == b.to && a.promotion == b.promotion && a.flags == b.flags;
}

// Origin and destination in one number.
inline u16 squares_of(const Move& move) {
    return static_cast<u16>(move.from | move.to << 8);
}
inline bool same_squares(const Move& a, const Move& b) {
    return squares_of(a) == squares_of(b);
}
// Captures nothing and promotes nothing.
inline bool is_quiet(const Move& move) {
    return (move.captured | move.promotion << 8) == 0;
}

}  // namespace quelmar
