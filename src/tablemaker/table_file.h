// Table files on disk: reading them whole, writing them so that a broken run leaves nothing under a final
// name.
#pragma once

#include "board/types.h"

#include <filesystem>
#include <span>
#include <vector>

namespace quelmar::tablemaker {

// Whether the name says that the file is compressed.
bool is_compressed_name(const std::filesystem::path& path);

// The value bytes of a plain or compressed table, which its name tells apart. For a compressed one the check
// values of every block are compared too. Throws TablemakerError with the file's name on any fault.
std::vector<u8> read_table(const std::filesystem::path& path);

// Writes to a file beside `path`, flushes it to the disk and renames it. Throws TablemakerError; then `path`
// is as it was and the other file is gone.
void write_file(const std::filesystem::path& path, std::span<const u8> bytes);

}  // namespace quelmar::tablemaker
