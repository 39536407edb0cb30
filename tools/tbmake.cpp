// Makes, packs and checks endgame tables.
#include "protocol/command_line.h"
#include "tablebase/catalogue.h"
#include "tablemaker/compress.h"
#include "tablemaker/error.h"
#include "tablemaker/maker.h"
#include "tablemaker/table_file.h"
#include "tablemaker/verify.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <map>
#include <thread>

namespace {

using namespace quelmar;
using namespace quelmar::tablemaker;

constexpr char USAGE[] = "usage: tbmake make ENDING...     make tables and all they rest on\n"
                         "       tbmake make-all MEN       make all endings of up to MEN men (3..5)\n"
                         "       tbmake compress FILE...   write FILE.emd beside each plain table\n"
                         "       tbmake decompress FILE... write the plain table beside each FILE.emd\n"
                         "       tbmake check FILE...      check sizes, headers, check values and entries\n"
                         "       tbmake verify ENDING...   compare every entry with those its moves lead to\n"
                         "       tbmake stats ENDING...    count the entries, tell the longest wins\n"
                         "options: --dir D     directory of the tables, default the current one\n"
                         "         --compress  make compressed tables\n"
                         "         --jobs N    threads, default one per processor\n"
                         "         --quiet     no progress on standard error\n"
                         "       tbmake --help | --version\n";

constexpr int SMALLEST_MEN = 3, MOST_JOBS = 256;

int processors() {
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, MOST_JOBS);
}

struct Invocation {
    std::vector<std::string> arguments;  // after the command
    std::filesystem::path directory = ".";
    Maker::Options making{false, processors(), true};
};

[[noreturn]] void fail(const std::string& what) {
    throw TablemakerError(what);
}

int number_in(const std::string& text, int least, int most) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most)
        fail("'" + text + "' is not a number from " + std::to_string(least) + " to " + std::to_string(most));
    return value;
}

int ending_called(const std::string& name) {
    if (const int number = ending_by_name(name))
        return number;
    const std::optional<Men> men = men_named(name);
    const int meant = men ? ending_of(*men) : 0;
    fail("there is no ending '" + name + "'" +
         (meant == 0 ? "" : "; it is called " + std::string(ending(meant).name)));
}

bool men_at_most(int number, int men) {
    return ending(number).name.size() <= static_cast<std::size_t>(men);
}

void make(const Invocation& invocation) {
    std::vector<int> endings;
    for (const std::string& name : invocation.arguments)
        endings.push_back(ending_called(name));
    Maker(invocation.directory, invocation.making).make(endings);
}

void make_all(const Invocation& invocation) {
    std::vector<int> endings;
    for (const std::string& men : invocation.arguments)
        for (int number = 1; number <= ENDING_COUNT; ++number)
            if (men_at_most(number, number_in(men, SMALLEST_MEN, static_cast<int>(MAX_MEN))))
                endings.push_back(number);
    Maker(invocation.directory, invocation.making).make(endings);
}

// The directory of a file that is named by itself or with a path.
std::filesystem::path directory_of(const std::string& name) {
    const std::filesystem::path directory = std::filesystem::path(name).parent_path();
    return directory.empty() ? "." : directory;
}

// Sees that every directory has room for what is written beside these files, `part` of their tables' sizes.
void require_room_beside(const std::vector<std::string>& names, u64 divisor) {
    std::map<std::filesystem::path, u64> bytes;
    for (const std::string& name : names)
        bytes[directory_of(name)] += table_size(name) / divisor;
    for (const auto& [directory, needed] : bytes)
        require_room(directory, needed);
}

void compress_file(const std::string& name, const Workers& workers) {
    const std::vector<u8> table = read_table(name);
    if (table.empty())
        fail(name + ": is empty");
    const std::vector<u8> packed = compress_table(table, workers);
    write_file(name + ".emd", packed);
    std::printf("%s: %zu bytes, packed %zu\n", name.c_str(), table.size(), packed.size());
}

void compress(const Invocation& invocation) {
    for (const std::string& name : invocation.arguments)
        if (is_compressed_name(name))
            fail(name + ": is compressed already");
    require_room_beside(invocation.arguments, SMALLEST_PACKED_PART);
    for (const std::string& name : invocation.arguments)
        with_memory_for(name, memory_to_compress(table_size(name)),
                        [&] { compress_file(name, Workers(invocation.making.threads)); });
}

