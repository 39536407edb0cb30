// Which squares a man reaches from a square, as sets.
//
// A line is asked with one multiplication. The men on a rank or diagonal stand on different files, so that
// adding up the ranks of the line puts one bit per file beside each other; the six inner ones (a man on the
// last square of a line hides nothing) say what is seen, on every rank at once, and the line itself takes out
// its share. A file is first turned into such a row of bits.
#pragma once

#include "board/square_set.h"

namespace quelmar {

// The squares of the lines through a square, by its index; without the square itself.
struct LinesThrough {
    SquareSet diagonal = 0;      // as a1-h8
    SquareSet antidiagonal = 0;  // as a8-h1
};
extern const Table<LinesThrough, 64> lines_through;

extern const Table<SquareSet, 64> knight_reach, king_reach;

// By file of the slider and by the men on files b to g, lowest bit first: the files it sees, on all ranks.
extern const Table<Table<SquareSet, 64>, 8> files_seen;
// By rank of the slider and by the men on ranks 7 to 2, lowest bit first: what it sees of the a-file.
extern const Table<Table<SquareSet, 64>, 8> file_a_seen;

inline const LinesThrough& lines_of(int index) {
    return lines_through[index];
}
inline SquareSet knight_reach_of(int index) {
    return knight_reach[index];
}
inline SquareSet king_reach_of(int index) {
    return king_reach[index];
}

// The squares of `line`, a diagonal, up to and including the first of `men` either way.
inline SquareSet along_diagonal(SquareSet line, int index, SquareSet men) {
    const auto inner = static_cast<int>((men & line) * (FILE_A_SQUARES << 1) >> 58);
    return files_seen[index & 7][inner] & line;
}

inline SquareSet along_rank(int index, SquareSet men) {
    const int rank_shift = index & 56;
    const auto inner = static_cast<int>(men >> (rank_shift + 1) & 63);
    return files_seen[index & 7][inner] & SquareSet{0xFF} << rank_shift;
}

inline SquareSet along_file(int index, SquareSet men) {
    constexpr SquareSet RANKS_BESIDE_EACH_OTHER = 0x0080402010080400;
    const int file = index & 7;
    const auto inner = static_cast<int>((men >> file & FILE_A_SQUARES) * RANKS_BESIDE_EACH_OTHER >> 58);
    return file_a_seen[index >> 3][inner] << file;
}

// What a slider on the square of that index sees over a board with `men` on it, the first man of each line
// included.
inline SquareSet bishop_reach(int index, SquareSet men) {
    const LinesThrough& lines = lines_of(index);
    return along_diagonal(lines.diagonal, index, men) | along_diagonal(lines.antidiagonal, index, men);
}
inline SquareSet rook_reach(int index, SquareSet men) {
    return along_file(index, men) | along_rank(index, men);
}

}  // namespace quelmar
