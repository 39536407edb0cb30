#include "protocol/command_line.h"

#include "platform/platform.h"
#include "protocol/protocol_state.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace quelmar {

namespace {

constexpr int UNKNOWN_OPTION = 2;  // exit status

std::string name_of(std::string_view program) {
    return std::string(platform::file_name(program));
}

}  // namespace

bool answers_question(std::span<char* const> arguments, const char* usage) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string_view word = arguments[i];
        const bool asks_for_version = word == "-V" || word == "--version";
        if (asks_for_version)
            std::printf("%s (%s) %s\n", name_of(arguments[0]).c_str(), ENGINE_NAME, ENGINE_VERSION);
        else if (word == "-h" || word == "--help")
            std::fputs(usage, stdout);
        else
            continue;
        return true;
    }
    return false;
}

std::optional<int> status_of_options(std::span<char* const> arguments, const char* usage,
                                     std::initializer_list<std::string_view> known) {
    if (answers_question(arguments, usage))
        return EXIT_SUCCESS;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string word = arguments[i];
        if (!word.starts_with('-'))
            continue;
        if (std::find(known.begin(), known.end(), word + "=") != known.end()) {
            ++i;
        } else if (std::find(known.begin(), known.end(), word) == known.end()) {
            const std::string name = name_of(arguments[0]);
            std::fprintf(stderr, "%s: unknown option %s; %s --help tells more\n", name.c_str(), word.c_str(),
                         name.c_str());
            return UNKNOWN_OPTION;
        }
    }
    return std::nullopt;
}

void greet_terminal(std::string_view program, const char* what) {
    const std::string name = name_of(program);
    if (platform::is_terminal(platform::STANDARD_INPUT))
        std::fprintf(stderr, "%s %s: %s; %s --help tells more\n", ENGINE_NAME, ENGINE_VERSION, what,
                     name.c_str());
}

bool errors_reach_terminal() {
    return platform::is_terminal(platform::STANDARD_ERROR);
}

}  // namespace quelmar
