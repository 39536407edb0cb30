// Cuts a block into literals and matches at the least cost in bits.
#pragma once

#include "tablemaker/match_distances.h"

#include <span>
#include <vector>

namespace quelmar::tablemaker {

// How a match length is told: its length code and the extra bits that follow the symbol.
struct LengthCode {
    unsigned code;
    u32 extra;
    int extra_bits;
};
LengthCode code_of_length(std::size_t length);
std::size_t longest_of_code(unsigned code);

struct Token {
    u16 symbol;
    u8 extra_bits;
    u16 extra;
};

using SymbolBits = std::array<u8, MAIN_ALPHABET>;  // what each symbol costs, without extra bits

// The tokens that reproduce the block, cheapest in total by these costs. A block has at most BLOCK_SIZE
// bytes.
std::vector<Token> parse_block(std::span<const u8> block, const Distances& distances,
                               const SymbolBits& costs);

}  // namespace quelmar::tablemaker
