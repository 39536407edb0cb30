#include "board/diagram.h"

#include "board/position.h"

#include <cstdio>

namespace quelmar {

namespace {

constexpr Table<const char*, 13> diagram_cells = {"|   ", "| P ", "| N ", "| B ", "| R ", "| Q ", "| K ",
                                                  "|=P=", "|=N=", "|=B=", "|=R=", "|=Q=", "|=K="};
constexpr char DIAGRAM_LINE[] = "+---+---+---+---+---+---+---+---+\n";

}  // namespace

std::string board_diagram() {
    std::string text = DIAGRAM_LINE;
    for (int rank = 7; rank >= 0; --rank) {
        for (int file = 0; file < 8; ++file) {
            const Piece piece = position.at(square_at(file, rank));
            const bool dark = (file + rank) % 2 == 0;
            text += piece == EMPTY && dark ? "| . " : diagram_cells[piece];
        }
        text.append("|\n").append(DIAGRAM_LINE);
    }
    return text;
}

void print_board() {
    std::printf("%s", board_diagram().c_str());
}

}  // namespace quelmar
