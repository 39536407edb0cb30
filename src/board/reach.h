// Which squares a man reaches from a square, as sets.
//
// A line is asked with one multiplication. The men on a rank or diagonal stand on different files, so that
// adding up the ranks of the line puts one bit per file beside each other; the six inner ones (a man on the
// last square of a line hides nothing) say what is seen, on every rank at once, and the line itself takes out
// its share. A file is first turned into such a row of bits.
#pragma once

#include "board/processor.h"
#include "board/square_set.h"

#ifdef QUELMAR_HAS_MODERN_COPY
#include <immintrin.h>
#endif

namespace quelmar {

// The squares of the lines through a square, by its index; without the square itself.
struct LinesThrough {
    SquareSet diagonal = 0;      // as a1-h8
    SquareSet antidiagonal = 0;  // as a8-h1
    SquareSet diagonals = 0;     // both
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

// The two ways to ask, as a parameter of code that is compiled once more for newer processors.
struct PlainReach {
    static SquareSet bishop(int index, SquareSet men) { return bishop_reach(index, men); }
    static SquareSet rook(int index, SquareSet men) { return rook_reach(index, men); }
};

#ifdef QUELMAR_HAS_MODERN_COPY

// What the men on the inner squares of a square's lines leave to be seen, in the order of the numbers that
// pext makes of them.
inline constexpr int DIAGONAL_ENTRIES = 5248;  // of all squares together
struct InnerSquares {
    SquareSet diagonals = 0, file = 0, rank = 0;
    int first_entry = 0;  // of the square, in diagonals_seen
};
extern const Table<InnerSquares, 64> inner_squares;
extern const Table<SquareSet, DIAGONAL_ENTRIES> diagonals_seen;
extern const Table<Table<SquareSet, 64>, 64> file_seen, rank_seen;

struct ModernReach {
    QUELMAR_IN_MODERN_COPY static SquareSet bishop(int index, SquareSet men) {
        const InnerSquares& inner = inner_squares[index];
        return diagonals_seen[inner.first_entry + static_cast<int>(_pext_u64(men, inner.diagonals))];
    }
    QUELMAR_IN_MODERN_COPY static SquareSet rook(int index, SquareSet men) {
        const InnerSquares& inner = inner_squares[index];
        return file_seen[index][static_cast<int>(_pext_u64(men, inner.file))] |
               rank_seen[index][static_cast<int>(_pext_u64(men, inner.rank))];
    }
};

#else

struct ModernReach : PlainReach {};

#endif

}  // namespace quelmar
