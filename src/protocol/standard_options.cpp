#include "protocol/standard_options.h"

#include "protocol/dialect.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/standard_uci.h"
#include "protocol/text_values.h"
#include "search/transposition.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string>

namespace quelmar {

namespace {

constexpr int MAX_HASH_MB = sizeof(void*) > 4 ? 65536 : 1024;
constexpr int MAX_CACHE_MB = 32;
constexpr int MAX_OVERHEAD_MS = 5000;

int overhead_ms = 30;

enum class Kind { CHECK, SPIN, COMBO, BUTTON, STRING };

// Values of all kinds are numbers: 0 or 1, the number itself, the place among the variants; a button has
// none, and the text of a string is in the settings.
struct Option {
    std::string_view name;
    Kind kind;
    int (*get)();
    void (*set)(int value);
    int min = 0, max = 1;
    std::span<const std::string_view> variants = {};
};

// Indexed by EngineSettings::style.
constexpr std::string_view STYLES[] = {"Normal", "Active", "Aggressive", "Suicidal"};
static_assert(STYLES[STYLE_ACTIVE] == "Active" && STYLES[STYLE_SUICIDAL] == "Suicidal");

template <int EngineSettings::*Field> int field() {
    return settings.*Field;
}

template <int EngineSettings::*Field> void set_field(int value) {
    settings.*Field = value;
}

int nothing() {
    return 0;
}

void ignore(int) {}

void set_hash(int megabytes) {
    settings.hash_mb = megabytes;
    tt_allocate();
}

// With little material on the board the null move is searched a ply deeper than with reduction 3.
void set_null_reduction(int plies) {
    constexpr int ENDGAME_MAXIMUM = 2;
    settings.null_reduction = plies;
    settings.null_reduction_endgame = std::min(plies, ENDGAME_MAXIMUM);
}

// Which directories do not exist, and what the others hold.
void tell_tables() {
    const std::string& path = settings.tb_path;
    for (const std::string_view directory : table_directories(path)) {
        std::error_code ignored;
        if (!directory.empty() && !std::filesystem::is_directory(directory, ignored))
            tell("there is no directory " + std::string(directory));
    }
    const int tables = count_registered_tables();
    const std::string where = " in " + (path.empty() ? "the current directory" : path);
    if (tables == 0)
        tell("no tables" + where);
    else
        tell(std::to_string(tables) + (tables == 1 ? " table" : " tables") + " of up to " +
             std::to_string(tb_max_men) + " men" + where);
}

void set_table_path(int) {
    setup_tablebases();
    tell_tables();
}

void set_table_cache(int megabytes) {
    settings.tb_cache_mb = megabytes;
    setup_tablebases();
    tell_start_tables();
}

using S = EngineSettings;

// clang-format off
constexpr Option OPTIONS[] = {
    {"Hash", Kind::SPIN, field<&S::hash_mb>, set_hash, 1, MAX_HASH_MB},
    {"Clear Hash", Kind::BUTTON, nothing, [](int) { tt_clear(); }},
    {"Threads", Kind::SPIN, [] { return 1; }, ignore, 1, 1},  // clients set it unasked
    {"Ponder", Kind::CHECK, nothing, ignore},                 // "go ponder" says it all
    {"Move Overhead", Kind::SPIN, move_overhead_ms, [](int ms) { overhead_ms = ms; }, 0, MAX_OVERHEAD_MS},
    {"UCI_Chess960", Kind::CHECK, [] { return static_cast<int>(dialect.castling == CastlingText::KING_TAKES_ROOK); },
     [](int on) { dialect.castling = on != 0 ? CastlingText::KING_TAKES_ROOK : CastlingText::KING_MOVE; }},
    {"UCI_ShowCurrLine", Kind::CHECK, field<&S::show_curr_line>, set_field<&S::show_curr_line>},
    {"UCI_ShowRefutations", Kind::CHECK, field<&S::show_refutations>, set_field<&S::show_refutations>},
    {"Style", Kind::COMBO, field<&S::style>, set_field<&S::style>, 0, std::size(STYLES) - 1, STYLES},
    {"Selectivity", Kind::SPIN, field<&S::selectivity>, set_field<&S::selectivity>, 0, 10},
    {"Checks in qsearch", Kind::CHECK, field<&S::qsearch_checks>, set_field<&S::qsearch_checks>},
    {"Nullmove reduction factor", Kind::SPIN, field<&S::null_reduction>, set_null_reduction, 0, 3},
    {"Internal iterative deepening", Kind::CHECK, field<&S::iid>, set_field<&S::iid>},
    {"NalimovPath", Kind::STRING, nothing, set_table_path},
    {"NalimovCache", Kind::SPIN, field<&S::tb_cache_mb>, set_table_cache, 1, MAX_CACHE_MB},
};
// clang-format on

constexpr std::string_view NO_TEXT = "<empty>";

std::array<int, std::size(OPTIONS)> default_values;
std::string default_path;

std::string describe(const Option& option, int value) {
    switch (option.kind) {
    case Kind::CHECK:
        return std::string("check default ") + (value != 0 ? "true" : "false");
    case Kind::SPIN:
        return "spin default " + std::to_string(value) + " min " + std::to_string(option.min) + " max " +
               std::to_string(option.max);
    case Kind::COMBO: {
        std::string text = "combo default " + std::string(option.variants[static_cast<std::size_t>(value)]);
        for (const std::string_view variant : option.variants)
            text.append(" var ").append(variant);
        return text;
    }
    case Kind::BUTTON:
        return "button";
    default:
        return "string default " + (default_path.empty() ? std::string(NO_TEXT) : default_path);
    }
}

std::optional<int> read_spin(const Option& option, std::string_view text) {
    const auto number = take_number(text);
    if (!number || !skip_space(text).empty() || *number < option.min || *number > option.max)
        return std::nullopt;
    return *number;
}

std::optional<int> read_word(std::span<const std::string_view> words, std::string_view text) {
    const auto found = std::find_if(words.begin(), words.end(), [text](std::string_view word) {
        return equal_ignoring_case(word, text);
    });
    return found != words.end() ? std::optional(static_cast<int>(found - words.begin())) : std::nullopt;
}

// The value as a number, nothing if the option does not take it. The text of a string goes to the settings.
std::optional<int> read_value(const Option& option, std::string_view text) {
    static constexpr std::string_view TRUTH[] = {"false", "true"};
    switch (option.kind) {
    case Kind::CHECK:
        return read_word(TRUTH, text);
    case Kind::SPIN:
        return read_spin(option, text);
    case Kind::COMBO:
        return read_word(option.variants, text);
    case Kind::STRING:
        if (text.size() > TB_PATH_MAX)
            return std::nullopt;
        settings.tb_path = text == NO_TEXT ? std::string_view{} : text;
        return 0;
    default:
        return 0;
    }
}

// The words of the name, with one blank between them, up to the word "value" or the end.
std::string take_name(std::string_view& text) {
    std::string name;
    for (std::string_view word = take_word(text); !word.empty() && word != "value"; word = take_word(text))
        name.append(name.empty() ? "" : " ").append(word);
    return name;
}

std::string_view without_space_around(std::string_view text) {
    text = skip_space(text);
    while (!text.empty() && skip_space(text.substr(text.size() - 1)).empty())
        text.remove_suffix(1);
    return text;
}

}  // namespace

void remember_standard_defaults() {
    for (std::size_t i = 0; i < default_values.size(); ++i)
        default_values[i] = std::clamp(OPTIONS[i].get(), OPTIONS[i].min, OPTIONS[i].max);
    default_path = settings.tb_path;
}

void tell_start_tables() {
    if (tb_max_men > 0 || !settings.tb_path.empty())
        tell_tables();
}

void print_standard_options() {
    for (std::size_t i = 0; i < default_values.size(); ++i)
        std::printf("option name %s type %s\n", OPTIONS[i].name.data(),
                    describe(OPTIONS[i], default_values[i]).c_str());
}

void set_standard_option(std::string_view arguments) {
    take_word(arguments);  // "name"
    const std::string name = take_name(arguments);
    const std::string value(without_space_around(arguments));
    const auto* option = std::find_if(std::begin(OPTIONS), std::end(OPTIONS), [&name](const Option& one) {
        return equal_ignoring_case(one.name, name);
    });
    if (option == std::end(OPTIONS)) {
        tell("there is no option " + excerpt(name));
    } else if (const auto number = read_value(*option, value)) {
        option->set(*number);
    } else {
        tell("option " + std::string(option->name) + " does not take the value " + excerpt(value) +
             (option->kind == Kind::STRING ? ", longer than " + std::to_string(TB_PATH_MAX) + " characters"
                                           : ""));
    }
}

int move_overhead_ms() {
    return overhead_ms;
}

}  // namespace quelmar
