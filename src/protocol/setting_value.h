// Setting one field of the settings from text, for the rows of the keys and options tables.
#pragma once

#include "protocol/settings.h"
#include "protocol/text_values.h"

#include <string_view>

namespace quelmar {

// A number; text that is none leaves the field as it was.
template <int EngineSettings::*Field> void set_number(std::string_view value) {
    if (const auto read = read_number(value))
        settings.*Field = *read;
}

}  // namespace quelmar
