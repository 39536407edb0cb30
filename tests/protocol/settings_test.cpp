// The settings file as a file; what its lines set is asked with the UCI options.
#include "eval/evaluate.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/text_values.h"
#include "search/search_control.h"
#include "support/engine.h"
#include "support/temporary_directory.h"

#include <filesystem>
#include <fstream>

namespace quelmar {
namespace {

class ConfigFileOnDisk : public EngineTest {
protected:
    ConfigFileOnDisk() { std::filesystem::current_path(folder_.path()); }
    ~ConfigFileOnDisk() override { std::filesystem::current_path("/"); }
    void read(std::string_view text) {
        std::ofstream("quelmar.ini", std::ios::binary) << text;
        read_config_file();
    }
    const testing::TemporaryDirectory folder_;
};

TEST(ConfigFile, ALineIsKnownByItsContent) {
    for (const char* known : {"resign no\n", "rubbish 1\n"})
        EXPECT_TRUE(apply_config_line(known));
    for (const char* unknown : {"; R 2\n", "\n"})
        EXPECT_FALSE(apply_config_line(unknown));
}

TEST_F(ConfigFileOnDisk, MissingOrUnreadableFileChangesNothing) {
    read_config_file();
    std::filesystem::create_directory("quelmar.ini");
    read_config_file();
    EXPECT_EQ(settings.hash_mb, 24);
    protocol_state.standard_uci = true;
    EXPECT_FALSE(read_config_file());  // so that the user's own is read
}

TEST_F(ConfigFileOnDisk, LinesInTurnAndALastOneWithoutLineEnd) {
    read("; my settings\n\nhash 8\nstyle normal\nhash 9\nsan y");
    EXPECT_EQ(settings.hash_mb, 9);
    EXPECT_EQ(playing_style, Style::NORMAL);
    EXPECT_EQ(settings.san_output, 1);
}

TEST_F(ConfigFileOnDisk, LongLinesAreReadInPiecesOf79) {
    read(";" + std::string(78, '.') + "hash 5\nselectivity 1\n");
    EXPECT_EQ(settings.hash_mb, 5);
    EXPECT_EQ(search_settings.selectivity, 1);
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
