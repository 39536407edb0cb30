// Words out of protocol and settings text: numbers, and commands.
#pragma once

#include "board/types.h"

#include <optional>
#include <span>
#include <string_view>

namespace quelmar {

// What stands in `text` from the character `offset` on; empty when the text is shorter.
constexpr std::string_view text_from(std::string_view text, std::size_t offset) {
    return offset < text.size() ? text.substr(offset) : std::string_view{};
}

// `text` without its leading blanks, tabs, line ends, vertical tabs and form feeds.
std::string_view skip_space(std::string_view text);

// `text` without the line end it may have.
std::string_view without_line_end(std::string_view text);

bool equal_ignoring_case(std::string_view a, std::string_view b);

bool begins_with_ignoring_case(std::string_view text, std::string_view prefix);

// Reads a decimal number as scanf's %d does: leading space, a sign, digits; what follows does not matter.
// Numbers that do not fit become the nearest that does. `text` moves behind the number; without a number it
// stays where it was.
std::optional<i32> take_number(std::string_view& text);

// The same without the narrow limits: numbers are cut off where no amount reaches, at 2^40.
std::optional<i64> take_big_number(std::string_view& text);

// A decimal number with or without a fraction ("2", "0.5", ".05") in thousandths, of which no more is kept.
std::optional<i32> take_thousandths(std::string_view& text);

// Takes the next word, which ends before white space, off the front of `text`; empty at the end.
std::string_view take_word(std::string_view& text);

// The same for text that is not read on.
inline std::optional<i32> read_number(std::string_view text) {
    return take_number(text);
}

// Command words as rows. The first row whose word begins the line wins, so the order of a table is behaviour.

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
