// Checks tables, with nothing in common with the code that makes them but the tables' own numbering.
#pragma once

#include "tablemaker/table_store.h"
#include "tablemaker/workers.h"

#include <string>

namespace quelmar::tablemaker {

// Checks one file by itself: the size that its name implies, a compressed file's header and the check values
// of every block. Throws TablemakerError that tells the fault.
void check_table_file(const std::filesystem::path& path);

struct Verification {
    u64 positions = 0, faults = 0;
    std::vector<std::string> first_faults;  // a few, as FEN and the two values
};

// Compares the entry of every legal position of an ending, both sides to move and en-passant rights included,
// with the best of the entries its moves lead to. Throws TablemakerError if a table is missing.
Verification verify_ending(TableStore& store, int ending, const Workers& workers);

}  // namespace quelmar::tablemaker
