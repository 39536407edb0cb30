// Makes the block-compressed form of a table.
//
// How the file is laid out says tablebase/compressed_file.h. Each block of 8192 bytes is packed on its own,
// with one code for the whole table; a block that packing does not shorten is stored as it is.
#pragma once

#include "tablemaker/workers.h"

#include <span>

namespace quelmar::tablemaker {

// The bytes of the compressed file. The table must not be empty.
std::vector<u8> compress_table(std::span<const u8> table, const Workers& workers);

}  // namespace quelmar::tablemaker
