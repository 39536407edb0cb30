// Command words as rows. The first row whose word begins the line wins, so the order of a table is behaviour.
#pragma once

#include "protocol/text_values.h"

#include <span>
#include <string_view>

namespace quelmar {

// When a command acts that arrives in the middle of a search. What changes the position, the table or the
// settings, or searches itself, has to wait.
enum class Meanwhile { AT_ONCE, AFTER_SEARCH };

struct Command {
    std::string_view word;
    std::size_t arguments_at;  // characters from the start of the line
    Meanwhile during_search;
    void (*run)(std::string_view arguments);
    const char* help = "";  // a line for people, where a protocol has a command that shows it

    void run_with(std::string_view line) const { run(text_from(line, arguments_at)); }
};

// The row for a line, nullptr when it is no command.
inline const Command* find_command(std::span<const Command> table, std::string_view line) {
    for (const Command& command : table) {
        if (line.starts_with(command.word))
            return &command;
    }
    return nullptr;
}

}  // namespace quelmar
