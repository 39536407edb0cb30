#include "board/position.h"
#include "protocol/dialect.h"
#include "protocol/settings.h"
#include "protocol/standard_options.h"
#include "support/block_packer.h"
#include "support/engine.h"
#include "tablebase/block_cache.h"
#include "tablebase/catalogue.h"
#include "tablebase/index.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <regex>
#include <sys/resource.h>
#include <unistd.h>

namespace quelmar::testing {
namespace {

namespace fs = std::filesystem;

// Entries that differ from their neighbours and between the sides, without the byte that is no value.
Bytes table_content(std::string_view name, Side side) {
    Bytes bytes(ending(ending_by_name(name)).entry_count[static_cast<std::size_t>(side)]);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] =
            static_cast<std::uint8_t>((i / 5 * 37 + i / 8192 * 11 + static_cast<std::size_t>(side)) % 127);
    return bytes;
}

class Tables : public EngineTest {
protected:
    Tables() : directory_(fs::temp_directory_path() / ("quelmar" + std::to_string(getpid()))) {
        fs::create_directories(directory_);
        setup_tablebases();  // the index tables are there from the first start on
    }
    ~Tables() override {
        settings.tb_path = directory_ / "empty";
        setup_tablebases();
        fs::remove_all(directory_);
    }

    fs::path path(const std::string& name) const { return directory_ / name; }

    void write(const std::string& name, const Bytes& bytes) const {
        fs::create_directories(path(name).parent_path());
        std::ofstream(path(name), std::ios::binary)
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
            settings.tb_path += (from > 0 ? ";" : "") + path(subdirectories.substr(from, to - from)).string();
            from = to + 1;
        }
        setup_tablebases();
        return tb_max_men;
    }
    static bool has(const std::string& name, Side side) {
        return table_record(ending_by_name(name), side).registered();
    }
    static int value(const std::string& name, Side side, u32 index) {
        return read_table_value(ending_by_name(name), side, index);
    }
    // What the program prints meanwhile.
    template <typename Action> static std::string said_while(Action action) {
        ::testing::internal::CaptureStdout();
        action();
        std::fflush(stdout);
        return ::testing::internal::GetCapturedStdout();
    }
    static bool is_line(const std::string& said, const std::string& pattern) {
        return std::regex_match(said, std::regex(pattern + "\n"));
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
    fs::path directory_;
};

u32 index_in(const char* name, Side side, std::initializer_list<int> first, std::initializer_list<int> second,
             int ep_square = NO_EP_SQUARE) {
    // Squares in the order of the letters, king first; kinds once each.
    std::array<SideSquares, 2> men;
    for (std::size_t group = 0; group < 2; ++group) {
        const auto& squares = group == 0 ? first : second;
        men[group].king = static_cast<u8>(*squares.begin());
        std::size_t next = 1;
        for (std::size_t kind = QUEEN; kind >= PAWN; --kind)
            for (int i = 0; i < ending(ending_by_name(name)).men[group][kind]; ++i)
                men[group].men[kind - 1][men[group].count[kind - 1]++] =
                    static_cast<u8>(*(squares.begin() + next++));
    }
    return table_index(ending_by_name(name), side, men[0], men[1], ep_square, 0);
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
    settings.tb_path = "";
    setup_tablebases();
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
        dialect.plays_on_without_table = true;
        write_table("krk", WHITE, "krk.nbw");
        const std::string said = said_while([this] { EXPECT_EQ(load(), 3); });
        EXPECT_TRUE(is_line(said, "# .*/" + std::string(file) + " is left out: .+")) << said;
        EXPECT_TRUE(!has("kqk", WHITE) && has("krk", WHITE)) << pattern;
        dialect.plays_on_without_table = false;
        fs::remove(path(file));
    }
}

TEST_F(Tables, TheStandardFaceTellsWhatItHas) {
    const auto told = [this](const std::string& option, const std::string& folder) {
        return said_while([&] { set_standard_option("name " + option + " value " + folder); });
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
        const std::string said = said_while([this] { EXPECT_EQ(load(), 3); });
        EXPECT_EQ(said, "# tbcache of " + std::to_string(megabytes) + " MB is not available, using " +
                            std::to_string(settings.tb_cache_mb) + " MB\n");
        EXPECT_TRUE(megabytes > 0 ? settings.tb_cache_mb > 1 : settings.tb_cache_mb == 1);
        EXPECT_NE(value("kqk", WHITE, 1), NO_VALUE);
    }
}

