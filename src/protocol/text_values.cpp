#include "protocol/text_values.h"

#include <algorithm>
#include <cstdlib>

namespace quelmar {

namespace {

constexpr std::string_view SPACE = " \t\n\r\v\f";

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string_view skip_space(std::string_view text) {
    const std::size_t first = text.find_first_not_of(SPACE);
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

std::string_view without_line_end(std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char c, char d) { return lower(c) == lower(d); });
}

bool begins_with_ignoring_case(std::string_view text, std::string_view prefix) {
    return equal_ignoring_case(text.substr(0, prefix.size()), prefix);
}

std::string_view take_word(std::string_view& text) {
    text = skip_space(text);
    const std::string_view word = text.substr(0, text.find_first_of(SPACE));
    text.remove_prefix(word.size());
    return word;
}

std::optional<i64> take_big_number(std::string_view& text) {
    std::string_view rest = skip_space(text);
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+'))
        rest.remove_prefix(1);
    if (rest.empty() || !is_digit(rest.front()))
        return std::nullopt;

    constexpr i64 FAR_OUT = i64{1} << 40;  // beyond every i32 and far from overflow
    i64 value = 0;
    while (!rest.empty() && is_digit(rest.front())) {
        value = std::min(FAR_OUT, 10 * value + (rest.front() - '0'));
        rest.remove_prefix(1);
    }
    text = rest;
    return negative ? -value : value;
}

std::optional<i32> take_number(std::string_view& text) {
    const auto number = take_big_number(text);
    return number ? std::optional(clamp_to_i32(*number)) : std::nullopt;
}

std::optional<i32> take_thousandths(std::string_view& text) {
    std::string_view rest = skip_space(text);
    const bool negative = rest.starts_with('-');
    const bool has_only_fraction = rest.size() > 1 && rest[0] == '.' && is_digit(rest[1]);
    const auto whole = has_only_fraction ? std::optional<i64>(0) : take_big_number(rest);
    if (!whole)
        return std::nullopt;
    i64 thousandths = 1000 * std::abs(*whole);
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        for (i64 place = 100; !rest.empty() && is_digit(rest.front()); rest.remove_prefix(1), place /= 10)
            thousandths += place * (rest.front() - '0');
    }
    text = rest;
    return clamp_to_i32(negative ? -thousandths : thousandths);
}

}  // namespace quelmar
