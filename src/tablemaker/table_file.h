// Table files on disk: reading them whole, writing them so that a broken run leaves nothing under a final
// name.
#pragma once

#include "board/types.h"

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace quelmar::tablemaker {

// Whether the name says that the file is compressed.
bool is_compressed_name(const std::filesystem::path& path);

// What the name of a table's file says.
struct TableName {
    int ending;
    Side side;  // to move
};
// Nothing if this is not the name of a table, plain or compressed.
std::optional<TableName> table_named(const std::filesystem::path& path);

// The value bytes of a plain or compressed table, which its name tells apart. For a compressed one the check
// values of every block are compared too. Throws TablemakerError with the file's name on any fault.
std::vector<u8> read_table(const std::filesystem::path& path);

// Writes to a file beside `path`, flushes it to the disk and renames it. Throws TablemakerError; then `path`
// is as it was and the other file is gone.
void write_file(const std::filesystem::path& path, std::span<const u8> bytes);

// Bytes of the table in the file when it is unpacked, by its header; for a compressed one rounded up to a
// whole block. Throws TablemakerError like read_table.
u64 table_size(const std::filesystem::path& path);

// Throws TablemakerError if no file can be made in the directory.
void require_writable(const std::filesystem::path& directory);

// Removes what processes that have ended left of tables half written. Does nothing where that is not
// possible.
void remove_stale_parts(const std::filesystem::path& directory);

}  // namespace quelmar::tablemaker
