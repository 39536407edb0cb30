// The board as text.
#pragma once

#include <string>

namespace quelmar {

std::string board_diagram();  // rank 8 first, 17 lines

void print_board();  // a diagram on standard output

}  // namespace quelmar
