#include "tablebase/registry.h"

#include "platform/platform.h"
#include "tablebase/catalogue.h"
#include "tablebase/index.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

namespace quelmar {
namespace {

Table<Table<TableRecord, 2>, ENDING_COUNT> records;
BlockDecoder workspace;
int compressed_files = 0;  // registered since the program started

[[noreturn]] void fail(const std::string& message) {
    std::fputs(message.c_str(), stdout);
    std::exit(1);
}

std::string quote(const char* before, const TableString& path, const std::string& after) {
    return std::string(before).append(path).append(after);
}

// A file that cannot be right: `message` ends the program, unless it plays on without the table, for
// `reason`. Always false.
bool refuse_table(const TableString& path, const std::string& message, const std::string& reason) {
    if (table_reports.faulty_file_is_fatal)
        fail(message);
    table_reports.tell(quote("", path, " is left out: " + reason));
    return false;
}

// A tree of ten levels, one per count. A node is the largest count it knows and then, per count, where the
// next node begins; the nodes of the last level hold endings instead.
class MaterialTree {
public:
    MaterialTree() { add_node(0, MEN_BESIDE_KINGS); }

    // The ending's place, nullptr when the tree has no path for so many men.
    i32* find(const MaterialCounts& counts) {
        std::size_t node = 0;
        for (int level = 0; level < counts.size(); ++level) {
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

    i32 add_node(int level, int men_left) {
        const std::size_t node = nodes_.size();
        nodes_.resize(node + 2 + static_cast<std::size_t>(men_left), 0);
        nodes_[node] = men_left;
        if (level + 1 < MaterialCounts::size())
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
MaterialCounts material_of(int number, int white) {
    MaterialCounts counts{};
    for (int kind = PAWN; kind <= QUEEN; ++kind) {
        counts[kind - 1] = ending(number).men[white][kind];
        counts[kind + 4] = ending(number).men[1 - white][kind];
    }
    return counts;
}

bool enter_material(int number, const TableString& path) {
    for (const int white : {0, 1}) {
        i32* const leaf = material_tree().find(material_of(number, white));
        if (leaf == nullptr)
            return refuse_table(path, quote("*** Unable to register ", path, "\n"),
                                "nobody can have such men");
        // An ending that equals its exchange of colours is looked up for the side that is to move.
        const bool is_own_exchange = white == 1 && material_of(number, 0) == material_of(number, 1);
        if (!is_own_exchange)
            *leaf = white == 0 ? number : -number;
    }
    return true;
}

// A file found for a table, while it is judged.
struct Candidate {
    TableString path;
    FileHandle file;
    bool compressed = false;
    std::unique_ptr<CompressedTableInfo> info;  // of a compressed one
    i64 entries = 0;
};

bool corrupted(const Candidate& candidate, const std::string& reason) {
    return refuse_table(candidate.path, quote("*** ", candidate.path, " corrupted\n"), reason);
}

// Bytes, -1 when they cannot be told.
i64 length_of(std::FILE* file) {
    return fseeko(file, 0, SEEK_END) == 0 ? ftello(file) : -1;
}

bool read_header(Candidate& candidate) {
    ++compressed_files;
    candidate.info.reset(new (std::nothrow) CompressedTableInfo);
    const int code =
        candidate.info ? read_compressed_header(candidate.file.get(), *candidate.info) : FILE_NO_MEMORY;
    const char* const words = error_words(code);
    if (words != nullptr)
        return refuse_table(candidate.path, quote("*** Unable to read ", candidate.path, " - ").append(words),
                            words);
    const u32 block_size = candidate.info->block_size;
    if (block_size != TABLE_BLOCK_SIZE)
        return refuse_table(
            candidate.path,
            quote("*** ", candidate.path, ": Unsupported block size " + std::to_string(block_size) + "\n"),
            "its blocks have " + std::to_string(block_size) + " bytes");
    return true;
}

bool count_entries(Candidate& candidate, const Ending& table, Side side) {
    const u32 expected = table.entry_count[side];
    if (candidate.compressed) {
        const CompressedTableInfo& info = *candidate.info;
        const i64 bytes = (i64{info.block_count} - 1) * TABLE_BLOCK_SIZE + info.last_block_length;
        candidate.entries = table.wide ? bytes / 2 : bytes;
    } else {
        candidate.entries = table.wide ? i64{expected} : length_of(candidate.file.get());
        if (candidate.entries < 0)
            return refuse_table(candidate.path, quote("*** Seek in ", candidate.path, " failed\n"),
                                "its length cannot be told");
    }
    if (expected != 0 && candidate.entries != i64{expected})
        return corrupted(candidate, "it has " + std::to_string(candidate.entries) + " entries instead of " +
                                        std::to_string(expected));
    return true;
}

// A packed file ends with its last block: one that was cut or has grown is not what was packed.
bool ends_with_last_block(const Candidate& candidate) {
    if (!candidate.compressed)
        return true;
    const i64 length = length_of(candidate.file.get());
    const auto expected = static_cast<i64>(candidate.info->file_size());
    return length == expected || corrupted(candidate, "it has " + std::to_string(length) +
                                                          " bytes instead of " + std::to_string(expected));
}

// Finds the table's file under one of its names, the plain one first.
bool find_table_file(std::string_view directory, int number, Side side, Candidate& candidate) {
    const char* const letter = side == WHITE ? "w" : "b";
    for (const auto& [before, after] :
         {std::pair{".nb", ""}, {".nb", ".emd"}, {"_nb", ".emd"}, {"nb", ".emd"}}) {
        TableString& path = candidate.path;
        path = directory;
        if (!directory.empty())
            path += '/';
        path += ending(number).name;
        path.append(before).append(letter).append(after);
        candidate.compressed = *after != '\0';
        candidate.file = open_table_file(path.c_str());
        if (candidate.file)
            return true;
    }
    return false;
}

void forget_everything() {
    close_table_files();
    for (auto& sides : records)
        for (TableRecord& table : sides)
            table = TableRecord{};
    workspace = BlockDecoder{};
}

}  // namespace

std::vector<std::string_view> table_directories(std::string_view path_list) {
    std::vector<std::string_view> directories;
    for (std::size_t from = 0; from <= path_list.size();) {
        const std::size_t to =
            std::min(path_list.find_first_of(platform::list_separators(), from), path_list.size());
        directories.push_back(path_list.substr(from, to - from));
        from = to + 1;
    }
    return directories;
}

int init_tablebases(std::string_view path_list) {
    material_tree();
    forget_everything();
    int highest = 0;
    for (const std::string_view directory : table_directories(path_list))
        for (int number = 1; number <= ENDING_COUNT; ++number) {
            bool found = register_table(directory, number, WHITE);
            if (!ending(number).symmetric)
                found |= register_table(directory, number, BLACK);
            highest = found ? std::max(highest, number) : highest;
        }
    if (compressed_files > 0)
        if (const int code = create_block_decoder(TABLE_BLOCK_SIZE, workspace);
            code != FILE_OK && table_reports.faulty_file_is_fatal)
            fail("*** Cannot allocate decode block: error code " + std::to_string(code) + "\n");
    return men_of_ending(highest);
}

bool register_table(std::string_view directory, int number, Side side) {
    TableRecord& table = table_record(number, side);
    if (table.registered())
        return true;
    Candidate found;
    if (!find_table_file(directory, number, side, found) || (found.compressed && !read_header(found)) ||
        !count_entries(found, ending(number), side) || !ends_with_last_block(found) ||
        !enter_material(number, found.path))
        return false;
    build_index_tables();  // not before a table is there: numbering all positions is most of the start-up
    table.path = std::move(found.path);
    table.block_directory.assign(BLOCK_CHAINS, 0);
    table.decoder_info = std::move(found.info);
    table.entry_count = narrow<u32>(found.entries);
    return true;
}

int count_registered_tables() {
    int count = 0;
    for (const auto& sides : records)
        count += static_cast<int>(std::count_if(sides.begin(), sides.end(),
                                                [](const TableRecord& table) { return table.registered(); }));
    return count;
}

int ending_by_material(const MaterialCounts& counts) {
    const i32* const leaf = material_tree().find(counts);
    return leaf == nullptr ? 0 : *leaf;
}

TableRecord& table_record(int number, Side side) {
    const Side table_side = ending(number).symmetric ? WHITE : side;
    return records[number - 1][table_side];
}

void drop_table(TableRecord& table, const char* reason) {
    table_reports.tell(quote("", table.path, std::string(" is left out from now on: ") + reason));
    table.file.reset();
    table.path.clear();
}

FileHandle open_table_file(const char* path) {
    // Opening a pipe would wait for a writer, and a directory has no size.
    if (!platform::is_regular_file(path))
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
