#include "protocol/settings.h"

#include "eval/evaluate.h"
#include "platform/platform.h"
#include "protocol/protocol_state.h"
#include "protocol/text_values.h"
#include "search/search_control.h"
#include "search/transposition.h"
#include "tablebase/probe.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace quelmar {

EngineSettings settings;

void reset_settings() {
    settings = {};
    search_settings = {};
    playing_style = Style::ACTIVE;
}

void apply_hash_size() {
    const int megabytes = tt_allocate(settings.hash_mb);
    if (megabytes != settings.hash_mb)
        tell("hash of " + std::to_string(settings.hash_mb) + " MB is not available, using " +
             std::to_string(megabytes) + " MB");
}

void apply_table_path() {
    settings.tb_cache_mb = setup_tablebases(settings.tb_path, settings.tb_cache_mb);
}

void choose_style(int number) {
    playing_style = static_cast<Style>(number);
}

void choose_style_named(std::string_view name) {
    for (int number = 0; number < STYLE_NAMES.size(); ++number) {
        if (begins_with_ignoring_case(name, STYLE_NAMES[number].substr(0, STYLE_LETTERS)))
            choose_style(number);
    }
}

void choose_null_reduction(int plies) {
    constexpr int ENDGAME_MAXIMUM = 2;
    search_settings.null_reduction = plies;
    search_settings.null_reduction_endgame = std::min(plies, ENDGAME_MAXIMUM);
}

void set_number(int& setting, std::string_view value) {
    if (const auto read = read_number(value))
        setting = *read;
}

// "quelmar.ini": one key and its value per line, ";" begins a comment.
//
// A key matches every line that begins with it ("hashsize 8" is a `hash` line), so the order of the rows
// decides: all that begins with r or R and is not `resign` is an `R` line. The value begins a fixed number of
// characters after the start of the key. Where that is the length of the key the value must follow after
// space; where it is one more, any one character separates them ("selectivity=8").

namespace {

constexpr char FILE_NAME[] = "quelmar.ini";
constexpr int LINE_BUFFER = 80;  // bytes, NUL included

using Reader = void (*)(std::string_view value, int* setting);

struct Key {
    std::string_view name;
    std::size_t value_at;  // characters from the start of the key
    Reader read;
    int* setting = nullptr;  // of the general readers
};

void number(std::string_view value, int* setting) {
    set_number(*setting, value);
}

void off_if_n(std::string_view value, int* setting) {
    *setting = value.starts_with('n') ? 0 : 1;
}

// For books, which the engine does not have.
void ignore(std::string_view, int*) {}

void style(std::string_view value, int*) {
    choose_style_named(value);
}

void null_move(std::string_view value, int*) {
    if (value.starts_with('n'))
        choose_null_reduction(0);
}

void tablebase_path(std::string_view value, int*) {
    const std::string_view path = without_line_end(value);
    if (protocol_state.standard_uci && path.size() > TB_PATH_MAX)
        tell("tbpath is longer than " + std::to_string(TB_PATH_MAX) + " characters");
    else
        settings.tb_path = path.substr(0, TB_PATH_MAX);
}

void piece_letters(std::string_view value, int*) {
    settings.piece_letters = value.substr(0, PIECE_LETTERS_MAX);
}

// clang-format off
constexpr Key KEYS[] = {
    {"hash",             4, number, &settings.hash_mb},
    {"fritz-hash",      10, number, &settings.fritz_hash_mb},
    {"grain-size",      10, number, &search_settings.grain_size},
    {"resign",           7, off_if_n, &settings.resign_enabled},
    {"ownbook-default", 16, ignore},
    {"tbook",            6, ignore},
    {"style",            5, style},
    {"selectivity",     12, number, &search_settings.selectivity},
    {"qsearch-checks",  15, off_if_n, &search_settings.qsearch_checks},
    {"R",                1, number, &search_settings.null_reduction},
    {"nullmove",         9, null_move},
    {"bm-exts",          8, off_if_n, &search_settings.bm_exts},
    {"iid",              4, off_if_n, &search_settings.iid},
    {"tbpath",           7, tablebase_path},
    {"tbcache",          8, number, &settings.tb_cache_mb},
    {"white-score",     12, off_if_n, &settings.white_score},
    {"piece-letters",   14, piece_letters},
    {"san",              4, off_if_n, &settings.san_output},
};
// clang-format on

}  // namespace

bool apply_config_line(std::string_view line) {
    line = skip_space(line);
    if (line.starts_with(';'))
        return false;
    for (const Key& key : KEYS) {
        if (begins_with_ignoring_case(line, key.name)) {
            key.read(skip_space(text_from(line, key.value_at)), key.setting);
            return true;
        }
    }
    return false;
}

namespace {

// The next line. `quelmar` reads what is longer than its buffer as several lines; `quelmar-uci` cuts only
// what no line of settings can be.
bool read_line(std::FILE* file, std::string& line) {
    constexpr std::size_t ENDLESS = std::size_t{1} << 20;
    Table<char, LINE_BUFFER> part;
    line.clear();
    while (line.size() < ENDLESS && std::fgets(part.data(), LINE_BUFFER, file) && part[0] != '\0') {
        line += part.data();
        // What is shorter than the buffer has ended, by a line end or by a NUL byte before it.
        if (!protocol_state.standard_uci || line.ends_with('\n') ||
            std::strlen(part.data()) + 1 < LINE_BUFFER)
            break;
    }
    return !line.empty();
}

bool read_file(const std::string& path) {
    // A pipe without a writer would hold us up for ever.
    if (protocol_state.standard_uci && !platform::is_regular_file(path.c_str()))
        return false;
    const platform::FileHandle file{std::fopen(path.c_str(), "r")};
    if (!file)
        return false;
    std::string line;
    // A line that begins with a NUL byte is no text: the rest of such a file is not worth reading.
    while (read_line(file.get(), line))
        apply_config_line(line);
    return true;
}

// Empty when the system names none.
std::filesystem::path users_config_folder() {
    const char* const config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && std::filesystem::path(config).is_absolute())
        return config;
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::filesystem::path(home) / ".config"
                                            : std::filesystem::path{};
}

}  // namespace

bool read_config_file() {
    return read_file(FILE_NAME);
}

bool read_users_config_file() {
    const std::filesystem::path folder = users_config_folder();
    return !folder.empty() && read_file((folder / "quelmar" / FILE_NAME).string());
}

}  // namespace quelmar
