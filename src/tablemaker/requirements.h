// What work on tables needs: memory, and a directory with room for its files.
#pragma once

#include "tablemaker/error.h"
#include "tablemaker/table_store.h"

#include <new>

namespace quelmar::tablemaker {

// Bytes of memory at the peak of the work on one ending, to within a quarter where they are many: making its
// tables, and reading them together with all that captures and promotions lead to.
u64 memory_to_make(int ending, bool compress);
u64 memory_to_verify(int ending);
// The same for counting the entries of an ending's tables, and for compressing a table of so many bytes.
u64 memory_to_tell(int ending);
u64 memory_to_compress(u64 table_bytes);

// The size of a table is at least so many times that of the compressed file, hardly ever more: all tables of
// four men together are packed to a fifth.
inline constexpr u64 SMALLEST_PACKED_PART = 8;

// Those of the endings that the directory does not have whole and those of which they are made, each once,
// after the ones it rests on. Throws TablemakerError for an ending of more than MAX_MEN.
std::vector<int> endings_to_make(const TableStore& store, const std::vector<int>& endings);

// Bytes of the files of these endings that the directory lacks. Compressed ones are guessed on the low side,
// so that nobody is turned away who has just enough.
u64 bytes_to_write(const TableStore& store, const std::vector<int>& endings, bool compress);

// Throws TablemakerError unless there is a directory of this name.
void require_directory(const std::filesystem::path& directory);
// The same, and unless files can be made in it and so many bytes are free; removes what ended runs left
// there.
void require_room(const std::filesystem::path& directory, u64 bytes);

// "4 KB", "1.5 GB".
std::string in_bytes(u64 bytes);

// Does the work; where memory runs out throws a TablemakerError that names its subject and what the work
// takes.
template <typename F> void with_memory_for(const std::string& subject, u64 bytes, const F& work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        throw TablemakerError(subject + ": out of memory, this takes " + in_bytes(bytes));
    }
}

}  // namespace quelmar::tablemaker
