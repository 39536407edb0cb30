#include "board/reach.h"

#include "board/attacks.h"

namespace quelmar {

namespace {

consteval SquareSet steps_from(Square square, const Table<int, 8>& offsets) {
    SquareSet set = NO_SQUARES;
    for (const int offset : offsets)
        set |= set_of(square + offset);
    return set;
}

consteval Table<SquareSet, 64> steps_table(const Table<int, 8>& offsets) {
    Table<SquareSet, 64> table{};
    for (int i = 0; i < table.size(); ++i)
        table[i] = steps_from(square_of_index[i], offsets);
    return table;
}

consteval SquareSet line(Square square, int step) {
    SquareSet set = NO_SQUARES;
    for (const int direction : {step, -step}) {
        for (Square target = square + direction; is_playing_square(target); target += direction)
            set |= set_of(target);
    }
    return set;
}

consteval Table<LinesThrough, 64> lines_table() {
    Table<LinesThrough, 64> table;
    for (int i = 0; i < table.size(); ++i) {
        const Square square = square_of_index[i];
        table[i] = {line(square, 17), line(square, 15), line(square, 17) | line(square, 15)};
    }
    return table;
}

// The places 0..7 of a line that a slider on `place` sees with men on the places of `men`.
consteval int seen_on_line(int place, int men) {
    int seen = 0;
    for (const int direction : {1, -1}) {
        for (int target = place + direction; target >= 0 && target < 8; target += direction) {
            seen |= 1 << target;
            if ((men >> target & 1) != 0)
                break;
        }
    }
    return seen;
}

consteval Table<Table<SquareSet, 64>, 8> files_table() {
    Table<Table<SquareSet, 64>, 8> table{};
    for (int file = 0; file < 8; ++file) {
        for (int inner = 0; inner < 64; ++inner)
            table[file][inner] = on_files(seen_on_line(file, inner << 1));
    }
    return table;
}

// Rank 7 is the lowest bit of the men.
consteval int men_by_rank(int inner) {
    int men = 0;
    for (int bit = 0; bit < 6; ++bit)
        men |= (inner >> bit & 1) << (6 - bit);
    return men;
}

consteval Table<Table<SquareSet, 64>, 8> file_a_table() {
    Table<Table<SquareSet, 64>, 8> table{};
    for (int rank = 0; rank < 8; ++rank) {
        for (int inner = 0; inner < 64; ++inner) {
            const int seen = seen_on_line(rank, men_by_rank(inner));
            for (int target = 0; target < 8; ++target)
                table[rank][inner] |= static_cast<SquareSet>(seen >> target & 1) << (8 * target);
        }
    }
    return table;
}

#ifdef QUELMAR_HAS_MODERN_COPY

// The squares of a line that do not end it, in either direction.
consteval SquareSet inner_line(Square square, int step) {
    SquareSet set = NO_SQUARES;
    for (const int direction : {step, -step}) {
        for (Square target = square + direction; is_playing_square(target + direction); target += direction)
            set |= set_of(target);
    }
    return set;
}

consteval Table<InnerSquares, 64> inner_squares_table() {
    Table<InnerSquares, 64> table;
    int entries = 0;
    for (int i = 0; i < table.size(); ++i) {
        const Square square = square_of_index[i];
        table[i] = {inner_line(square, 17) | inner_line(square, 15), inner_line(square, 16),
                    inner_line(square, 1), entries};
        entries += 1 << std::popcount(table[i].diagonals);
    }
    return table;
}

// `number` as the men on the squares of `inner`, its lowest bit first: the inverse of pext.
consteval SquareSet men_of_number(int number, SquareSet inner) {
    SquareSet men = NO_SQUARES;
    for (const int index : indices_of(inner)) {
        men |= static_cast<SquareSet>(number & 1) << index;
        number >>= 1;
    }
    return men;
}

consteval SquareSet seen_among(Square square, int step, SquareSet men) {
    SquareSet seen = NO_SQUARES;
    for (const int direction : {step, -step}) {
        for (Square target = square + direction; is_playing_square(target); target += direction) {
            seen |= set_of(target);
            if (contains(men, target))
                break;
        }
    }
    return seen;
}

consteval Table<SquareSet, DIAGONAL_ENTRIES> diagonals_table() {
    Table<SquareSet, DIAGONAL_ENTRIES> table{};
    const Table<InnerSquares, 64> squares = inner_squares_table();
    int entry = 0;
    for (int i = 0; i < 64; ++i) {
        const SquareSet inner = squares[i].diagonals;
        for (int number = 0; number < 1 << std::popcount(inner); ++number) {
            const SquareSet men = men_of_number(number, inner);
            table[entry++] =
                seen_among(square_of_index[i], 17, men) | seen_among(square_of_index[i], 15, men);
        }
    }
    return table;
}

consteval Table<Table<SquareSet, 64>, 64> seen_table(int step) {
    Table<Table<SquareSet, 64>, 64> table{};
    for (int i = 0; i < 64; ++i) {
        const Square square = square_of_index[i];
        const SquareSet inner = inner_line(square, step);
        for (int number = 0; number < 1 << std::popcount(inner); ++number)
            table[i][number] = seen_among(square, step, men_of_number(number, inner));
    }
    return table;
}

#endif

}  // namespace

#ifdef QUELMAR_HAS_MODERN_COPY
constexpr Table<InnerSquares, 64> inner_squares = inner_squares_table();
constexpr Table<SquareSet, DIAGONAL_ENTRIES> diagonals_seen = diagonals_table();
constexpr Table<Table<SquareSet, 64>, 64> file_seen = seen_table(16), rank_seen = seen_table(1);
#endif

constexpr Table<LinesThrough, 64> lines_through = lines_table();
constexpr Table<SquareSet, 64> knight_reach = steps_table(knight_offsets);
constexpr Table<SquareSet, 64> king_reach = steps_table(king_offsets);
constexpr Table<Table<SquareSet, 64>, 8> files_seen = files_table();
constexpr Table<Table<SquareSet, 64>, 8> file_a_seen = file_a_table();

}  // namespace quelmar
