// Makes tables in a directory, each ending after those it rests on.
//
// What an entry means where both sides have pawns: the ordinary entries, which are all that a reader without
// the move before can ask for, hold the value without a right to capture en passant now; but later double
// steps are answered by such captures as the rules say, so the distances are those of real play. The entries
// behind the ordinary ones are the same positions with that right. Castling rights do not exist in tables.
#pragma once

#include "tablemaker/progress.h"
#include "tablemaker/table_store.h"
#include "tablemaker/workers.h"

namespace quelmar::tablemaker {

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
