// Positions of a suite with what is known of their solutions.
#pragma once

#include "board/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

struct EpdOperation {
    std::string code;                   // "bm", "id"
    std::vector<std::string> operands;  // without quotes
};

struct EpdLine {
    std::string
        fen;  // placement, side, castling rights, en-passant square and counters, as far as they are there
    std::vector<EpdOperation> operations;
};

// Takes a line apart without looking at the sense of it.
EpdLine read_epd(std::string_view line);

// The moves of root_moves that a text in SAN or coordinates may mean: none when it is illegal, several when
// it is ambiguous. Check marks and annotations do not matter. root_moves must have been built.
std::vector<Move> moves_named(std::string_view text);

}  // namespace quelmar
