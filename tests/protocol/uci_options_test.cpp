// UCI options and lines of the settings file: what they change is said in tests/data/settings.txt; what is
// announced and what is understood differ only where they should.
#include "eval/evaluate.h"
#include "protocol/settings.h"
#include "protocol/uci_options.h"
#include "search/search_control.h"
#include "support/engine.h"

#include <set>

namespace quelmar {
namespace {

using UciOptions = EngineTest;

std::string changes() {
    const EngineSettings defaults;
    const SearchSettings search_defaults;
    const struct {
        const char* name;
        int value, usual;
    } NUMBERS[] = {
        {"selectivity", search_settings.selectivity, search_defaults.selectivity},
        {"null_reduction", search_settings.null_reduction, search_defaults.null_reduction},
        {"null_reduction_endgame", search_settings.null_reduction_endgame,
         search_defaults.null_reduction_endgame},
        {"qsearch_checks", search_settings.qsearch_checks, search_defaults.qsearch_checks},
        {"hash_mb", settings.hash_mb, defaults.hash_mb},
        {"fritz_hash_mb", settings.fritz_hash_mb, defaults.fritz_hash_mb},
        {"style", static_cast<int>(playing_style), static_cast<int>(Style::ACTIVE)},
        {"bm_exts", search_settings.bm_exts, search_defaults.bm_exts},
        {"resign_enabled", settings.resign_enabled, defaults.resign_enabled},
        {"iid", search_settings.iid, search_defaults.iid},
        {"white_score", settings.white_score, defaults.white_score},
        {"san_output", settings.san_output, defaults.san_output},
        {"grain_size", search_settings.grain_size, search_defaults.grain_size},
        {"show_curr_line", settings.show_curr_line, defaults.show_curr_line},
        {"show_refutations", settings.show_refutations, defaults.show_refutations},
        {"tb_cache_mb", settings.tb_cache_mb, defaults.tb_cache_mb},
    };
    std::string text;
    for (const auto& [name, value, usual] : NUMBERS)
        if (value != usual)
            text += std::string(", ") + name + " " + std::to_string(value);
    if (settings.tb_path != defaults.tb_path)
        text += ", tb_path " + settings.tb_path;
    if (settings.piece_letters != defaults.piece_letters)
        text += ", piece_letters " + settings.piece_letters;
    return text.empty() ? "nothing" : text.substr(2);
}

TEST_F(UciOptions, AndLinesOfTheSettingsFileChangeWhatTheyShould) {
    for (const Words& fields : data_rows("settings.txt")) {
        ASSERT_EQ(fields.size(), 3U) << fields[0];
        reset_settings();
        const std::string& lines = fields[0];
        for (std::size_t start = lines.find('"'); start != std::string::npos;) {
            const std::size_t end = lines.find('"', start + 1);
            const std::string line = with_escapes(lines.substr(start + 1, end - start - 1));
            lines.starts_with("uci") ? set_uci_option(line) : static_cast<void>(apply_config_line(line));
            start = lines.find('"', end + 1);
        }
        EXPECT_EQ(changes(), with_escapes(fields[1])) << lines << ", " << fields[2];
    }
}

TEST_F(UciOptions, PathsAreCut) {
    set_uci_option("NalimovPath value " + std::string(400, '/') + "\n");
    EXPECT_EQ(settings.tb_path.size(), TB_PATH_MAX);
    apply_config_line("tbpath " + std::string(300, 'x'));
    EXPECT_EQ(settings.tb_path, std::string(TB_PATH_MAX, 'x'));
}

// What an announced option says, set to something that is not its default.
const std::pair<const char*, const char*> ANNOUNCED[] = {
    {"Hash", "5"},
    {"Style", "Suicidal"},
    {"Selectivity", "1"},
    {"Checks in qsearch", "false"},
    {"Nullmove reduction factor", "1"},
    {"Internal iterative deepening", "false"},
    {"FRC", "aware"},
    {"FrcCode", "k trailing"},
    {"EncodeWhen", "always"},
    {"NalimovPath", "/nowhere"},
    {"NalimovCache", "9"},
    {"UCI_ShowCurrLine", "true"},
    {"UCI_ShowRefutations", "true"},
};

TEST_F(UciOptions, AnnouncedButWithoutEffect) {
    ASSERT_EQ(announced_uci_options().size(), std::size(ANNOUNCED));
    std::set<std::string> inert;
    for (std::size_t i = 0; i < std::size(ANNOUNCED); ++i) {
        const std::string name = ANNOUNCED[i].first;
        EXPECT_TRUE(announced_uci_options()[i].starts_with("option name " + name + " type ")) << name;
        reset_settings();
        set_uci_option(name + " value " + ANNOUNCED[i].second + "\n");
        if (changes() == "nothing")
            inert.insert(name);
    }
    EXPECT_EQ(inert, (std::set<std::string>{"FRC", "FrcCode", "EncodeWhen"}));
}

}  // namespace
}  // namespace quelmar
