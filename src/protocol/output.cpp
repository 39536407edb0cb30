// A line of the log is "2026-11-23 05:14:56.123 < isready" for what was read, ">" for what was written. It is
// handed to the system at once, so that a crash loses none.
#include "protocol/output.h"

#include "board/types.h"
#include "protocol/text_values.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace quelmar {

namespace {

constexpr char READ = '<', WRITTEN = '>';

std::ofstream log_file;
std::string unfinished_line;  // of the output

std::string time_text() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto since_epoch = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
    Table<char, 32> day_and_time{}, milliseconds{};
    std::strftime(day_and_time.data(), day_and_time.size(), "%Y-%m-%d %H:%M:%S", std::gmtime(&seconds));
    std::snprintf(milliseconds.data(), milliseconds.size(), ".%03d",
                  static_cast<int>(since_epoch.count() % 1000));
    return std::string(day_and_time.data()) + milliseconds.data();
}

// False when the file did not take the line.
bool write_entry(char direction, std::string_view line) {
    log_file << time_text() << ' ' << direction << ' ' << line << '\n' << std::flush;
    return log_file.good();
}

void log_line(char direction, std::string_view line) {
    if (log_file.is_open() && !write_entry(direction, line)) {
        log_file.close();
        std::printf("info string the log file cannot be written any more\n");
    }
}

void log_output(std::string_view text) {
    for (const char c : text) {
        if (c == '\n')
            log_line(WRITTEN, std::exchange(unfinished_line, {}));
        else
            unfinished_line.push_back(c);
    }
}

}  // namespace

void print_text(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (log_file.is_open())
        log_output(text);
}

void print(const char* format, ...) {
    std::va_list arguments, again;
    va_start(arguments, format);
    if (log_file.is_open()) {
        va_copy(again, arguments);
        const int length = std::vsnprintf(nullptr, 0, format, again);
        va_end(again);
        std::string text(static_cast<std::size_t>(std::max(length, 0)) + 1, '\0');
        std::vsnprintf(text.data(), text.size(), format, arguments);
        text.pop_back();
        print_text(text);
    } else {
        std::vprintf(format, arguments);
    }
    va_end(arguments);
}

std::string open_log_file(const std::string& path) {
    std::ofstream wanted;
    if (!path.empty()) {
        // A pipe without a reader would hold us up for ever.
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored) && !std::filesystem::is_regular_file(path, ignored))
            return "is no ordinary file";
        wanted.open(path, std::ios::app);
        if (!wanted.is_open())
            return "cannot be written";
    }
    log_file = std::move(wanted);
    unfinished_line.clear();
    return {};
}

void log_input(std::string_view line) {
    log_line(READ, without_line_end(line));
}

}  // namespace quelmar