TEST_F(Tables, ValuesBecomeScores) {
    const u32 index = index_in("kqk", WHITE, {0, 7}, {18});
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

// Both colourings of a position ask for the same entry.
TEST_F(Tables, ExchangedColoursAreMirrored) {
    for (const char* name : {"kpk", "krkp", "kpkp", "kqkr", "knkn"})
        for (const Side side : {WHITE, BLACK})
            if (side == WHITE || !ending(ending_by_name(name)).symmetric)
                write_table(name, side, name + std::string(side == WHITE ? ".nbw" : ".nbb"));
    ASSERT_EQ(load(), 4);
    const struct {
        const char* name;
        Side side;
        const char *fen, *exchanged;
        std::initializer_list<int> first, second;
    } cases[] = {
        {"kpk", WHITE, "8/8/8/3k4/8/4K3/4P3/8 w - -", "8/4p3/4k3/8/3K4/8/8/8 b - -", {20, 12}, {35}},
        {"kpk", BLACK, "8/8/8/3k4/8/4K3/4P3/8 b - -", "8/4p3/4k3/8/3K4/8/8/8 w - -", {20, 12}, {35}},
        {"krkp", WHITE, "8/8/8/3k4/6p1/4K3/R7/8 w - -", "8/r7/4k3/6P1/3K4/8/8/8 b - -", {20, 8}, {35, 30}},
        {"krkp", BLACK, "8/8/8/3k4/6p1/4K3/R7/8 b - -", "8/r7/4k3/6P1/3K4/8/8/8 w - -", {20, 8}, {35, 30}},
        {"kqkr", BLACK, "8/8/8/3k4/6r1/4K3/Q7/8 b - -", "8/q7/4k3/6R1/3K4/8/8/8 w - -", {20, 8}, {35, 30}},
        {"knkn", BLACK, "8/8/8/3k2n1/8/4K3/N7/8 b - -", "8/n7/4k3/8/3K2N1/8/8/8 w - -", {20, 8}, {35, 38}},
    };
    for (const auto& test : cases) {
        const int expected =
            value(test.name, test.side, index_in(test.name, test.side, test.first, test.second));
        for (const char* fen : {test.fen, test.exchanged}) {
            set_up(fen);
            Score score = 0;
            ASSERT_TRUE(probe_tablebase(score)) << fen;
            EXPECT_EQ(score, expected == 0 ? 0 : 2 * expected - 35533) << fen;
        }
    }
    // The same pawns for the side to move: each side asks its own table.
    Score white = 0, black = 0;
    set_up("8/8/8/3k4/6p1/4K3/1P6/8 w - -");
    ASSERT_TRUE(probe_tablebase(white));
    EXPECT_EQ(white, 2 * value("kpkp", WHITE, index_in("kpkp", WHITE, {20, 9}, {35, 30})) - 35533);
    set_up("8/8/8/3k4/6p1/4K3/1P6/8 b - -");
    ASSERT_TRUE(probe_tablebase(black));
    EXPECT_EQ(black, 2 * value("kpkp", BLACK, index_in("kpkp", BLACK, {20, 9}, {35, 30})) - 35533);
}

// Directly after a double step the capture en passant is part of the position.
TEST_F(Tables, DoubleStepsHaveEntriesOfTheirOwn) {
    for (const Side side : {WHITE, BLACK})
        write_table("kpkp", side, side == WHITE ? "kpkp.nbw" : "kpkp.nbb");
    ASSERT_EQ(load(), 4);
    const struct {
        const char *fen, *move;
        Side side;  // whose table is asked
        std::initializer_list<int> first, second;
        int ep_square;
    } cases[] = {
        {"8/8/8/8/p7/8/1P3k2/2K5 w - -", "b2b4", BLACK, {2, 25}, {13, 24}, 17},
        {"8/8/8/8/p6k/8/1P6/3K4 w - -", "b2b4", BLACK, {3, 25}, {31, 24}, 17},
        {"8/8/8/8/2p1K3/8/1P4k1/8 w - -", "b2b4", BLACK, {28, 25}, {14, 26}, 17},
        {"8/8/8/8/5p2/8/6P1/2k3K1 w - -", "g2g4", BLACK, {6, 30}, {2, 29}, 22},
        {"8/8/8/8/1p6/8/K1P4k/8 w - -", "c2c4", BLACK, {8, 26}, {15, 25}, 18},
        {"2k5/1p3K2/8/P7/8/8/8/8 b - -", "b7b5", WHITE, {53, 32}, {58, 33}, 41},
        {"8/2p5/8/1P6/8/7K/8/k7 b - -", "c7c5", WHITE, {23, 33}, {0, 34}, 42},
        {"8/8/8/8/2p5/8/P4k2/2K5 w - -", "a2a4", BLACK, {2, 24}, {13, 26}, NO_EP_SQUARE},  // out of reach
        {"8/8/8/8/p7/1P6/5k2/2K5 w - -", "b3b4", BLACK, {2, 25}, {13, 24}, NO_EP_SQUARE},  // one step
    };
    for (const auto& test : cases) {
        set_up(test.fen);
        play(test.move);
        position.search_ply = 0;
        Score score = 0;
        ASSERT_TRUE(probe_tablebase(score)) << test.fen;
        const int expected =
            value("kpkp", test.side, index_in("kpkp", test.side, test.first, test.second, test.ep_square));
        EXPECT_EQ(score, expected == 0 ? 0 : 2 * expected - 35533) << test.fen;
    }
}

TEST_F(Tables, MaterialWithoutATableIsNotFound) {
    write_table("kqk", WHITE, "kqk.nbw");
    ASSERT_EQ(load(), 3);
    Score score = 0;
    for (const char* fen : {"8/8/8/8/8/2k5/8/K6Q b - -",     // the other side's table
                            "8/8/8/8/8/2k5/8/K6R w - -",     // another ending
                            "8/8/8/8/8/2k5/8/K3QQQQ w - -",  // four of a kind
                            "8/8/8/8/8/2k5/8/K7 w - -",      // no men
                            "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -"}) {
        set_up(fen);
        EXPECT_FALSE(probe_tablebase(score)) << fen;
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
        const std::string said = said_while([&] {
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
