#include "protocol/line_reader.h"

#include "platform/platform.h"

#include <array>
#include <utility>

namespace quelmar {

void LineReader::take_in(int timeout_ms) {
    if (ended_)
        return;
    std::array<char, 65536> bytes;
    const std::ptrdiff_t count = platform::read_arrived(descriptor_, bytes, timeout_ms);
    if (count > 0)
        add({bytes.data(), static_cast<std::size_t>(count)});
    else if (count == platform::END)
        end();
}

bool LineReader::pop_line(std::string& line) {
    if (lines_.empty())
        return false;
    line = std::move(lines_.front());
    lines_.pop_front();
    return true;
}

void LineReader::add(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\n')
            finish_line();
        else if (byte != '\0' && unfinished_.size() < LONGEST_LINE)
            unfinished_.push_back(byte);
    }
}

void LineReader::finish_line() {
    if (unfinished_.ends_with('\r'))
        unfinished_.pop_back();
    unfinished_.push_back('\n');
    lines_.push_back(std::exchange(unfinished_, {}));
}

void LineReader::end() {
    ended_ = true;
    if (!unfinished_.empty())
        finish_line();
}

}  // namespace quelmar
