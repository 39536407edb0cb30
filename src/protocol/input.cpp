#include "protocol/input.h"

namespace quelmar {

void poll_input() {}

}  // namespace quelmar
