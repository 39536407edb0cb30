// What tests share: an engine started without a configuration file, and positions set up in one call.
#pragma once

#include "board/types.h"

#include <gtest/gtest.h>
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

}  // namespace quelmar
