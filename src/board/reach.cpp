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
        table[i] = {line(square, 17), line(square, 15), line(square, 16)};
    }
    return table;
}

// The files that a slider sees on a rank with men on the files of `men`.
consteval u8 seen_on_rank(int file, int men) {
    int seen = 0;
    for (const int direction : {1, -1}) {
        for (int target = file + direction; target >= 0 && target < 8; target += direction) {
            seen |= 1 << target;
            if ((men >> target & 1) != 0)
                break;
        }
    }
    return static_cast<u8>(seen);
}

consteval Table<Table<u8, 64>, 8> rank_table() {
    Table<Table<u8, 64>, 8> table{};
    for (int file = 0; file < 8; ++file) {
        for (int inner = 0; inner < 64; ++inner)
            table[file][inner] = seen_on_rank(file, inner << 1);
    }
    return table;
}

}  // namespace

constexpr Table<LinesThrough, 64> lines_through = lines_table();
constexpr Table<SquareSet, 64> knight_reach = steps_table(knight_offsets);
constexpr Table<SquareSet, 64> king_reach = steps_table(king_offsets);
constexpr Table<Table<u8, 64>, 8> first_rank_reach = rank_table();

}  // namespace quelmar
