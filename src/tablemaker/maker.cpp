#include "tablemaker/maker.h"

#include "tablebase/catalogue.h"
#include "tablemaker/compress.h"
#include "tablemaker/conversions.h"
#include "tablemaker/error.h"
#include "tablemaker/numbering.h"
#include "tablemaker/solver.h"
#include "tablemaker/table_file.h"
#include "tablemaker/values.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace quelmar::tablemaker {

namespace {

// The solver keeps a value and a conversion per number and side.
constexpr u64 SOLVER_BYTES_PER_NUMBER = 4;

u64 entries(int number, Side side) {
    return side == BLACK && ending(number).symmetric ? 0 : ending(number).entry_count[side];
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

namespace {

constexpr u64 CHUNK = 1 << 15;

// The bytes of a table file, from the values in the maker's own numbering. Whatever is not met is no
// position.
class TableBytes {
public:
    TableBytes(int number, const Men& men, Side side)
        : ending_(number), men_(men), side_(side),
          bytes_(ending(number).entry_count[side], u8{BYTE_ILLEGAL}) {}

    void put(const Squares& squares, int ep_square, u8 value) {
        const u32 index = index_in_table(ending_, men_, squares, side_, ep_square);
        if (index >= bytes_.size())
            throw TablemakerError(std::string(ending(ending_).name) +
                                  ": a legal position lies beyond its table");
        bytes_[index] = static_cast<u8>(byte_of_value(value));
    }

    std::span<const u8> bytes() const { return bytes_; }

private:
    int ending_;
    Men men_;
    Side side_;
    std::vector<u8> bytes_;
};

TableBytes in_table_order(const Solver& solver, int number, const Men& men, Side side,
                          const Workers& workers) {
    TableBytes table(number, men, side);
    const Numbering& numbering = solver.numbering();
    std::atomic<u64> positions{0};
    // Different positions have different indices, so no two threads write the same byte.
    workers.share(numbering.size(), CHUNK, [&](u64 first, u64 last) {
        u64 count = 0;
        for (u64 i = first; i < last; ++i) {
            const u8 value = solver.value(side, static_cast<u32>(i));
            Squares squares{};
            if (value == ILLEGAL || !numbering.squares_of(static_cast<u32>(i), squares))
                continue;
            table.put(squares, NO_EP_SQUARE, value);
            ++count;
        }
        positions += count;
    });
    solver.for_each_en_passant_position(side, [&](const Squares& squares, int victim, u8 value) {
        table.put(squares, victim + pawn_step(side), value);
        ++positions;
    });
    const auto empty = std::count(table.bytes().begin(), table.bytes().end(), u8{BYTE_ILLEGAL});
    if (table.bytes().size() - static_cast<std::size_t>(empty) != positions)
        throw TablemakerError(std::string(ending(number).name) + ": two positions share an index");
    return table;
}

}  // namespace

void Maker::make(const std::vector<int>& endings) {
    require_directory(store_.directory());
    const std::vector<int> missing = endings_to_make(store_, endings);
    if (missing.empty())
        return;
    require_room(store_.directory(), bytes_to_write(store_, missing, options_.compress));
    build_index_tables();
    for (const int number : missing)
        with_memory_for(std::string(ending(number).name), memory_to_make(number, options_.compress),
                        [&] { make_one(number); });
}

void Maker::make_one(int number) {
    const Men men = ending_men(number);
    progress_.start(std::string(ending(number).name));
    {
        Solver solver(store_, men, workers_, progress_);
        solver.solve();
        write_tables(solver, number, men);
    }
    // What the next ending rests on may be quite different, and all together would not fit in memory.
    store_.forget();
}

void Maker::write_tables(const Solver& solver, int number, const Men& men) {
    std::string summary = "done";
    for (const Side side : {WHITE, BLACK}) {
        if (store_.find(number, side) || (side == BLACK && ending(number).symmetric))
            continue;
        progress_.show("sorting");
        const TableBytes table = in_table_order(solver, number, men, side, workers_);
        const TableStatistics statistics = statistics_of(table.bytes());
        summary += std::string(side == WHITE ? ", white" : ", black") + " wins in " +
                   std::to_string(statistics.longest_win);
        const std::string name = std::string(ending(number).name) + (side == WHITE ? ".nbw" : ".nbb");
        if (options_.compress) {
            progress_.show("compressing");
            write_file(store_.directory() / (name + ".emd"), compress_table(table.bytes(), workers_));
        } else {
            write_file(store_.directory() / name, table.bytes());
        }
    }
    progress_.finish(summary);
}

TableStatistics statistics_of(std::span<const u8> table) {
    TableStatistics statistics;
    for (const u8 byte : table) {
        const u8 value = value_of_byte(static_cast<i8>(byte));
        if (value == ILLEGAL) {
            ++statistics.illegal;
        } else if (value == OPEN) {
            ++statistics.draws;
        } else if (is_win(value)) {
            ++statistics.wins;
            statistics.longest_win = std::max(statistics.longest_win, value / 2);
        } else {
            ++statistics.losses;
            statistics.longest_loss = std::max(statistics.longest_loss, value / 2);
        }
    }
    return statistics;
}

}  // namespace quelmar::tablemaker
