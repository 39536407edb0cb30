// Makes the block-compressed form of a table.
//
// The file: 64 bytes of banner; the header; for each block the checksums of its decoded and of its packed
// bytes; the packed lengths of the blocks, the decoded length of the last one and the match distances, 13
// bits each; the code lengths of the main alphabet; the checksum of all that; then the packed blocks. Each
// block of 8192 bytes is packed on its own with one code for the whole table. A block that packing does not
// shorten is stored as it is.
#pragma once

#include "tablemaker/workers.h"

#include <span>

namespace quelmar::tablemaker {

// The bytes of the compressed file. The table must not be empty.
std::vector<u8> compress_table(std::span<const u8> table, const Workers& workers);

}  // namespace quelmar::tablemaker
