// The position against a recount of itself.
#pragma once

namespace quelmar {

// Recomputes keys, sums, counts and lists from the board and compares. Asserted around moves in debug builds.
bool position_is_consistent();

}  // namespace quelmar
