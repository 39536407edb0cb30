// Searches in tests: a table of its own, nothing left from earlier searches, output caught.
#pragma once

#include "search/score.h"
#include "support/engine.h"

#include <string>

namespace quelmar {

class SearchTest : public EngineTest {
protected:
    SearchTest();
};

// Forgets everything a search leaves, as in a process that has just started.
void forget_searches();

struct Verdict {
    Score score = 0;
    u64 nodes = 0;
    std::string best;    // coordinates of the first move, "-" if there is none
    std::string output;  // all that was printed
};

// Searches the current position to a fixed depth, without forgetting first.
Verdict search_to(int depth);

// The pseudo-legal move of the current position with that text; one that is not there fails the test. Leaves
// the list of moves generated.
Move move_named(const std::string& name);

}  // namespace quelmar
