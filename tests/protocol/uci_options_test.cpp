// UCI options: what is announced, what is understood, and that the two lists differ only where they should.
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/uci_options.h"
#include "support/engine.h"

#include <algorithm>
#include <set>

namespace quelmar {
namespace {

using S = EngineSettings;
using UciOptions = EngineTest;

struct OptionCase {
    const char* text;
    int S::*field;
    int expected;
};

constexpr OptionCase OPTION_CASES[] = {
    {"Hash value 4\n", &S::hash_mb, 4},
    {"hash VALUE 3\n", &S::hash_mb, 3},
    {"Hash value 1\n", &S::hash_mb, 24},
    {"Hash value -5\n", &S::hash_mb, 24},
    {"Hash value\n", &S::hash_mb, 24},
    {"Hash value x\n", &S::hash_mb, 24},
    {"Hash 4\n", &S::hash_mb, 24},
    {"Selectivity value 10\n", &S::selectivity, 10},
    {"Selectivity value 99\n", &S::selectivity, 99},
    {"Selectivity value\n", &S::selectivity, 6},
    {"Style value Normal\n", &S::style, STYLE_NORMAL},
    {"Style value aggressive\n", &S::style, STYLE_AGGRESSIVE},
    {"Style value Suicidal\n", &S::style, STYLE_SUICIDAL},
    {"Style value Wild\n", &S::style, STYLE_ACTIVE},
    {"Checks in qsearch value false\n", &S::qsearch_checks, 0},
    {"Internal iterative deepening value false\n", &S::iid, 0},
    {"Nullmove value false\n", &S::null_reduction, 0},
    {"Nullmove value false\n", &S::null_reduction_endgame, 0},
    {"Nullmove reduction factor value 1\n", &S::null_reduction, 1},
    {"Nullmove reduction factor value 1\n", &S::null_reduction_endgame, 1},
    {"Nullmove reduction factor value 3\n", &S::null_reduction, 3},
    {"Nullmove reduction factor value 3\n", &S::null_reduction_endgame, 2},
    {"UCI_ShowCurrLine value true\n", &S::show_curr_line, 1},
    {"UCI_ShowRefutations value true\n", &S::show_refutations, 1},
    {"NalimovCache value 16\n", &S::tb_cache_mb, 16},
    {"UCI_Chess960 value true\n", &S::hash_mb, 24},
    {"\n", &S::hash_mb, 24},
};

TEST_F(UciOptions, OneOption) {
    for (const OptionCase& row : OPTION_CASES) {
        settings = {};
        set_uci_option(row.text);
        EXPECT_EQ(settings.*row.field, row.expected) << row.text;
    }
}

TEST_F(UciOptions, SwitchesGoBack) {
    for (const char* text : {"Nullmove value false", "Nullmove value true", "Checks in qsearch value false",
                             "Checks in qsearch value true", "Internal iterative deepening value false",
                             "Internal iterative deepening value true", "UCI_ShowCurrLine value true",
                             "UCI_ShowCurrLine value false", "UCI_ShowRefutations value true",
                             "UCI_ShowRefutations value false", "OwnBook value true"})
        set_uci_option(text);
    EXPECT_EQ(settings.null_reduction, 3);
    EXPECT_EQ(settings.null_reduction_endgame, 2);
    EXPECT_EQ(settings.qsearch_checks, 1);
    EXPECT_EQ(settings.iid, 1);
    EXPECT_EQ(settings.show_curr_line, 0);
    EXPECT_EQ(settings.show_refutations, 0);
    EXPECT_TRUE(protocol_state.own_book);
    set_uci_option("OwnBook value false");
    EXPECT_FALSE(protocol_state.own_book);
}

TEST_F(UciOptions, PathLosesSpaceInFrontAndTheLineEnd) {
    set_uci_option("NalimovPath value   /no such/folder;/nor this\n");
    EXPECT_EQ(settings.tb_path, "/no such/folder;/nor this");
    set_uci_option("NalimovPath value " + std::string(400, '/') + "\n");
    EXPECT_EQ(settings.tb_path.size(), TB_PATH_MAX);
    set_uci_option("NalimovPath value\n");
    EXPECT_EQ(settings.tb_path, "");
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

bool at_defaults() {
    const S now = settings, first;
    return now.hash_mb == first.hash_mb && now.style == first.style && now.selectivity == first.selectivity &&
           now.qsearch_checks == first.qsearch_checks && now.null_reduction == first.null_reduction &&
           now.iid == first.iid && now.tb_path == first.tb_path && now.tb_cache_mb == first.tb_cache_mb &&
           now.show_curr_line == first.show_curr_line && now.show_refutations == first.show_refutations;
}

TEST_F(UciOptions, AnnouncedButWithoutEffect) {
    ASSERT_EQ(announced_uci_options().size(), std::size(ANNOUNCED));
    std::set<std::string> inert;
    for (std::size_t i = 0; i < std::size(ANNOUNCED); ++i) {
        const std::string name = ANNOUNCED[i].first;
        EXPECT_TRUE(announced_uci_options()[i].starts_with("option name " + name + " type ")) << name;
        settings = {};
        set_uci_option(name + " value " + ANNOUNCED[i].second + "\n");
        if (at_defaults())
            inert.insert(name);
    }
    EXPECT_EQ(inert, (std::set<std::string>{"FRC", "FrcCode", "EncodeWhen"}));
}

}  // namespace
}  // namespace quelmar
