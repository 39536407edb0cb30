#include "board/position.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/standard_options.h"
#include "support/block_packer.h"
#include "support/engine.h"
#include "support/temporary_directory.h"
#include "tablebase/block_cache.h"
#include "tablebase/catalogue.h"
#include "tablebase/index.h"
#include "tablebase/index_tables.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

namespace quelmar::testing {
namespace {

namespace fs = std::filesystem;

// Entries that differ from their neighbours and between the sides, without the byte that is no value.
Bytes table_content(std::string_view name, Side side) {
    Bytes bytes(ending(ending_by_name(name)).entry_count[side]);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] =
            static_cast<std::uint8_t>((i / 5 * 37 + i / 8192 * 11 + static_cast<std::size_t>(side)) % 127);
    return bytes;
}

class Tables : public EngineTest {
protected:
    Tables() {
        table_reports = {.faulty_file_is_fatal = true, .tell = tell};
        setup_tablebases("nowhere", 1);
        build_index_tables();  // otherwise made when the first table is found
    }
    ~Tables() override { setup_tablebases("nowhere", 1); }

    fs::path path(const std::string& name) const { return directory_.path() / name; }

    void write(const std::string& name, const Bytes& bytes) const {
        fs::create_directories(path(name).parent_path());
        std::ofstream(path(name), std::ios::binary)  // in place: an open file changes
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    // Packed when the file name says so.
    void write_table(std::string_view name, Side side, const std::string& file) const {
        const Bytes content = table_content(name, side);
        write(file, file.ends_with(".emd") ? pack(content) : content);
    }
    // A file of zeros that takes no room, with a few bytes at one place.
    void write_sparse(const std::string& file, std::uintmax_t size, std::uintmax_t at,
                      const Bytes& bytes) const {
        write(file, {});
        fs::resize_file(path(file), size);
        std::fstream stream(path(file), std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(at));
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    int load(const std::string& subdirectories = "") const {
        settings.tb_path.clear();
        for (std::size_t from = 0; from <= subdirectories.size();) {
            const std::size_t to = std::min(subdirectories.find(';', from), subdirectories.size());
            settings.tb_path.append(from > 0 ? ";" : "")
                .append(path(subdirectories.substr(from, to - from)).string());
            from = to + 1;
        }
        apply_table_path();
        return tb_max_men;
    }
    static bool has(const std::string& name, Side side) {
        return table_record(ending_by_name(name), side).registered();
    }
    static int value(const std::string& name, Side side, u32 index) {
        return read_table_value(ending_by_name(name), side, index);
    }
    static bool is_line(const std::string& said, const std::string& pattern) {
        return ::testing::internal::RE::FullMatch(said, ::testing::internal::RE(pattern + "\n"));
    }
    // What loading prints before it ends the process.
    void expect_fatal(const std::string& pattern) const {
        EXPECT_EXIT(
            {
                dup2(STDERR_FILENO, STDOUT_FILENO);
                load();
            },
            ::testing::ExitedWithCode(1), pattern);
    }

private:
    TemporaryDirectory directory_;
};

// "kqk white a1 h1 c3": the entry of that table with men on these squares, in the order of its name.
u32 index_in(const std::string& text) {
    std::istringstream words(text);
    std::string name, side;
    words >> name >> side;
    const auto next_square = [&words] {
        std::string square = "a1";
        words >> square;
        return static_cast<u8>(square[0] - 'a' + 8 * (square[1] - '1'));
    };
    const int number = ending_by_name(name);
    Table<SideSquares, 2> men{};
    for (int group = 0; group < 2; ++group) {
        men[group].king = next_square();
        for (int row = QUEEN - 1; row >= 0; --row)
            for (u8& count = men[group].count[row]; count < ending(number).men[group][row + 1]; ++count)
                men[group].men[row][count] = next_square();
    }
    const int ep_square = words >> name && name == "ep" ? next_square() : NO_EP_SQUARE;
    return table_index(number, side == "white" ? WHITE : BLACK, men[0], men[1], ep_square, 0);
}

// What stands there; NO_VALUE for "none".
int value_in(const std::string& text) {
    const std::string name = text.substr(0, text.find(' '));
    const Side side = text.find(" white ") != std::string::npos ? WHITE : BLACK;
    return name == "none" ? NO_VALUE : read_table_value(ending_by_name(name), side, index_in(text));
}

TEST_F(Tables, WithoutFilesThereAreNone) {
    EXPECT_EQ(load("nowhere"), 0);
    Score score = 77;
    set_up("8/8/8/8/8/2k5/8/K6Q w - -");
    EXPECT_FALSE(probe_tablebase(score));
    EXPECT_EQ(score, 77);
    write("file", {1});
    EXPECT_EQ(load("file"), 0);  // no directory
}

TEST_F(Tables, EveryNameInOrderOfPreference) {
    write_table("kbk", WHITE, "a/kbk.nbw.emd");
    write_table("kbk", BLACK, "a/kbk_nbb.emd");
    write_table("knk", WHITE, "a/knknbw.emd");
    write_table("kqk", WHITE, "a/kqk.nbw");
    write("a/kqk.nbw.emd", {1, 2, 3});  // not looked at
    write("b/kbk.nbw", {1, 2, 3});      // nor this: the first directory wins
    write_table("kpk", BLACK, "b/kpk.nbb");
    fs::create_directories(path("a/krk.nbw"));  // no regular file
    EXPECT_EQ(load("a;b"), 3);
    EXPECT_TRUE(has("kbk", WHITE) && has("kbk", BLACK) && has("knk", WHITE) && has("kqk", WHITE) &&
                has("kpk", BLACK));
    EXPECT_FALSE(has("knk", BLACK) || has("kqk", BLACK) || has("krk", WHITE));
    const Bytes bishops = table_content("kbk", WHITE), knights = table_content("knk", WHITE);
    for (u32 index = 0; index < bishops.size(); index += 97)
        ASSERT_EQ(value("kbk", WHITE, index), bishops[index] == 0 ? 0 : bishops[index] + 32640) << index;
    EXPECT_EQ(value("knk", WHITE, 20000), knights[20000] + 32640);
    EXPECT_EQ(value("kbk", WHITE, static_cast<u32>(bishops.size())), NO_VALUE);
    EXPECT_EQ(load("b/c"), 0);
    EXPECT_FALSE(has("kbk", WHITE));  // a second path replaces the first
}

TEST_F(Tables, EmptyNameIsTheCurrentDirectory) {
    write_table("knkn", WHITE, "knkn.nbw");
    const fs::path before = fs::current_path();
    fs::current_path(path(""));
    setup_tablebases("", 1);
    fs::current_path(before);
    EXPECT_EQ(tb_max_men, 4);
}

TEST_F(Tables, BrokenFilesAreFatal) {
    Bytes content = table_content("kqk", WHITE);
    const Bytes packed = pack(content);
    Bytes damaged = packed;
    damaged[90] ^= 1;
    const Bytes small_blocks = pack(content, 12);
    content.push_back(0);
    const Bytes cut(packed.begin(), packed.end() - 1);
    Bytes grown = packed;
    grown.push_back(0);
    Bytes other_banner = packed;
    other_banner[5] = 7;
    const struct {
        const char* file;
        Bytes bytes;
        const char* pattern;
    } cases[] = {
        {"kqk.nbw", content, "\\*\\*\\* .*/kqk.nbw corrupted"},
        {"kqk.nbw", Bytes(), "\\*\\*\\* .*/kqk.nbw corrupted"},
        {"kqk.nbw.emd", pack(content), "\\*\\*\\* .*/kqk.nbw.emd corrupted"},
        {"kqk.nbw.emd", damaged, "\\*\\*\\* Unable to read .*/kqk.nbw.emd - file broken"},
        {"kqk.nbw.emd", other_banner, "\\*\\*\\* Unable to read .*/kqk.nbw.emd - read error"},
        {"kqk_nbw.emd", Bytes(packed.begin(), packed.begin() + 85), "kqk_nbw.emd - read error"},
        {"kqk.nbw.emd", cut, "\\*\\*\\* .*/kqk.nbw.emd corrupted"},
        {"kqk.nbw.emd", grown, "\\*\\*\\* .*/kqk.nbw.emd corrupted"},
        {"kqk.nbw.emd", small_blocks, "\\*\\*\\* .*/kqk.nbw.emd: Unsupported block size 4096"},
    };
    for (const auto& [file, bytes, pattern] : cases) {
        write(file, bytes);
        expect_fatal(pattern);
        table_reports.faulty_file_is_fatal = false;
        write_table("krk", WHITE, "krk.nbw");
        const std::string said = printed_by([this] { EXPECT_EQ(load(), 3); });
        EXPECT_TRUE(is_line(said, "# .*/" + std::string(file) + " is left out: .+")) << said;
        EXPECT_TRUE(!has("kqk", WHITE) && has("krk", WHITE)) << pattern;
        table_reports.faulty_file_is_fatal = true;
        fs::remove(path(file));
    }
}

TEST_F(Tables, TheStandardFaceTellsWhatItHas) {
    protocol_state.standard_uci = protocol_state.uci_mode = true;
    const auto told = [this](const std::string& option, const std::string& folder) {
        return printed_by([&] { set_standard_option("name " + option + " value " + folder); });
    };
    for (const char* file : {"a/kqk.nbw", "a/kqk.nbb", "b/knkn.nbw"})
        write_table(std::string_view(file).substr(2, std::string_view(file).find('.') - 2),
                    file[std::string_view(file).size() - 1] == 'w' ? WHITE : BLACK, file);
    const std::string a = path("a").string(), b = path("b").string(), none = path("none").string();
    EXPECT_EQ(told("NalimovPath", a), "info string 2 tables of up to 3 men in " + a + "\n");
    EXPECT_EQ(told("NalimovPath", b), "info string 1 table of up to 4 men in " + b + "\n");
    EXPECT_EQ(told("NalimovPath", none),
              "info string there is no directory " + none + "\ninfo string no tables in " + none + "\n");
    EXPECT_EQ(told("NalimovCache", "2"),
              "info string there is no directory " + none + "\ninfo string no tables in " + none + "\n");
    EXPECT_NE(told("NalimovPath", std::string(258, 'x')).find("longer than 257 characters"),
              std::string::npos);
    EXPECT_EQ(settings.tb_path, none);
}

TEST_F(Tables, CacheSizesAreClamped) {
    write_table("kqk", WHITE, "kqk.nbw");
    for (const int megabytes : {0, -5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        settings.tb_cache_mb = megabytes;
        const std::string said = printed_by([this] { EXPECT_EQ(load(), 3); });
        EXPECT_EQ(said, "# tbcache of " + std::to_string(megabytes) + " MB is not available, using " +
                            std::to_string(settings.tb_cache_mb) + " MB\n");
        EXPECT_TRUE(megabytes > 0 ? settings.tb_cache_mb > 1 : settings.tb_cache_mb == 1);
        EXPECT_NE(value("kqk", WHITE, 1), NO_VALUE);
    }
}

TEST_F(Tables, ValuesBecomeScores) {
    const u32 index = index_in("kqk white a1 h1 c3");
    const struct {
        std::uint8_t byte;
        bool found;
        Score score;  // at search ply 3
    } cases[] = {{126, true, 29996},  {125, true, 29994},  {1, true, 29746},    {0, true, 0},
                 {127, false, 0},     {130, true, -29997},  // -126: mated
                 {131, true, -29995}, {255, true, -29747}, {129, true, -29745}, {128, true, 29744}};
    for (const auto& [byte, found, score] : cases) {
        Bytes content = table_content("kqk", WHITE);
        content[index] = byte;
        write("kqk.nbw", content);
        ASSERT_EQ(load(), 3);
        set_up("8/8/8/8/8/2k5/8/K6Q w - -");
        position.search_ply = 3;
        Score result = 0;
        EXPECT_EQ(probe_tablebase(result), found) << int{byte};
        EXPECT_EQ(result, score) << int{byte};
        position.search_ply = 0;
    }
}

// tests/data/tables.txt says how a line reads.
TEST_F(Tables, PositionsAskForTheirEntry) {
    for (const char* name : {"kpk", "krkp", "kpkp", "kqkr", "knkn", "kqk"})
        for (const Side side : {WHITE, BLACK})
            if (side == WHITE || (name != std::string("kqk") && !ending(ending_by_name(name)).symmetric))
                write_table(name, side, name + std::string(side == WHITE ? ".nbw" : ".nbb"));
    ASSERT_EQ(load(), 4);
    for (const Words& fields : data_rows("tables.txt")) {
        ASSERT_EQ(fields.size(), 3U) << fields[0];
        SCOPED_TRACE(fields[0] + ": " + fields[2]);
        const bool exception = fields[0].front() == '!';
        const std::size_t moves = std::min(fields[0].find(" moves "), fields[0].size());
        const std::string fen = fields[0].substr(exception ? 1 : 0, moves - (exception ? 1 : 0));
        for (const bool exchanged : {false, true}) {
            if (exchanged && exception)
                continue;
            set_up(exchanged ? mirrored_fen(fen) : fen);
            if (moves < fields[0].size())
                play(fields[0].substr(moves + 7));
            position.search_ply = 0;
            Score score = 77;
            const bool found = probe_tablebase(score);
            const int expected = value_in(fields[1]);
            EXPECT_EQ(found, expected != NO_VALUE);
            EXPECT_EQ(score, !found ? 77 : expected == 0 ? 0 : 2 * expected - 35533);
        }
    }
}

TEST_F(Tables, WideAndHugeTables) {
    // Offsets beyond 2 and 4 GB in files that are almost all holes.
    write_sparse("krbkbb.nbw", 2822371200, 2822371199, {100});
    write_sparse("krnknn.nbw", 2723107830 * std::uintmax_t{2}, 2723107829 * std::uintmax_t{2}, {0x34, 0x92});
    write_sparse("kppkp.nbb", 89391280, 56802427, {7, 9, 8});
    ASSERT_EQ(load(), 6);
    EXPECT_EQ(value("krbkbb", WHITE, 2822371199), 100 + 32640);
    EXPECT_EQ(value("krbkbb", WHITE, 2822371200), NO_VALUE);
    EXPECT_EQ(value("krnknn", WHITE, 2723107829), 0x9234 - 0x10000);
    EXPECT_EQ(value("kppkp", BLACK, 56802427), 7 + 32640);
    EXPECT_EQ(value("kppkp", BLACK, 56802428), -32639);  // known better than the table
    EXPECT_EQ(value("kppkp", BLACK, 56802429), 8 + 32640);
}

TEST_F(Tables, CacheReplacesTheOldestBlock) {
    write_table("knkn", WHITE, "knkn.nbw");
    ASSERT_EQ(load(), 4);
    constexpr u32 ENTRIES = (1 << 20) / CACHE_ENTRY_SIZE;
    ASSERT_EQ(ENTRIES, 126u);
    std::vector<int> first(ENTRIES);
    for (u32 block = 0; block < ENTRIES; ++block)
        first[block] = value("knkn", BLACK, block * TABLE_BLOCK_SIZE + 40);
    write("knkn.nbw", Bytes(1603202, 127));  // from here on the file has no values
    for (u32 block = 0; block < ENTRIES; ++block)
        ASSERT_EQ(value("knkn", WHITE, block * TABLE_BLOCK_SIZE + 40), first[block]);
    EXPECT_EQ(value("knkn", WHITE, 40), first[0]);  // block 0 is the newest now
    EXPECT_EQ(value("knkn", WHITE, 150 * TABLE_BLOCK_SIZE), NO_VALUE);
    EXPECT_EQ(value("knkn", WHITE, 40), first[0]);
    EXPECT_EQ(value("knkn", WHITE, 2 * TABLE_BLOCK_SIZE + 40), first[2]);
    EXPECT_EQ(value("knkn", WHITE, 1 * TABLE_BLOCK_SIZE + 40), NO_VALUE);  // was the oldest
    EXPECT_TRUE(has("knkn", WHITE));
    for (u32 i = 0; i < 5000; ++i)  // lists stay whole under any order
        value("knkn", WHITE, i * 7919 % 196 * TABLE_BLOCK_SIZE);
}

TEST_F(Tables, FilesThatGoBadAreDropped) {
    const auto reload = [&] {
        for (const char* name : {"kqk", "krk"})
            write_table(name, WHITE, name + std::string(".nbw"));
        write_table("kbk", WHITE, "kbk.nbw.emd");
        ASSERT_EQ(load(), 3);
    };
    reload();
    fs::remove(path("kqk.nbw"));  // before it was opened
    EXPECT_EQ(value("kqk", WHITE, 6), NO_VALUE);
    EXPECT_FALSE(has("kqk", WHITE));
    EXPECT_NE(value("krk", WHITE, 6), NO_VALUE);  // the others live on

    reload();
    EXPECT_NE(value("kqk", WHITE, 6), NO_VALUE);
    fs::resize_file(path("kqk.nbw"), 8192 + 100);
    EXPECT_NE(value("kqk", WHITE, 8191), NO_VALUE);  // still cached
    EXPECT_EQ(value("kqk", WHITE, 8192), NO_VALUE);
    EXPECT_FALSE(has("kqk", WHITE));

    reload();
    fs::resize_file(path("kbk.nbw.emd"), fs::file_size(path("kbk.nbw.emd")) - 1);
    EXPECT_NE(value("kbk", WHITE, 6), NO_VALUE);
    EXPECT_EQ(value("kbk", WHITE, 27242), NO_VALUE);
    EXPECT_FALSE(has("kbk", WHITE));
}

// Whatever byte of the blocks or of their check values is wrong: no wrong value, and one line.
TEST_F(Tables, DamagedBlocksDropTheirTable) {
    const Bytes content = table_content("kbk", WHITE), packed = pack(content);
    const std::size_t index_size = std::size_t{packed[66]} << 8 | packed[67];
    constexpr std::size_t CHECKS = 80, BLOCKS = 4;
    std::vector<std::size_t> places;
    for (std::size_t at = CHECKS; at < CHECKS + BLOCKS * 8; at += 4)
        places.push_back(at);
    for (std::size_t at = index_size; at < packed.size(); at += packed.size() / 150)
        places.push_back(at);
    for (const std::size_t at : places) {
        Bytes damaged = packed;
        damaged[at] ^= 0x10;
        seal_index(damaged, index_size);
        write("kbk.nbw.emd", damaged);
        ASSERT_EQ(load(), 3);
        std::size_t lost = 0;
        const std::string said = printed_by([&] {
            for (u32 index = 40; index < content.size(); index += TABLE_BLOCK_SIZE) {
                const int found = value("kbk", WHITE, index);
                lost += found == NO_VALUE;
                EXPECT_TRUE(found == NO_VALUE || found == (content[index] == 0 ? 0 : content[index] + 32640));
            }
        });
        EXPECT_GT(lost, 0U) << at;
        EXPECT_FALSE(has("kbk", WHITE)) << at;
        EXPECT_TRUE(is_line(said, "# .*/kbk.nbw.emd is left out from now on: .+")) << said;
    }
}

int open_files() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

TEST_F(Tables, FileHandlesAreGivenBackAndRunOutGracefully) {
    const int before = open_files();
    for (const char* name : {"kqk", "krk"})
        write_table(name, WHITE, name + std::string(".nbw"));
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(load(), 3);
        EXPECT_NE(value("kqk", WHITE, 6), NO_VALUE);
    }
    EXPECT_EQ(open_files(), before + 1);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit tight{static_cast<rlim_t>(before) + 1, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
    std::vector<int> taken;
    for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = open("/dev/null", O_RDONLY))
        taken.push_back(fd);
    EXPECT_NE(value("krk", WHITE, 6), NO_VALUE);  // in the place of the other table's file
    EXPECT_NE(value("kqk", WHITE, 20000), NO_VALUE);
    for (const int fd : taken)
        close(fd);
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
}  // namespace quelmar::testing
