#pragma once

namespace quelmar {

// Lists the three men of each side that are most in danger in the current stack entry, from the attack maps
// that evaluate() has just left for this position.
void find_threats();

}  // namespace quelmar
