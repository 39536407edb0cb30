#include "tablemaker/table_store.h"

#include "tablebase/catalogue.h"
#include "tablemaker/error.h"
#include "tablemaker/table_file.h"

#include <array>

namespace quelmar::tablemaker {

std::optional<std::filesystem::path> TableStore::find(int number, Side side) const {
    const std::string name(ending(number).name);
    constexpr std::array WHITE_ENDS{".nbw", ".nbw.emd", "_nbw.emd", "nbw.emd"};
    constexpr std::array BLACK_ENDS{".nbb", ".nbb.emd", "_nbb.emd", "nbb.emd"};
    for (const char* const end : side == WHITE ? WHITE_ENDS : BLACK_ENDS)
        if (std::filesystem::exists(directory_ / (name + end)))
            return directory_ / (name + end);
    return std::nullopt;
}

bool TableStore::has(int number) const {
    return find(number, WHITE) && (ending(number).symmetric || find(number, BLACK));
}

std::span<const u8> TableStore::bytes(int number, Side side) {
    const auto known = loaded_.find({number, side});
    if (known != loaded_.end())
        return known->second;
    const auto path = find(number, side);
    if (!path)
        throw TablemakerError("no table of " + std::string(ending(number).name) + " in " +
                              directory_.string());
    std::vector<u8> content = read_table(*path);
    if (content.size() != ending(number).entry_count[side])
        throw TablemakerError(path->string() + ": wrong number of entries");
    return loaded_[{number, side}] = std::move(content);
}

u32 index_in_table(int number, const Men& men, const Squares& squares, Side side, int ep_square) {
    return table_index(number, side, side_squares(men, squares, WHITE), side_squares(men, squares, BLACK),
                       ep_square, 0);
}

EndingValues::EndingValues(TableStore& store, const Men& men) {
    if (men.count == 2)
        return;
    ending_ = ending_by_name(ending_name(men, WHITE));
    if (ending_ == 0) {
        exchanged_ = true;
        ending_ = ending_by_name(ending_name(men, BLACK));
    }
    if (ending_ == 0)
        throw TablemakerError(ending_name(men, WHITE) + " has no table of its own");
    symmetric_ = ending(ending_).symmetric;
    bytes_[WHITE] = store.bytes(ending_, WHITE);
    if (!symmetric_)
        bytes_[BLACK] = store.bytes(ending_, BLACK);
}

i8 EndingValues::byte(const Men& men, const Squares& squares, Side side, int ep_square) const {
    if (ending_ == 0)
        return 0;
    // One table of a symmetric ending serves both sides, by looking at the board with the colours exchanged.
    const bool exchange = exchanged_ || (symmetric_ && side == BLACK);
    const Side first = exchange ? BLACK : WHITE;
    const Side table = side == first ? WHITE : BLACK;
    const u32 index = table_index(ending_, table, side_squares(men, squares, first),
                                  side_squares(men, squares, other_side(first)), ep_square, exchange ? 1 : 0);
    const std::span<const u8> bytes = bytes_[table];
    if (index >= bytes.size())
        throw TablemakerError(ending_name(men, WHITE) + ": a legal position lies beyond its table");
    return static_cast<i8>(bytes[index]);
}

}  // namespace quelmar::tablemaker
