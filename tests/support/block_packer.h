// Compressed files for tests of their reader.
#pragma once

#include "tablebase/compressed_file.h"
#include "tablemaker/compress.h"

#include <vector>

namespace quelmar::testing {

using Bytes = std::vector<std::uint8_t>;

// Puts the right check value behind an index whose bytes were changed.
inline void seal_index(Bytes& file, std::size_t index_size) {
    const std::uint32_t check = checksum({file.data(), index_size - 4});
    for (std::size_t i = 0; i < 4; ++i)
        file[index_size - 4 + i] = static_cast<std::uint8_t>(check >> (24 - 8 * i));
}

inline std::size_t index_size_of(const Bytes& file) {
    return std::size_t{file[65]} << 16 | std::size_t{file[66]} << 8 | file[67];
}

// Blocks of 8192 bytes; with another `block_bits` the file only says that its blocks have that size.
inline Bytes pack(const Bytes& content, unsigned block_bits = 13) {
    constexpr std::size_t BLOCK_BITS_AT = 70;
    Bytes file = tablemaker::compress_table(content, tablemaker::Workers(1));
    file[BLOCK_BITS_AT] = static_cast<std::uint8_t>(block_bits);
    seal_index(file, index_size_of(file));
    return file;
}

}  // namespace quelmar::testing
