// The settings file: one table of lines and what they set.
#include "protocol/config_file.h"
#include "protocol/settings.h"
#include "protocol/text_values.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace quelmar {
namespace {

using S = EngineSettings;

class ConfigFile : public ::testing::Test {
protected:
    void SetUp() override { settings = {}; }
    void TearDown() override { settings = {}; }
};

struct NumberCase {
    const char* line;
    int S::*field;
    int expected;
    const char* why;
};

constexpr NumberCase NUMBER_CASES[] = {
    {"hash 32\n", &S::hash_mb, 32, "plain"},
    {"HASH 64\n", &S::hash_mb, 64, "keys ignore case"},
    {"  \t hash 16", &S::hash_mb, 16, "space before the key, no line end"},
    {"hash 16\r\n", &S::hash_mb, 16, "CR LF"},
    {"hash=64\n", &S::hash_mb, 24, "no separator is skipped after hash"},
    {"hashsize 8\n", &S::hash_mb, 24, "begins with hash, value is no number"},
    {"hash\n", &S::hash_mb, 24, "no value"},
    {"hash 99999999999999999999\n", &S::hash_mb, 2147483647, "huge"},
    {"hash -5\n", &S::hash_mb, -5, "no range is checked"},
    {"fritz-hash 7\n", &S::fritz_hash_mb, 7, ""},
    {"fritz-hash=7\n", &S::fritz_hash_mb, 24, "no separator is skipped"},
    {"grain-size 8\n", &S::grain_size, 8, ""},
    {"resign yes\n", &S::resign_enabled, 1, ""},
    {"resign=y\n", &S::resign_enabled, 1, "any separator"},
    {"resign No\n", &S::resign_enabled, 1, "only a small n says no"},
    {"resign\n", &S::resign_enabled, 1, "not a small n either"},
    {"resign", &S::resign_enabled, 1, "the value would begin behind the end"},
    {"ownbook-default yes\n", &S::own_book_default, 1, ""},
    {"ownbook-default Yes\n", &S::own_book_default, 0, "only a small y says yes"},
    {"tbook y\n", &S::tbook, 1, ""},
    {"style normal\n", &S::style, STYLE_NORMAL, ""},
    {"style AGGRESSIVE\n", &S::style, STYLE_AGGRESSIVE, ""},
    {"style suicidally\n", &S::style, STYLE_SUICIDAL, "six letters count"},
    {"style act\n", &S::style, STYLE_ACTIVE, "too short: unchanged"},
    {"style wild\n", &S::style, STYLE_ACTIVE, "unknown: unchanged"},
    {"selectivity=8\n", &S::selectivity, 8, ""},
    {"selectivity 8\n", &S::selectivity, 8, ""},
    {"selectivityx8\n", &S::selectivity, 8, "any one separator"},
    {"qsearch-checks no\n", &S::qsearch_checks, 0, ""},
    {"R 2\n", &S::null_reduction, 2, ""},
    {"R2\n", &S::null_reduction, 2, ""},
    {"rate 5\n", &S::null_reduction, 3, "an R line without a number"},
    {"bm-exts never\n", &S::bm_exts, 0, ""},
    {"iid off\n", &S::iid, 1, ""},
    {"tbcache 16\n", &S::tb_cache_mb, 16, ""},
    {"white-score yes\n", &S::white_score, 1, ""},
    {"san yes\n", &S::san_output, 1, ""},
    {"   ; hash 5\n", &S::hash_mb, 24, "comment"},
    {"   \n", &S::hash_mb, 24, "blank"},
    {"unknown 5\n", &S::hash_mb, 24, "unknown"},
};

TEST_F(ConfigFile, OneLine) {
    for (const NumberCase& row : NUMBER_CASES) {
        settings = {};
        apply_config_line(row.line);
        EXPECT_EQ(settings.*row.field, row.expected) << row.line << row.why;
    }
}

TEST_F(ConfigFile, OnlyResignIsNoKeyOfR) {
    EXPECT_TRUE(apply_config_line("resign no\n"));
    EXPECT_EQ(settings.null_reduction, 3);
    EXPECT_TRUE(apply_config_line("rubbish 1\n"));
    EXPECT_FALSE(apply_config_line("; R 2\n"));
    EXPECT_FALSE(apply_config_line("\n"));
    EXPECT_EQ(settings.null_reduction, 3);
}

TEST_F(ConfigFile, NullMove) {
    apply_config_line("nullmove yes\n");
    EXPECT_EQ(settings.null_reduction, 3);
    EXPECT_EQ(settings.null_reduction_endgame, 2);
    apply_config_line("nullmove no\n");
    EXPECT_EQ(settings.null_reduction, 0);
    EXPECT_EQ(settings.null_reduction_endgame, 0);
    apply_config_line("R 2\n");
    EXPECT_EQ(settings.null_reduction, 2);
    EXPECT_EQ(settings.null_reduction_endgame, 0);
}

TEST_F(ConfigFile, Texts) {
    apply_config_line("tbpath=/tables/three and four\n");
    EXPECT_EQ(settings.tb_path, "/tables/three and four");
    apply_config_line("tbpath " + std::string(300, 'x'));
    EXPECT_EQ(settings.tb_path, std::string(TB_PATH_MAX, 'x'));
    apply_config_line("piece-letters BSLTDK\n");
    EXPECT_EQ(settings.piece_letters, "BSLTDK\n");
    apply_config_line("piece-letters 0123456789\n");
    EXPECT_EQ(settings.piece_letters, "012345678");
}

class ConfigFileOnDisk : public ConfigFile {
protected:
    void SetUp() override {
        ConfigFile::SetUp();
        std::filesystem::create_directories(folder_);
        std::filesystem::current_path(folder_);
    }
    void TearDown() override {
        ConfigFile::TearDown();
        std::filesystem::current_path(folder_.parent_path());
        std::filesystem::remove_all(folder_);
    }
    void read(std::string_view text) {
        std::ofstream("quelmar.ini", std::ios::binary) << text;
        read_config_file();
    }
    const std::filesystem::path folder_ = std::filesystem::path(::testing::TempDir()) / "quelmar_config_test";
};

TEST_F(ConfigFileOnDisk, MissingOrUnreadableFileChangesNothing) {
    read_config_file();
    std::filesystem::create_directory("quelmar.ini");
    read_config_file();
    EXPECT_EQ(settings.hash_mb, 24);
}

TEST_F(ConfigFileOnDisk, LinesInTurnAndALastOneWithoutLineEnd) {
    read("; my settings\n\nhash 8\nstyle normal\nhash 9\nsan y");
    EXPECT_EQ(settings.hash_mb, 9);
    EXPECT_EQ(settings.style, STYLE_NORMAL);
    EXPECT_EQ(settings.san_output, 1);
}

TEST_F(ConfigFileOnDisk, LongLinesAreReadInPiecesOf79) {
    read(";" + std::string(78, '.') + "hash 5\nselectivity 1\n");
    EXPECT_EQ(settings.hash_mb, 5);
    EXPECT_EQ(settings.selectivity, 1);
}

TEST_F(ConfigFileOnDisk, ANulAtTheStartOfALineEndsTheFile) {
    read(std::string_view("hash 5\n\0\nhash 6\n", 16));
    EXPECT_EQ(settings.hash_mb, 5);
}

TEST(TextValues, Numbers) {
    EXPECT_EQ(read_number(" \t-12abc"), -12);
    EXPECT_EQ(read_number("+7"), 7);
    EXPECT_EQ(read_number("-99999999999999999999"), -2147483648LL);
    for (const char* text : {"", " ", "-", "+-3", "x1", "--1"})
        EXPECT_EQ(read_number(text), std::nullopt) << text;
}

}  // namespace
}  // namespace quelmar
