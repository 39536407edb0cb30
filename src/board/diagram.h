// The board as text.
#pragma once

namespace quelmar {

void print_board();  // a diagram on standard output

}  // namespace quelmar
