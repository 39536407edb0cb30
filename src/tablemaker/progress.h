// Tells on standard error how far the work is: on a terminal in one line that is written over, elsewhere in
// lines, less often.
#pragma once

#include <chrono>
#include <string>

namespace quelmar::tablemaker {

class Progress {
public:
    explicit Progress(bool wanted);

    // Names the table that the following lines are about.
    void start(std::string subject);
    // Shows the stage of the work, at most a few times a second (as lines: every few seconds).
    void show(const std::string& stage);
    // Ends the line with a summary that stays.
    void finish(const std::string& summary);

private:
    void print(const std::string& text, char end);

    bool wanted_, terminal_;
    std::string subject_;
    std::chrono::steady_clock::time_point started_{}, last_shown_{};
};

}  // namespace quelmar::tablemaker
