// A weaker player looks at fewer nodes and plays the best move that it has found: no move is spoilt on
// purpose. How many nodes a rating takes was measured in matches (docs/strength.md). The spread of the budget
// makes a player who sees more in one position and less in another; it comes from the position, so that games
// can be repeated.
#include "protocol/strength.h"

#include "board/position.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr int ELO_STEP = 100;

// Nodes at 800, 900 ... 2400.
constexpr Table<u64, (MAX_ELO - MIN_ELO) / ELO_STEP + 1> BUDGETS = {
    55,    85,    130,    205,    320,     500,     620,       730,        1'200,
    2'500, 6'400, 19'500, 67'000, 240'000, 900'000, 3'300'000, 12'000'000,
};

u64 budget_of(int elo) {
    const int above = std::clamp(elo, MIN_ELO, MAX_ELO) - MIN_ELO;
    const int step = std::min(above / ELO_STEP, BUDGETS.size() - 2);
    const auto part = static_cast<u64>(above - step * ELO_STEP);
    return BUDGETS[step] + (BUDGETS[step + 1] - BUDGETS[step]) * part / ELO_STEP;
}

// 512ths: half of the positions get from 1/2 to 1, the others from 1 to 2.
u64 spread_of(HashKey key) {
    constexpr u64 UNIT = 512;
    const u64 place = (key >> 32) % (2 * UNIT);
    return place < UNIT ? (UNIT + place) / 2 : place;
}

}  // namespace

bool is_strength_limited() {
    return strength_settings.is_limited != 0 && strength_settings.analyses == 0;
}

u64 nodes_of_strength() {
    constexpr int SPREAD_BITS = 9;
    return std::max<u64>(1,
                         budget_of(strength_settings.elo) * spread_of(position.current().key) >> SPREAD_BITS);
}

}  // namespace quelmar
