// The tables of one directory, read whole into memory when first asked for.
#pragma once

#include "tablemaker/men.h"

#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace quelmar::tablemaker {

class TableStore {
public:
    explicit TableStore(std::filesystem::path directory) : directory_(std::move(directory)) {}

    const std::filesystem::path& directory() const { return directory_; }

    // The file of a table, plain or compressed, if there is one.
    std::optional<std::filesystem::path> find(int ending, Side side) const;
    // Whether every file of the ending is there.
    bool has(int ending) const;

    // The value bytes of a table; they stay where they are until forget(). Throws TablemakerError if the file
    // is missing, broken or not of the catalogue's size.
    std::span<const u8> bytes(int ending, Side side);
    void forget() { loaded_.clear(); }

private:
    std::filesystem::path directory_;
    std::map<std::pair<int, Side>, std::vector<u8>> loaded_;
};

// The values of one ending under its catalogue number, seen with the men of another: a capture or promotion
// may lead to an ending whose name has the colours exchanged.
class EndingValues {
public:
    // `men` are those on the board; with two bare kings every position is a draw.
    EndingValues(TableStore& store, const Men& men);

    // Value byte with `side` to move. `ep_square` is the square a capturing pawn would go to, as in
    // table_index.
    i8 byte(const Men& men, const Squares& squares, Side side, int ep_square = NO_EP_SQUARE) const;

private:
    int ending_ = 0;
    bool exchanged_ = false, symmetric_ = false;
    Table<std::span<const u8>, 2> bytes_{};
};

// Index of a position of the ending in its own file for `side` to move; `men` are those of ending_men().
u32 index_in_table(int ending, const Men& men, const Squares& squares, Side side, int ep_square);

}  // namespace quelmar::tablemaker
