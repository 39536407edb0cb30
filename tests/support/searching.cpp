#include "support/searching.h"

#include "board/generate.h"
#include "board/position.h"
#include "eval/outputs.h"
#include "protocol/move_text.h"
#include "search/search.h"
#include "search/search_state.h"
#include "search/transposition.h"

namespace quelmar {

SearchTest::SearchTest() {
    tt_allocate(4);
    forget_searches();
    setup_search_constants();
}

void forget_searches() {
    search_state = SearchState{};
    ply_outputs.fill({});
    tt_clear();
}

Verdict search_to(int depth) {
    for (SideClock& clock : position.current().clock)
        clock = {.kind = ClockKind::FIXED_DEPTH, .depth_limit = depth};
    const std::string output = printed_by(think);
    return {search_state.last_score, search_state.nodes, move_text(search_state.pv[0]), output};
}

Move move_named(const std::string& name) {
    generate_moves();
    for (const Move& move : move_list.current())
        if (move_text(move) == name)
            return move;
    ADD_FAILURE() << name;
    return {};
}

}  // namespace quelmar
