#include "protocol/standard_options.h"

#include "eval/evaluate.h"
#include "platform/platform.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/strength.h"
#include "protocol/text_values.h"
#include "search/search_control.h"
#include "search/transposition.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"

#include <algorithm>
#include <span>
#include <string>

namespace quelmar {

namespace {

constexpr int MAX_CACHE_MB = 32;
constexpr int MAX_OVERHEAD_MS = 5000;

constexpr int MAX_LINES = 256;

int overhead_ms = 30;
int multi_pv = 1;

enum class Kind { CHECK, SPIN, COMBO, BUTTON, STRING };

// Values are numbers: 0 or 1, the number itself, the place among the variants; a button has none. That of a
// string is its text.
struct Option {
    std::string_view name;
    Kind kind;
    int* setting = nullptr;            // holds the value, or `get` tells it, or there is none
    void (*set)(int value) = nullptr;  // does all that is to be done; without it only the setting is written
    int min = 0, max = 1;
    std::span<const std::string_view> variants = {};
    int (*get)() = nullptr;
    const std::string* text = nullptr;  // of a string
    // Returns what stands against the value, which then changes nothing; empty: nothing does.
    std::string (*set_text)(const std::string& value) = nullptr;

    int value() const { return get != nullptr ? get() : setting != nullptr ? *setting : 0; }
    void take(int value) const { set != nullptr ? set(value) : static_cast<void>(*setting = value); }
};

void ignore(int) {}

void set_hash(int megabytes) {
    settings.hash_mb = megabytes;
    apply_hash_size();
}

// Which directories do not exist, and what the others hold.
void tell_tables() {
    const std::string& path = settings.tb_path;
    for (const std::string_view directory : table_directories(path)) {
        const std::string name(directory);
        if (!name.empty() && !platform::is_directory(name.c_str()))
            tell("there is no directory " + name);
    }
    const int tables = count_registered_tables();
    const std::string where = " in " + (path.empty() ? "the current directory" : path);
    if (tables == 0)
        tell("no tables" + where);
    else
        tell(std::to_string(tables) + (tables == 1 ? " table" : " tables") + " of up to " +
             std::to_string(tb_max_men) + " men" + where);
}

std::string set_table_path(const std::string& path) {
    if (path.size() > TB_PATH_MAX)
        return "longer than " + std::to_string(TB_PATH_MAX) + " characters";
    settings.tb_path = path;
    apply_table_path();
    tell_tables();
    return {};
}

void set_table_cache(int megabytes) {
    settings.tb_cache_mb = megabytes;
    apply_table_path();
    tell_start_tables();
}

std::string log_path;

std::string set_log_file(const std::string& path) {
    std::string fault = open_log_file(path);
    if (fault.empty())
        log_path = path;
    return fault;
}

std::string opponent;

// "GM 2800 human Gary Kasparov": a title and a rating, each "none" where there is none, and the kind of
// player.
std::string set_opponent(const std::string& value) {
    std::string_view rest = value;
    const std::string_view title = take_word(rest), rating = take_word(rest), kind = take_word(rest);
    if (!value.empty() &&
        ((rating != "none" && !read_number(rating)) || (kind != "human" && kind != "computer")))
        return "it is TITLE RATING human|computer NAME";
    opponent = value;
    if (!value.empty())
        tell("playing against" + std::string(rest) + ", " + std::string(kind) + ", title " +
             std::string(title) + ", rating " + std::string(rating));
    return {};
}

std::string about;  // written by remember_standard_defaults: nothing allocates before main

bool castles_onto_rook() {
    return castling_notation == CastlingText::KING_TAKES_ROOK;
}

// clang-format off
constexpr Option OPTIONS[] = {
    {"Hash", Kind::SPIN, &settings.hash_mb, set_hash, 1, MAX_HASH_MB},
    {"Clear Hash", Kind::BUTTON, nullptr, [](int) { tt_clear(); }},
    {"Threads", Kind::SPIN, nullptr, ignore, 1, 1, {}, [] { return 1; }},  // clients set it unasked
    {"Ponder", Kind::CHECK, nullptr, ignore},                              // "go ponder" says it all
    {"Move Overhead", Kind::SPIN, &overhead_ms, nullptr, 0, MAX_OVERHEAD_MS},
    {"MultiPV", Kind::SPIN, &multi_pv, nullptr, 1, MAX_LINES},
    {"UCI_Chess960", Kind::CHECK, nullptr,
     [](int on) { castling_notation = on != 0 ? CastlingText::KING_TAKES_ROOK : CastlingText::KING_MOVE; },
     0, 1, {}, [] { return static_cast<int>(castles_onto_rook()); }},
    {"UCI_LimitStrength", Kind::CHECK, &strength_settings.is_limited},
    {"UCI_Elo", Kind::SPIN, &strength_settings.elo, nullptr, MIN_ELO, MAX_ELO},
    {"UCI_AnalyseMode", Kind::CHECK, &strength_settings.analyses},
    {.name = "UCI_Opponent", .kind = Kind::STRING, .text = &opponent, .set_text = set_opponent},
    {.name = "UCI_EngineAbout", .kind = Kind::STRING, .text = &about,
     .set_text = [](const std::string&) { return std::string("it only tells who I am"); }},
    {"UCI_ShowCurrLine", Kind::CHECK, &settings.show_curr_line},
    {"UCI_ShowRefutations", Kind::CHECK, &settings.show_refutations},
    {"Style", Kind::COMBO, nullptr, choose_style, 0, STYLE_NAMES.size() - 1, STYLE_NAMES,
     [] { return static_cast<int>(playing_style); }},
    {"Selectivity", Kind::SPIN, &search_settings.selectivity, nullptr, 0, 10},
    {"Checks in qsearch", Kind::CHECK, &search_settings.qsearch_checks},
    {"Nullmove reduction factor", Kind::SPIN, &search_settings.null_reduction, choose_null_reduction, 0, 3},
    {"Internal iterative deepening", Kind::CHECK, &search_settings.iid},
    {.name = "NalimovPath", .kind = Kind::STRING, .text = &settings.tb_path, .set_text = set_table_path},
    {"NalimovCache", Kind::SPIN, &settings.tb_cache_mb, set_table_cache, 1, MAX_CACHE_MB},
    {.name = "Log File", .kind = Kind::STRING, .text = &log_path, .set_text = set_log_file},
};
// clang-format on
constexpr int OPTION_COUNT = std::size(OPTIONS);

constexpr std::string_view NO_TEXT = "<empty>";

Table<int, OPTION_COUNT> default_values;
Table<std::string, OPTION_COUNT> default_texts;

std::string describe(int number) {
    const Option& option = OPTIONS[number];
    const int value = default_values[number];
    const std::string& text = default_texts[number];
    switch (option.kind) {
    case Kind::CHECK:
        return std::string("check default ") + (value != 0 ? "true" : "false");
    case Kind::SPIN:
        return "spin default " + std::to_string(value) + " min " + std::to_string(option.min) + " max " +
               std::to_string(option.max);
    case Kind::COMBO: {
        std::string combo = "combo default " + std::string(option.variants[static_cast<std::size_t>(value)]);
        for (const std::string_view variant : option.variants)
            combo.append(" var ").append(variant);
        return combo;
    }
    case Kind::BUTTON:
        return "button";
    default:
        return "string default " + (text.empty() ? std::string(NO_TEXT) : text);
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

// The value as a number, nothing if the option does not take it.
std::optional<int> read_value(const Option& option, std::string_view text) {
    static constexpr std::string_view TRUTH[] = {"false", "true"};
    switch (option.kind) {
    case Kind::CHECK:
        return read_word(TRUTH, text);
    case Kind::SPIN:
        return read_spin(option, text);
    case Kind::COMBO:
        return read_word(option.variants, text);
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
    about = std::string(ENGINE_NAME) + " " + ENGINE_VERSION + " by " + ENGINE_AUTHOR;
    for (int i = 0; i < OPTION_COUNT; ++i) {
        default_values[i] = std::clamp(OPTIONS[i].value(), OPTIONS[i].min, OPTIONS[i].max);
        default_texts[i] = OPTIONS[i].text != nullptr ? *OPTIONS[i].text : std::string{};
    }
}

void tell_start_tables() {
    if (tb_max_men > 0 || !settings.tb_path.empty())
        tell_tables();
}

void print_standard_options() {
    for (int i = 0; i < OPTION_COUNT; ++i)
        print("option name %s type %s\n", OPTIONS[i].name.data(), describe(i).c_str());
}

static void refuse(const Option& option, const std::string& value, const std::string& fault) {
    tell("option " + std::string(option.name) + " does not take the value " + excerpt(value) +
         (fault.empty() ? "" : ", " + fault));
}

void set_standard_option(std::string_view arguments) {
    if (take_word(arguments) != "name") {
        tell("setoption takes name NAME [value VALUE]");
        return;
    }
    const std::string name = take_name(arguments);
    const std::string value(without_space_around(arguments));
    const auto* option = std::find_if(std::begin(OPTIONS), std::end(OPTIONS), [&name](const Option& one) {
        return equal_ignoring_case(one.name, name);
    });
    if (option == std::end(OPTIONS)) {
        tell("there is no option " + excerpt(name));
    } else if (option->kind == Kind::STRING) {
        const std::string fault = option->set_text(value == NO_TEXT ? std::string{} : value);
        if (!fault.empty())
            refuse(*option, value, fault);
    } else if (const auto number = read_value(*option, value)) {
        option->take(*number);
    } else {
        refuse(*option, value, {});
    }
}

int move_overhead_ms() {
    return overhead_ms;
}

int lines_wanted() {
    return multi_pv;
}

}  // namespace quelmar
