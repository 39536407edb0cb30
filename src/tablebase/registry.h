// Which tables exist: the files found along the path, and the material each of them is for.
#pragma once

#include "board/types.h"
#include "platform/platform.h"
#include "tablebase/compressed_file.h"
#include "tablebase/table_memory.h"

#include <string>
#include <string_view>

namespace quelmar {

// What happens with a file that cannot be right, and who is told. Written at start-up.
struct TableReports {
    bool faulty_file_is_fatal = true;  // when it is registered; otherwise it is left out
    void (*tell)(const std::string& text) = [](const std::string&) {};
};

inline TableReports table_reports;

using platform::FileHandle;

inline constexpr u32 TABLE_BLOCK_SIZE = 8192;  // bytes, of plain and of compressed tables
inline constexpr u32 BLOCK_CHAINS = 32;        // per table

// One table: an ending with one side to move. For a symmetric ending only White's record is used.
struct TableRecord {
    TableString path;                                   // empty: not registered
    FileHandle file;                                    // opened by the first block that is read
    std::unique_ptr<CompressedTableInfo> decoder_info;  // none for a plain file
    TableVector<u32> block_directory;                   // first cached block of each chain, see block_cache.h
    u32 entry_count = 0;

    bool registered() const { return !path.empty(); }
};

// Men of White and of Black beside the kings: pawns, knights, bishops, rooks, queens.
using MaterialCounts = Table<u8, 10>;

// The names in a list of directories, separated by ',', ';' or ':' (no ':' on Windows); an empty one is the
// current directory.
std::vector<std::string_view> table_directories(std::string_view path_list);

// Forgets all tables and registers those that the directories hold. Returns the most men of any table found,
// 0 without tables. A table that cannot be right ends the process with a message and exit status 1, or is
// left out and told of, as table_reports says.
int init_tablebases(std::string_view path_list);

// Looks for one table; true if it is registered now. The first directory that holds it wins.
bool register_table(std::string_view directory, int ending, Side side);

// +n when White has the first group of ending n, -n when Black has it, 0 when there is no such ending or none
// was ever registered. An ending that is its own exchange of colours is always +n.
int ending_by_material(const MaterialCounts& counts);

// The record that serves this ending and side to move.
TableRecord& table_record(int ending, Side side);

int count_registered_tables();  // files, that is

// The table, which must be registered, does not count as such from now on; table_reports.tell says so.
void drop_table(TableRecord& table, const char* reason);

// Opens a regular file for reading bytes; empty when that fails.
FileHandle open_table_file(const char* path);
void close_table_files();

// Shared by all compressed tables; usable once one of them is registered.
BlockDecoder& decode_workspace();

}  // namespace quelmar
