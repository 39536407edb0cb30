// Makes tables in a directory, each ending after those it rests on.
//
// What an entry means where both sides have pawns: the ordinary entries, which are all that a reader without
// the move before can ask for, hold the value without a right to capture en passant now; but later double
// steps are answered by such captures as the rules say, so the distances are those of real play. The entries
// behind the ordinary ones are the same positions with that right. Castling rights do not exist in tables.
#pragma once

#include "tablemaker/error.h"
#include "tablemaker/progress.h"
#include "tablemaker/table_store.h"
#include "tablemaker/workers.h"

#include <new>

namespace quelmar::tablemaker {

// What work on tables needs: memory, and a directory with room for its files.

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

class Maker {
public:
    struct Options {
        bool compress = false;
        int threads = 1;
        bool progress = false;
    };

    Maker(std::filesystem::path directory, const Options& options)
        : store_(std::move(directory)), options_(options), workers_(options.threads),
          progress_(options.progress) {}

    // Makes the tables of the endings that the directory does not have yet, and before that those of all
    // endings they can turn into. Throws TablemakerError, before any work if the directory is missing, cannot
    // be written or has no room for them.
    void make(const std::vector<int>& endings);

private:
    void make_one(int ending);
    void write_tables(const class Solver& solver, int ending, const Men& men);

    TableStore store_;
    Options options_;
    Workers workers_;
    Progress progress_;
};

// What a table holds. Distances are in moves.
struct TableStatistics {
    u64 wins = 0, draws = 0, losses = 0, illegal = 0;
    int longest_win = 0, longest_loss = 0;
};
TableStatistics statistics_of(std::span<const u8> table);

}  // namespace quelmar::tablemaker