void decompress(const Invocation& invocation) {
    for (const std::string& name : invocation.arguments)
        if (!is_compressed_name(name))
            fail(name + ": is not compressed");
    require_room_beside(invocation.arguments, 1);
    for (const std::string& name : invocation.arguments)
        with_memory_for(name, table_size(name), [&] {
            write_file(std::filesystem::path(name).replace_extension(), read_table(name));
        });
}

void check(const Invocation& invocation) {
    for (const std::string& name : invocation.arguments) {
        with_memory_for(name, table_size(name), [&] { check_table_file(name); });
        std::printf("%s: good\n", name.c_str());
    }
}

void verify_one(const std::string& name, TableStore& store, const Workers& workers) {
    const Verification result = verify_ending(store, ending_called(name), workers);
    for (const std::string& fault : result.first_faults)
        std::printf("%s: %s\n", name.c_str(), fault.c_str());
    std::printf("%s: %llu positions, %llu wrong\n", name.c_str(),
                static_cast<unsigned long long>(result.positions),
                static_cast<unsigned long long>(result.faults));
    if (result.faults != 0)
        fail(name + ": the table contradicts itself");
    store.forget();
}

void verify(const Invocation& invocation) {
    require_directory(invocation.directory);
    TableStore store(invocation.directory);
    for (const std::string& name : invocation.arguments)
        with_memory_for(name, memory_to_verify(ending_called(name)),
                        [&] { verify_one(name, store, Workers(invocation.making.threads)); });
}

void tell_statistics(const std::string& name, TableStore& store) {
    const int number = ending_called(name);
    for (const Side side : {WHITE, BLACK}) {
        if (side == BLACK && ending(number).symmetric)
            continue;
        const TableStatistics table = statistics_of(store.bytes(number, side));
        std::printf("%s %s to move: %llu won (longest %d), %llu drawn, %llu lost (longest %d), %llu no "
                    "position\n",
                    name.c_str(), side == WHITE ? "white" : "black",
                    static_cast<unsigned long long>(table.wins), table.longest_win,
                    static_cast<unsigned long long>(table.draws),
                    static_cast<unsigned long long>(table.losses), table.longest_loss,
                    static_cast<unsigned long long>(table.illegal));
    }
    store.forget();
}

void stats(const Invocation& invocation) {
    require_directory(invocation.directory);
    TableStore store(invocation.directory);
    for (const std::string& name : invocation.arguments)
        with_memory_for(name, memory_to_tell(ending_called(name)), [&] { tell_statistics(name, store); });
}

struct Command {
    std::string_view name;
    void (*run)(const Invocation&);
};
constexpr Command COMMANDS[] = {
    {"make", make},   {"make-all", make_all}, {"compress", compress}, {"decompress", decompress},
    {"check", check}, {"verify", verify},     {"stats", stats}};

Invocation parse(const std::vector<std::string>& words) {
    Invocation invocation;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool takes_value = word == "--dir" || word == "--jobs";
        if (takes_value && i + 1 == words.size())
            fail(word + " needs a value");
        if (word == "--dir")
            invocation.directory = words[++i];
        else if (word == "--jobs")
            invocation.making.threads = number_in(words[++i], 1, MOST_JOBS);
        else if (word == "--compress")
            invocation.making.compress = true;
        else if (word == "--quiet")
            invocation.making.progress = false;
        else if (word.starts_with("--"))
            fail("unknown option " + word);
        else
            invocation.arguments.push_back(word);
    }
    return invocation;
}

int refuse_with_usage() {
    std::fputs(USAGE, stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto status = status_of_options({argv, static_cast<std::size_t>(argc)}, USAGE,
                                              {"--dir=", "--jobs=", "--compress", "--quiet"}))
        return *status;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto command =
        std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                     [&](const Command& candidate) { return !words.empty() && words[0] == candidate.name; });
    if (command == std::end(COMMANDS) || words.size() < 2)
        return refuse_with_usage();
    try {
        const Invocation invocation = parse({words.begin() + 1, words.end()});
        if (invocation.arguments.empty())
            return refuse_with_usage();
        build_index_tables();
        command->run(invocation);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tbmake: %s\n", error.what());
        return 1;
    }
    return 0;
}
