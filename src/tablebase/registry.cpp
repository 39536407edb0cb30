#include "tablebase/registry.h"

#include "tablebase/catalogue.h"
#include "tablebase/index.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <new>
#include <sys/stat.h>

namespace quelmar {
namespace {

std::array<std::array<TableRecord, 2>, ENDING_COUNT> records;
BlockDecoder workspace;
int compressed_files = 0;  // registered since the program started

[[noreturn, gnu::format(printf, 1, 2)]] void fail(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::exit(1);
}

// A tree of ten levels, one per count. A node is the largest count it knows and then, per count, where the
// next node begins; the nodes of the last level hold endings instead.
class MaterialTree {
public:
    MaterialTree() { add_node(0, MEN_BESIDE_KINGS); }

    // The ending's place, nullptr when the tree has no path for so many men.
    i32* find(const MaterialCounts& counts) {
        std::size_t node = 0;
        for (std::size_t level = 0; level < counts.size(); ++level) {
            if (counts[level] > nodes_[node])
                return nullptr;
            i32& child = nodes_[node + 1 + counts[level]];
            if (level + 1 == counts.size())
                return &child;
            node = static_cast<std::size_t>(child);
        }
        return nullptr;
    }

private:
    static constexpr int MEN_BESIDE_KINGS = 4;

    i32 add_node(std::size_t level, int men_left) {
        const std::size_t node = nodes_.size();
        nodes_.resize(node + 2 + static_cast<std::size_t>(men_left), 0);
        nodes_[node] = men_left;
        if (level + 1 < MaterialCounts{}.size())
            for (int count = 0; count <= men_left; ++count) {
                const i32 child = add_node(level + 1, men_left - count);
                nodes_[node + 1 + static_cast<std::size_t>(count)] = child;
            }
        return static_cast<i32>(node);
    }

