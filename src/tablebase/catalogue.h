// The endings that can have tables: 178 of them, fixed. Nothing here knows which tables exist on disk.
#pragma once

#include "board/types.h"

#include <string_view>

namespace quelmar {

inline constexpr int ENDING_COUNT = 178;  // numbered 1..178
inline constexpr int ENDING_KPPKP = 36;

struct Ending {
    std::string_view name;           // file stem: the letters of the first group, then of the second, "kqkr"
    bool symmetric;                  // one table, White's, serves both sides to move
    bool wide;                       // 16-bit entries
    std::array<u32, 2> entry_count;  // entries of the table file with White and with Black to move
    std::array<std::array<u8, 6>, 2>
        men;  // [group][kind]: how many men of the kind (PAWN..QUEEN) beside the king
};

// The ending with this number, 1..178.
const Ending& ending(int number);

// The number of the ending with this name, 0 if there is none.
int ending_by_name(std::string_view name);

}  // namespace quelmar
