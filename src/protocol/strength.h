// Playing below full strength: UCI_LimitStrength and UCI_Elo.
#pragma once

#include "board/types.h"

namespace quelmar {

inline constexpr int MIN_ELO = 800, MAX_ELO = 2400;

// Set by the protocol's options. Flags are ints holding 0 or 1, as in all settings.
struct StrengthSettings {
    int is_limited = 0;
    int elo = 1500;
    int analyses = 0;  // the client shows analysis, which always has the full strength
};

inline StrengthSettings strength_settings;

// Whether moves are chosen below full strength.
bool is_strength_limited();

// Nodes for a move of the current position at strength_settings.elo. The same position always gets the same,
// from half to twice the budget of that strength.
u64 nodes_of_strength();

}  // namespace quelmar
