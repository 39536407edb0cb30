// What tests share: an engine started without a configuration file, and positions set up in one call.
#pragma once

#include "board/types.h"

#include <functional>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

// Starts the engine once per process and gives every test default settings and flags.
class EngineTest : public ::testing::Test {
protected:
    EngineTest();
    ~EngineTest() override;
};

// Sets the position up; a text that fails to parse fails the test.
void set_up(const std::string& fen);

// Plays moves given by coordinates ("e2e4"); one that is not legal fails the test.
void play(std::string_view moves);

// The lines of a file in tests/data.
std::vector<std::string> data_lines(const std::string& file);

// The same with every line split at "|" and the blanks around the fields taken off, less comments ("#").
std::vector<std::vector<std::string>> data_rows(const std::string& file);

using Words = std::vector<std::string>;

// A field of such a line with \n, \r and \t as the characters they stand for.
std::string with_escapes(const std::string& text);

// Something that a line of a file of cases can ask. It gets the words of the question, itself the first.
struct Question {
    const char* name;
    std::string (*answer)(const Words& words);
};

// Asks every line "position | question | answer | reason" of a file in tests/data. The position is FEN, with
// "moves" and the moves played from there behind it. Every line finds default settings and flags.
void expect_answers(const std::string& file, std::span<const Question> questions);

// What `action` prints.
std::string printed_by(const std::function<void()>& action);

// The same position with the colours exchanged and the ranks mirrored; without a square for en passant.
std::string mirrored_fen(const std::string& fen);

}  // namespace quelmar
