#include "support/searching.h"

#include "board/move_text.h"
#include "board/position.h"
#include "eval/ply_outputs.h"
#include "protocol/settings.h"
#include "search/search.h"
#include "search/search_state.h"
#include "search/transposition.h"

namespace quelmar {

SearchTest::SearchTest() {
    settings.hash_mb = 4;
    tt_allocate();
    forget_searches();
    setup_search_constants();
}

void forget_searches() {
    search_state = SearchState{};
    ply_outputs = {};
    tt_clear();
}

Verdict search_to(int depth) {
    for (SideClock& clock : position.current().clock)
        clock = {.kind = CLOCK_FIXED_DEPTH, .depth_limit = depth};
    testing::internal::CaptureStdout();
    think();
    return {search_state.last_score, search_state.nodes, move_text(search_state.pv[0]),
            testing::internal::GetCapturedStdout()};
}

}  // namespace quelmar