    TableVector<i32> nodes_;
};

MaterialTree& material_tree() {
    static MaterialTree tree;
    return tree;
}

// `white` is the group of the name that White has.
MaterialCounts material_of(int number, std::size_t white) {
    MaterialCounts counts{};
    for (std::size_t kind = PAWN; kind <= QUEEN; ++kind) {
        counts[kind - 1] = ending(number).men[white][kind];
        counts[kind + 4] = ending(number).men[1 - white][kind];
    }
    return counts;
}

void enter_material(int number, const char* path) {
    for (const std::size_t white : {0u, 1u}) {
        i32* const leaf = material_tree().find(material_of(number, white));
        if (leaf == nullptr)
            fail("*** Unable to register %s\n", path);
        // An ending that equals its exchange of colours is looked up for the side that is to move.
        const bool is_own_exchange = white == 1 && material_of(number, 0) == material_of(number, 1);
        if (!is_own_exchange)
            *leaf = white == 0 ? number : -number;
    }
}

[[noreturn]] void fail_unreadable(const char* path, int code) {
    switch (error_class(code)) {
    case FILE_NO_MEMORY:
        fail("*** Unable to read %s - out of memory", path);
    case FILE_READ_ERROR:
        fail("*** Unable to read %s - read error", path);
    case FILE_MALFORMED:
        fail("*** Unable to read %s - file broken", path);
    default:
        fail("*** Unable to read %s - error %d\n", path, code);
    }
}

i64 count_plain_entries(std::FILE* file, const char* path, const Ending& table, Side side) {
    if (table.wide)
        return table.entry_count[static_cast<std::size_t>(side)];
    if (fseeko(file, 0, SEEK_END) != 0)
        fail("*** Seek in %s failed\n", path);
    return ftello(file);
}

i64 count_compressed_entries(std::FILE* file, const char* path, const Ending& table,
                             std::unique_ptr<CompressedTableInfo>& info) {
    ++compressed_files;
    info.reset(new (std::nothrow) CompressedTableInfo);
    const int code = info ? read_compressed_header(file, *info) : FILE_NO_MEMORY;
    if (code != FILE_OK)
        fail_unreadable(path, code);
    if (info->block_size != TABLE_BLOCK_SIZE)
        fail("*** %s: Unsupported block size %u\n", path, info->block_size);
    const i64 bytes = (i64{info->block_count} - 1) * TABLE_BLOCK_SIZE + info->last_block_length;
    return table.wide ? bytes / 2 : bytes;
}

// Finds the table's file under one of its names, the plain one first.
FileHandle find_table_file(std::string_view directory, int number, Side side, TableString& path,
                           bool& compressed) {
    const char* const letter = side == WHITE ? "w" : "b";
    for (const auto& [before, after] :
         {std::pair{".nb", ""}, {".nb", ".emd"}, {"_nb", ".emd"}, {"nb", ".emd"}}) {
        path = directory;
        if (!directory.empty())
            path += '/';
        path += ending(number).name;
        path.append(before).append(letter).append(after);
        compressed = *after != '\0';
        if (FileHandle file = open_table_file(path.c_str()))
            return file;
    }
    return nullptr;
}

void forget_everything() {
    close_table_files();
    for (auto& sides : records)
        for (TableRecord& table : sides)
            table = TableRecord{};
    workspace = BlockDecoder{};
}

}  // namespace

int init_tablebases(std::string_view path_list) {
    build_index_tables();
    material_tree();
    forget_everything();
    int highest = 0;
    for (std::size_t from = 0; from <= path_list.size();) {
        const std::size_t to = std::min(path_list.find_first_of(",;:", from), path_list.size());
        const std::string_view directory = path_list.substr(from, to - from);
        for (int number = 1; number <= ENDING_COUNT; ++number) {
            bool found = register_table(directory, number, WHITE);
            if (!ending(number).symmetric)
                found |= register_table(directory, number, BLACK);
            highest = found ? std::max(highest, number) : highest;
        }
        from = to + 1;
    }
    if (compressed_files > 0)
        if (const int code = create_block_decoder(TABLE_BLOCK_SIZE, workspace); code != FILE_OK)
            fail("*** Cannot allocate decode block: error code %d\n", code);
    return men_of_ending(highest);
}

bool register_table(std::string_view directory, int number, Side side) {
    TableRecord& table = table_record(number, side);
    if (table.registered())
        return true;
    TableString path;
    bool compressed = false;
    const FileHandle file = find_table_file(directory, number, side, path, compressed);
    if (!file)
        return false;
    std::unique_ptr<CompressedTableInfo> info;
    const i64 count = compressed ? count_compressed_entries(file.get(), path.c_str(), ending(number), info)
                                 : count_plain_entries(file.get(), path.c_str(), ending(number), side);
    const u32 expected = ending(number).entry_count[static_cast<std::size_t>(side)];
    if (expected != 0 && count != i64{expected})
        fail("*** %s corrupted\n", path.c_str());
    enter_material(number, path.c_str());
    table.path = path;
    table.block_directory.assign(BLOCK_CHAINS, 0);
    table.decoder_info = std::move(info);
    table.entry_count = narrow<u32>(count);
    return true;
}

int ending_by_material(const MaterialCounts& counts) {
    const i32* const leaf = material_tree().find(counts);
    return leaf == nullptr ? 0 : *leaf;
}

TableRecord& table_record(int number, Side side) {
    const Side table_side = ending(number).symmetric ? WHITE : side;
    return records[static_cast<std::size_t>(number - 1)][static_cast<std::size_t>(table_side)];
}

void forget_table(TableRecord& table) {
    table.file.reset();
    table.path.clear();
}

FileHandle open_table_file(const char* path) {
    // Opening a pipe would wait for a writer, and a directory has no size.
    struct stat status {};
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    FileHandle file(std::fopen(path, "rb"));
    if (file)
        std::setvbuf(file.get(), nullptr, _IONBF, 0);  // whole blocks are read
    return file;
}

void close_table_files() {
    for (auto& sides : records)
        for (TableRecord& table : sides)
            table.file.reset();
}

BlockDecoder& decode_workspace() {
    return workspace;
}

}  // namespace quelmar
