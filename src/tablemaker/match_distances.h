// The 24 distances at which a compressed table may repeat itself.
#pragma once

#include "tablebase/compressed_file.h"
#include "tablemaker/workers.h"

#include <span>

namespace quelmar::tablemaker {

inline constexpr unsigned BLOCK_BITS = 13;  // the only size that readers take
inline constexpr std::size_t BLOCK_SIZE = std::size_t{1} << BLOCK_BITS;
using Distances = std::array<u16, DISTANCE_COUNT>;  // each 1..BLOCK_SIZE - 1, no two equal

// Distances that together cover a sample of the table's blocks best.
Distances choose_distances(std::span<const u8> table, const Workers& workers);

}  // namespace quelmar::tablemaker
