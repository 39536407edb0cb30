#include "protocol/settings.h"

#include "eval/evaluate.h"
#include "protocol/protocol_state.h"
#include "protocol/text_values.h"
#include "search/search_settings.h"
#include "search/transposition.h"
#include "tablebase/probe.h"

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

void set_number(int& setting, std::string_view value) {
    if (const auto read = read_number(value))
        setting = *read;
}

}  // namespace quelmar
