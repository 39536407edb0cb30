#include "support/temporary_directory.h"
#include "tablebase/compressed_file.h"
#include "tablemaker/compress.h"
#include "tablemaker/error.h"
#include "tablemaker/table_file.h"
#include "tablemaker/verify.h"

#include <gtest/gtest.h>

namespace quelmar::tablemaker {
namespace {

using Bytes = std::vector<u8>;

class TableFile : public ::testing::Test {
protected:
    std::filesystem::path path(const std::string& name) const { return directory_.path() / name; }

    // The fault that check_table_file finds in a file of this name and content; empty for none.
    std::string fault(const std::string& name, const Bytes& content) const {
        write_file(path(name), content);
        try {
            check_table_file(path(name));
        } catch (const TablemakerError& error) {
            return error.what();
        }
        return "";
    }

    static constexpr std::size_t KRK_WHITE = 27030;

private:
    quelmar::testing::TemporaryDirectory directory_;
};

TEST_F(TableFile, CheckKnowsEveryNameAndSize) {
    const Bytes table(KRK_WHITE, 0), packed = compress_table(table, Workers(1));
    EXPECT_EQ(fault("krk.nbw", table), "");
    for (const char* name : {"krk.nbw.emd", "krk_nbw.emd", "krknbw.emd"})
        EXPECT_EQ(fault(name, packed), "") << name;
    for (const char* name : {"krk.nbb", "kqk.nbw", "kk.nbw", "krknbw", "krk_nbw", "nbw", "krk", "knkn.nbb"})
        EXPECT_NE(fault(name, table), "") << name;
    EXPECT_NE(fault("krk.nbb.emd", packed), "");
    EXPECT_NE(fault("krk.nbw", Bytes(KRK_WHITE - 1)), "");
    EXPECT_NE(fault("krk.nbw", Bytes(KRK_WHITE + 1)), "");
}

TEST_F(TableFile, CheckFindsEveryKindOfDamage) {
    Bytes table(KRK_WHITE);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<u8>(i * i / 7 % 40);
    const Bytes packed = compress_table(table, Workers(1));
    for (std::size_t at = 0; at < packed.size(); at += at < 100 ? 1 : 97) {
        if (at < BANNER_TEXT)
            continue;  // any printable text will do there
        Bytes damaged = packed;
        damaged[at] = static_cast<u8>(damaged[at] ^ 0x10);
        EXPECT_NE(fault("krk.nbw.emd", damaged), "") << at;
    }
    for (const std::size_t size : {std::size_t{0}, std::size_t{79}, std::size_t{200}, packed.size() - 1})
        EXPECT_NE(
            fault("krk.nbw.emd", Bytes(packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(size))),
            "")
            << size;
    Bytes grown = packed;
    grown.push_back(0);
    EXPECT_NE(fault("krk.nbw.emd", grown), "");
}

TEST_F(TableFile, AFailedWriteLeavesNothingBehind) {
    EXPECT_THROW(write_file(path("nowhere/krk.nbw"), Bytes(1)), TablemakerError);
    std::filesystem::create_directories(path("krk.nbw/full"));  // a directory cannot be replaced by a file
    EXPECT_THROW(write_file(path("krk.nbw"), Bytes(1)), TablemakerError);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path("")))
        ++files;
    EXPECT_EQ(files, 1U);
}

TEST_F(TableFile, UnreadableFilesAreNamed) {
    EXPECT_THROW(read_table(path("krk.nbw")), TablemakerError);
    EXPECT_THROW(read_table(path("krk.nbw.emd")), TablemakerError);
    std::filesystem::create_directory(path("kqk.nbw"));
    std::filesystem::create_directory(path("kqk.nbw.emd"));
    EXPECT_THROW(read_table(path("kqk.nbw")), TablemakerError);
    EXPECT_THROW(read_table(path("kqk.nbw.emd")), TablemakerError);
}

}  // namespace
}  // namespace quelmar::tablemaker
