// The endings that can have tables: 178 of them, fixed. Nothing here knows which tables exist on disk.
#pragma once

#include "board/types.h"

#include <string_view>

namespace quelmar {

inline constexpr int ENDING_COUNT = 178;  // numbered 1..178
inline constexpr int ENDING_KPPKP = 36;
inline constexpr int FIRST_FOUR_MEN = 6, FIRST_FIVE_MEN = 36, FIRST_SIX_MEN = 146;

struct Ending {
    std::string_view name;      // file stem: the letters of the first group, then of the second, "kqkr"
    bool symmetric;             // one table, White's, serves both sides to move
    bool wide;                  // 16-bit entries
    Table<u32, 2> entry_count;  // entries of the table file with White and with Black to move
    // [group][kind]: men of the kind (PAWN..QUEEN) beside the king. A name lists the kinds of a group from
    // QUEEN down to PAWN, so these counts are the name.
    Table<Table<u8, 6>, 2> men;

    bool has_pawns() const { return men[0][PAWN] + men[1][PAWN] > 0; }
};

// The ending with this number, 1..178.
const Ending& ending(int number);

// The number of the ending with this name, 0 if there is none.
int ending_by_name(std::string_view name);

// Men on the board, kings included, of the ending with this number (3..6); 0 for number 0.
int men_of_ending(int number);

}  // namespace quelmar
