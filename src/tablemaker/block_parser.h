// Cuts a block into literals and matches at the least cost in bits.
#pragma once

#include "tablebase/compressed_file.h"
#include "tablemaker/workers.h"

#include <array>
#include <span>
#include <vector>

namespace quelmar::tablemaker {

inline constexpr unsigned BLOCK_BITS = 13;  // the only size that readers take
inline constexpr std::size_t BLOCK_SIZE = std::size_t{1} << BLOCK_BITS;
// The 24 distances at which a compressed table may repeat itself.
using Distances = std::array<u16, DISTANCE_COUNT>;  // each 1..BLOCK_SIZE - 1, no two equal

// Distances that together cover a sample of the table's blocks best.
Distances choose_distances(std::span<const u8> table, const Workers& workers);

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
