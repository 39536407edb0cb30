// Every ending of four men, made, packed, read back and compared with itself. Takes some minutes.
#include "support/made_tables.h"
#include "tablebase/catalogue.h"
#include "tablemaker/compress.h"
#include "tablemaker/table_file.h"

#include <gtest/gtest.h>

namespace quelmar::tablemaker {
namespace {

using quelmar::testing::MadeTables;

// Moves to mate with the stronger side, the first of the name, to move.
constexpr struct {
    const char* name;
    int longest_win;
} LONGEST_WINS[] = {{"kqk", 10}, {"krk", 16},  {"kbbk", 19}, {"kbnk", 33},
                    {"kpk", 28}, {"kqkr", 35}, {"krkn", 40}, {"krkb", 29}};

TEST(FourMen, AreMadePackedAndTrue) {
    MadeTables tables;
    for (int number = 1; number < FIRST_FIVE_MEN; ++number) {
        const std::string name(ending(number).name);
        SCOPED_TRACE(name);
        tables.make(name);
        EXPECT_EQ(tables.faults(name), "");
        for (const char* suffix : {".nbw", ".nbb"}) {
            const std::filesystem::path plain = tables.directory() / (name + suffix);
            if (!exists(plain))
                continue;
            const std::vector<u8> table = read_table(plain);
            const std::filesystem::path packed = plain.string() + ".emd";
            write_file(packed, compress_table(table, Workers(2)));
            EXPECT_EQ(read_table(packed), table);
            EXPECT_NO_THROW(check_table_file(packed));
        }
    }
    for (const auto& [name, longest_win] : LONGEST_WINS)
        EXPECT_EQ(tables.longest_win(name), longest_win) << name;
}

}  // namespace
}  // namespace quelmar::tablemaker
