// Two tables that differ on purpose: FRC, FrcCode and EncodeWhen are announced and change nothing; OwnBook
// and the plain Nullmove switch are understood without being announced.

#include "protocol/uci_options.h"

#include "protocol/settings.h"
#include "protocol/text_values.h"
#include "search/search_control.h"

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

constexpr int FULL_NULL_REDUCTION = 3;  // plies

using Reader = void (*)(std::string_view value, int* setting);

void number(std::string_view value, int* setting) {
    set_number(*setting, value);
}

void on(std::string_view, int* setting) {
    *setting = 1;
}

void off(std::string_view, int* setting) {
    *setting = 0;
}

void hash(std::string_view value, int*) {
    const auto megabytes = read_number(value);
    if (!megabytes)
        return;
    settings.hash_mb = *megabytes <= 1 ? settings.fritz_hash_mb : *megabytes;
    apply_hash_size();
}

void null_reduction(std::string_view value, int*) {
    if (const auto plies = read_number(value))
        choose_null_reduction(*plies);
}

void null_move_on(std::string_view, int*) {
    choose_null_reduction(FULL_NULL_REDUCTION);
}

void null_move_off(std::string_view, int*) {
    choose_null_reduction(0);
}

void nalimov_path(std::string_view value, int*) {
    settings.tb_path = without_line_end(skip_space(value)).substr(0, TB_PATH_MAX);
    apply_table_path();
}

void ignore(std::string_view, int*) {}

void style(std::string_view value, int*) {
    choose_style_named(value);
}

// The value of an option follows its text after one character.
struct Accepted {
    std::string_view text;
    Reader set;
    int* setting = nullptr;  // of the general readers
};

// The first row whose text begins the line wins.
constexpr Accepted ACCEPTED[] = {
    {"Hash value", hash},
    {"Selectivity value", number, &search_settings.selectivity},
    {"Style value", style},
    {"OwnBook value true", ignore},
    {"OwnBook value false", ignore},
    {"Checks in qsearch value true", on, &search_settings.qsearch_checks},
    {"Checks in qsearch value fals", off, &search_settings.qsearch_checks},
    {"Internal iterative deepening value true", on, &search_settings.iid},
    {"Internal iterative deepening value false", off, &search_settings.iid},
    {"Nullmove value tru", null_move_on},
    {"Nullmove value fal", null_move_off},
    {"Nullmove reduction factor value", null_reduction},
    {"UCI_ShowCurrLine value true", on, &settings.show_curr_line},
    {"UCI_ShowCurrLine value false", off, &settings.show_curr_line},
    {"UCI_ShowRefutations value true", on, &settings.show_refutations},
    {"UCI_ShowRefutations value false", off, &settings.show_refutations},
    {"NalimovPath value", nalimov_path},
    {"NalimovCache value", number, &settings.tb_cache_mb},
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
            option.set(text_from(text, option.text.size() + 1), option.setting);
            return;
        }
    }
}

}  // namespace quelmar
