// Two tables that differ on purpose: FRC, FrcCode and EncodeWhen are announced and change nothing; OwnBook
// and the plain Nullmove switch are understood without being announced.

#include "protocol/uci_options.h"

#include "protocol/protocol_state.h"
#include "protocol/setting_value.h"
#include "protocol/settings.h"
#include "protocol/text_values.h"
#include "search/transposition.h"
#include "tablebase/probe.h"

#include <cstdio>

namespace quelmar {

namespace {

constexpr std::string_view ANNOUNCED[] = {
    "option name Hash type spin default 2 min 1 max 800",
    "option name Style type combo default Active var Normal var Active var Aggressive var Suicidal",
    "option name Selectivity type spin default 6 min 0 max 10",
    "option name Checks in qsearch type check default true",
    "option name Nullmove reduction factor type spin default 3 min 1 max 3",
    "option name Internal iterative deepening type check default true",
    "option name FRC type combo default aware var aware",
    "option name FrcCode type combo default O-O/O-O-O var O-O/O-O-O var k trailing",
    "option name EncodeWhen type combo default short FRC var short FRC var new FRC var always",
    "option name NalimovPath type string default <empty>",
    "option name NalimovCache type spin default 1 min 1 max 32",
    "option name UCI_ShowCurrLine type check default false",
    "option name UCI_ShowRefutations type check default false",
};

constexpr int FULL_NULL_REDUCTION = 3, ENDGAME_NULL_REDUCTION = 2;  // plies

void hash(std::string_view value) {
    const auto megabytes = read_number(value);
    if (!megabytes)
        return;
    settings.hash_mb = *megabytes <= 1 ? settings.fritz_hash_mb : *megabytes;
    tt_allocate();
}

void null_reduction(std::string_view value) {
    const auto plies = read_number(value);
    if (!plies)
        return;
    settings.null_reduction = *plies;
    settings.null_reduction_endgame = *plies > 1 ? ENDGAME_NULL_REDUCTION : *plies;
}

void null_move_on(std::string_view) {
    settings.null_reduction = FULL_NULL_REDUCTION;
    settings.null_reduction_endgame = ENDGAME_NULL_REDUCTION;
}

void null_move_off(std::string_view) {
    settings.null_reduction = settings.null_reduction_endgame = 0;
}

void nalimov_path(std::string_view value) {
    settings.tb_path = without_line_end(skip_space(value)).substr(0, TB_PATH_MAX);
    setup_tablebases();
}

void own_book(bool on) {
    protocol_state.own_book = on;
}

template <int EngineSettings::*Field, int Value> void choose(std::string_view) {
    settings.*Field = Value;
}

// The value of an option follows its text after one character.
struct Accepted {
    std::string_view text;
    void (*set)(std::string_view value);
};

using S = EngineSettings;

// The first row whose text begins the line wins.
constexpr Accepted ACCEPTED[] = {
    {"Hash value", hash},
    {"Selectivity value", set_number<&S::selectivity>},
    {"Style value Normal", choose<&S::style, STYLE_NORMAL>},
    {"Style value Active", choose<&S::style, STYLE_ACTIVE>},
    {"Style value Aggres", choose<&S::style, STYLE_AGGRESSIVE>},
    {"Style value Suicid", choose<&S::style, STYLE_SUICIDAL>},
    {"OwnBook value true", [](std::string_view) { own_book(true); }},
    {"OwnBook value false", [](std::string_view) { own_book(false); }},
    {"Checks in qsearch value true", choose<&S::qsearch_checks, 1>},
    {"Checks in qsearch value fals", choose<&S::qsearch_checks, 0>},
    {"Internal iterative deepening value true", choose<&S::iid, 1>},
    {"Internal iterative deepening value false", choose<&S::iid, 0>},
    {"Nullmove value tru", null_move_on},
    {"Nullmove value fal", null_move_off},
    {"Nullmove reduction factor value", null_reduction},
    {"UCI_ShowCurrLine value true", choose<&S::show_curr_line, 1>},
    {"UCI_ShowCurrLine value false", choose<&S::show_curr_line, 0>},
    {"UCI_ShowRefutations value true", choose<&S::show_refutations, 1>},
    {"UCI_ShowRefutations value false", choose<&S::show_refutations, 0>},
    {"NalimovPath value", nalimov_path},
    {"NalimovCache value", set_number<&S::tb_cache_mb>},
};

}  // namespace

std::span<const std::string_view> announced_uci_options() {
    return ANNOUNCED;
}

void print_uci_options() {
    for (const std::string_view option : ANNOUNCED)
        std::printf("%s\n", option.data());
}

void set_uci_option(std::string_view text) {
    for (const Accepted& option : ACCEPTED) {
        if (begins_with_ignoring_case(text, option.text)) {
            option.set(text_from(text, option.text.size() + 1));
            return;
        }
    }
}

}  // namespace quelmar
