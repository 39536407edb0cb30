#include "tablemaker/requirements.h"

#include "tablebase/catalogue.h"
#include "tablemaker/conversions.h"
#include "tablemaker/numbering.h"
#include "tablemaker/table_file.h"

#include <algorithm>
#include <cstdio>

namespace quelmar::tablemaker {

namespace {

// The solver keeps a value and a conversion per number and side.
constexpr u64 SOLVER_BYTES_PER_NUMBER = 4;

u64 entries(int number, Side side) {
    return side == BLACK && ending(number).symmetric
               ? 0
               : ending(number).entry_count[static_cast<std::size_t>(side)];
}

u64 entries_below(int number) {
    u64 sum = 0;
    for (const int below : Conversions::endings_below(ending_men(number)))
        sum += entries(below, WHITE) + entries(below, BLACK);
    return sum;
}

void add_in_order(const TableStore& store, int number, std::vector<int>& order) {
    if (store.has(number) || std::find(order.begin(), order.end(), number) != order.end())
        return;
    for (const int below : Conversions::endings_below(ending_men(number)))
        add_in_order(store, below, order);
    order.push_back(number);
}

}  // namespace

u64 memory_to_make(int number, bool compress) {
    const u64 table = std::max(entries(number, WHITE), entries(number, BLACK));
    return SOLVER_BYTES_PER_NUMBER * Numbering(ending_men(number)).size() + entries_below(number) +
           (compress ? memory_to_compress(table) : table);
}

u64 memory_to_verify(int number) {
    return memory_to_tell(number) + entries_below(number);
}

u64 memory_to_tell(int number) {
    return entries(number, WHITE) + entries(number, BLACK);
}

u64 memory_to_compress(u64 table_bytes) {
    return 4 * table_bytes;  // the table, three times as much in symbols and packed blocks
}

std::vector<int> endings_to_make(const TableStore& store, const std::vector<int>& endings) {
    std::vector<int> order;
    for (const int number : endings)
        add_in_order(store, number, order);
    return order;
}

u64 bytes_to_write(const TableStore& store, const std::vector<int>& endings, bool compress) {
    u64 bytes = 0;
    for (const int number : endings)
        for (const Side side : {WHITE, BLACK})
            if (!store.find(number, side))
                bytes += entries(number, side);
    return compress ? bytes / SMALLEST_PACKED_PART : bytes;
}

void require_directory(const std::filesystem::path& directory) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(directory, error);
    if (!std::filesystem::exists(status))
        throw TablemakerError(directory.string() + ": there is no such directory");
    if (!std::filesystem::is_directory(status))
        throw TablemakerError(directory.string() + ": is not a directory");
}

void require_room(const std::filesystem::path& directory, u64 bytes) {
    require_directory(directory);
    remove_stale_parts(directory);
    require_writable(directory);
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(directory, error);
    // File systems of other machines may not tell their size.
    const bool told = !error && space.capacity != 0 && space.capacity != static_cast<std::uintmax_t>(-1);
    if (told && space.available < bytes)
        throw TablemakerError(directory.string() + ": " + in_bytes(bytes) + " are needed and " +
                              in_bytes(space.available) + " free");
}

std::string in_bytes(u64 bytes) {
    constexpr std::array UNITS{"KB", "MB", "GB", "TB"};
    constexpr double STEP = 1000;
    double amount = static_cast<double>(bytes) / STEP;
    std::size_t unit = 0;
    for (; amount >= STEP && unit + 1 < UNITS.size(); ++unit)
        amount /= STEP;
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", amount, UNITS[unit]);
    return text;
}

}  // namespace quelmar::tablemaker
