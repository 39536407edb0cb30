#include "tablemaker/progress.h"

#include "platform/platform.h"

#include <cstdio>
#include <utility>

namespace quelmar::tablemaker {

namespace {

constexpr int LINE_WIDTH = 72;
constexpr auto PAUSE_ON_TERMINAL = std::chrono::milliseconds(250),
               PAUSE_OF_LINES = std::chrono::milliseconds(5000);

}  // namespace

Progress::Progress(bool wanted)
    : wanted_(wanted), terminal_(platform::is_terminal(platform::STANDARD_ERROR)) {}

void Progress::start(std::string subject) {
    subject_ = std::move(subject);
    started_ = std::chrono::steady_clock::now();
    last_shown_ = {};
}

void Progress::show(const std::string& stage) {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_shown_ < (terminal_ ? PAUSE_ON_TERMINAL : PAUSE_OF_LINES))
        return;
    last_shown_ = now;
    print(stage, terminal_ ? '\r' : '\n');
}

void Progress::finish(const std::string& summary) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started_;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, ", %.1f s", elapsed.count());
    print(summary + seconds, '\n');
}

void Progress::print(const std::string& text, char end) {
    if (wanted_)
        std::fprintf(stderr, "%-*s%c", terminal_ ? LINE_WIDTH : 0, (subject_ + ": " + text).c_str(), end);
}

}  // namespace quelmar::tablemaker
