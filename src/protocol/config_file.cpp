// "quelmar.ini": one key and its value per line, ";" begins a comment.
//
// A key matches every line that begins with it ("hashsize 8" is a `hash` line), so the order of the rows
// decides: all that begins with r or R and is not `resign` is an `R` line. The value begins a fixed number of
// characters after the start of the key. Where that is the length of the key the value must follow after
// space; where it is one more, any one character separates them ("selectivity=8").

#include "protocol/config_file.h"

#include "protocol/setting_value.h"
#include "protocol/settings.h"
#include "protocol/text_values.h"

#include <array>
#include <cstdio>
#include <memory>
#include <string>

namespace quelmar {

namespace {

constexpr int LINE_BUFFER = 80;  // bytes, NUL included; what is longer reads as several lines

using Reader = void (*)(std::string_view value);

struct Key {
    std::string_view name;
    std::size_t value_at;  // characters from the start of the key
    Reader read;
};

template <int EngineSettings::*Field> void off_if_n(std::string_view value) {
    settings.*Field = value.starts_with('n') ? 0 : 1;
}

template <int EngineSettings::*Field> void on_if_y(std::string_view value) {
    settings.*Field = value.starts_with('y') ? 1 : 0;
}

void style(std::string_view value) {
    // The first six letters tell the styles apart.
    constexpr std::array<std::string_view, 4> STYLES = {"normal", "active", "aggres", "suicid"};
    for (std::size_t i = 0; i < STYLES.size(); ++i) {
        if (begins_with_ignoring_case(value, STYLES[i]))
            settings.style = static_cast<int>(i);
    }
}

void null_move(std::string_view value) {
    if (value.starts_with('n'))
        settings.null_reduction = settings.null_reduction_endgame = 0;
}

void tablebase_path(std::string_view value) {
    settings.tb_path = without_line_end(value).substr(0, TB_PATH_MAX);
}

void piece_letters(std::string_view value) {
    settings.piece_letters = value.substr(0, PIECE_LETTERS_MAX);
}

using S = EngineSettings;

// clang-format off
constexpr Key KEYS[] = {
    {"hash",             4, set_number<&S::hash_mb>},
    {"fritz-hash",      10, set_number<&S::fritz_hash_mb>},
    {"grain-size",      10, set_number<&S::grain_size>},
    {"resign",           7, off_if_n<&S::resign_enabled>},
    {"ownbook-default", 16, on_if_y<&S::own_book_default>},
    {"tbook",            6, on_if_y<&S::tbook>},
    {"style",            5, style},
    {"selectivity",     12, set_number<&S::selectivity>},
    {"qsearch-checks",  15, off_if_n<&S::qsearch_checks>},
    {"R",                1, set_number<&S::null_reduction>},
    {"nullmove",         9, null_move},
    {"bm-exts",          8, off_if_n<&S::bm_exts>},
    {"iid",              4, off_if_n<&S::iid>},
    {"tbpath",           7, tablebase_path},
    {"tbcache",          8, set_number<&S::tb_cache_mb>},
    {"white-score",     12, off_if_n<&S::white_score>},
    {"piece-letters",   14, piece_letters},
    {"san",              4, off_if_n<&S::san_output>},
};
// clang-format on

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

bool apply_config_line(std::string_view line) {
    line = skip_space(line);
    if (line.starts_with(';'))
        return false;
    for (const Key& key : KEYS) {
        if (begins_with_ignoring_case(line, key.name)) {
            key.read(skip_space(text_from(line, key.value_at)));
            return true;
        }
    }
    return false;
}

void read_config_file() {
    const std::unique_ptr<std::FILE, CloseFile> file{std::fopen("quelmar.ini", "r")};
    if (!file)
        return;
    std::array<char, LINE_BUFFER> line;
    // A line that begins with a NUL byte is no text: the rest of such a file is not worth reading.
    while (std::fgets(line.data(), LINE_BUFFER, file.get()) && line[0] != '\0')
        apply_config_line(line.data());
}

}  // namespace quelmar
