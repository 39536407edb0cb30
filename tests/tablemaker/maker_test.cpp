#include "support/made_tables.h"
#include "tablebase/catalogue.h"
#include "tablemaker/error.h"
#include "tablemaker/maker.h"
#include "tablemaker/table_file.h"
#include "tablemaker/verify.h"

#include <gtest/gtest.h>
#include <set>

namespace quelmar::tablemaker {
namespace {

using quelmar::testing::MadeTables;

// With equal men, from packed tables, and with one file for both sides to move.
TEST(Maker, MakesEndingsWithTheLongestWinsThatAreKnown) {
    const struct {
        const char* name;
        int longest_win;
    } cases[] = {{"kqk", 10}, {"krk", 16}, {"kpk", 28}, {"kbk", 0}, {"knk", 0}, {"kbbk", 19}, {"krkr", 19}};
    MadeTables plain, packed(true);
    for (const auto& [name, longest_win] : cases) {
        MadeTables& tables = name == std::string("kbbk") ? packed : plain;
        tables.make(name);
        EXPECT_EQ(tables.longest_win(name), longest_win) << name;
        if (name != std::string("krkr")) {  // takes long
            EXPECT_EQ(tables.faults(name), "") << name;
        }
    }
    EXPECT_TRUE(exists(packed.directory() / "kbk.nbw.emd"));
    EXPECT_FALSE(exists(plain.directory() / "krkr.nbb"));
}

TEST(Maker, MakesNothingTwice) {
    MadeTables tables;
    tables.make("kqk");
    // Whatever a file of the right size holds is believed; the missing one is made.
    const std::vector<u8> marked(ending(ending_by_name("kqk")).entry_count[WHITE], 1);
    write_file(tables.directory() / "kqk.nbw", marked);
    remove(tables.directory() / "kqk.nbb");
    tables.make("kqk");
    EXPECT_EQ(read_table(tables.directory() / "kqk.nbw"), marked);
    EXPECT_TRUE(exists(tables.directory() / "kqk.nbb"));
}

TEST(Maker, KnowsWhatItWillWrite) {
    MadeTables tables;
    tables.make("kqk");
    const TableStore store(tables.directory());
    const std::vector<int> wanted = endings_to_make(store, {ending_by_name("kqkp"), ending_by_name("kqk")});
    const std::vector<int> expected{ending_by_name("knk"), ending_by_name("kbk"), ending_by_name("krk")};
    EXPECT_EQ(std::set<int>(wanted.begin(), wanted.end()).size(), wanted.size());
    EXPECT_EQ(wanted.back(), ending_by_name("kqkp"));
    const u64 before = bytes_to_write(store, expected, false);
    u64 written = 0;
    for (const std::string name : {"knk", "kbk", "krk"}) {
        tables.make(name);
        written +=
            file_size(tables.directory() / (name + ".nbw")) + file_size(tables.directory() / (name + ".nbb"));
    }
    EXPECT_EQ(before, written);
    EXPECT_EQ(bytes_to_write(store, expected, false), 0U);
}

TEST(Maker, RefusesWhatItCannotDo) {
    MadeTables tables;
    EXPECT_THROW(tables.make("kqqkqq"), TablemakerError);
    tables.make("kbk");
    write_file(tables.directory() / "kbk.nbw", std::vector<u8>(5));
    EXPECT_THROW(tables.make("kbbk"), TablemakerError) << "rests on a table of the wrong size";
    EXPECT_THROW(require_room(tables.directory(), u64{1} << 62), TablemakerError) << "no disk has that";
}

TEST(Verify, FindsWrongEntries) {
    MadeTables tables;
    tables.make("krk");
    std::vector<u8> table = read_table(tables.directory() / "krk.nbb");
    for (const int change : {1, -1}) {
        std::vector<u8> wrong = table;
        const auto loss = std::find(wrong.begin(), wrong.end(), static_cast<u8>(-120));  // mated in six
        *loss = static_cast<u8>(*loss + change);
        write_file(tables.directory() / "krk.nbb", wrong);
        EXPECT_NE(tables.faults("krk"), "");
    }
    std::replace(table.begin(), table.end(), u8{0}, u8{127});  // the draws become no positions
    write_file(tables.directory() / "krk.nbb", table);
    EXPECT_NE(tables.faults("krk"), "");
}

}  // namespace
}  // namespace quelmar::tablemaker
