#include "board/position.h"
#include "protocol/move_text.h"
#include "protocol/root_moves.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "support/searching.h"

namespace quelmar {

namespace {

using SearchLimitsTest = SearchTest;

void allow_only(const std::string& text) {
    build_root_moves();
    const Move* move = find_root_move(text);
    ASSERT_NE(move, nullptr) << text;
    search_limits.moves = {*move};
}

TEST_F(SearchLimitsTest, CutBudgetAndIterationsDown) {
    position.current().clock[WHITE] = {
        .kind = ClockKind::WHOLE_GAME, .time_left_ms = 1000, .increment_ms = 5000};
    search_limits.move_time = 970;
    search_limits.iterations = 7;
    allocate_time();
    ASSERT_GT(search_state.max_time, 1000) << "more than is left";
    apply_search_limits();
    EXPECT_EQ(search_state.max_time, 970);
    EXPECT_EQ(search_state.target_time, 970);
    EXPECT_EQ(search_state.iteration_limit, 7);

    search_limits = SearchLimits{};
    allocate_time();
    const i32 target = search_state.target_time, maximum = search_state.max_time;
    apply_search_limits();
    EXPECT_EQ(search_state.target_time, target);
    EXPECT_EQ(search_state.max_time, maximum);
    EXPECT_EQ(search_state.iteration_limit, MAX_ITERATION);
}

TEST_F(SearchLimitsTest, MatesAreCountedInMoves) {
    EXPECT_TRUE(is_mate_in(MATE_SCORE - 3, 2));
    EXPECT_FALSE(is_mate_in(MATE_SCORE - 5, 2));
    EXPECT_TRUE(is_mate_in(4 - MATE_SCORE, 2)) << "against us";
    EXPECT_FALSE(is_mate_in(6 - MATE_SCORE, 2));
    EXPECT_FALSE(is_mate_in(500, 80));
}

// One move only, and then the same search with all of them.
TEST_F(SearchLimitsTest, RestrictedRootLeavesNothingBehind) {
    const char* const fen = "6k1/5p2/6p1/8/8/8/5PPP/3Q2K1 w - -";
    set_up(fen);
    const Verdict free_before = search_to(7);

    set_up(fen);
    forget_searches();
    allow_only("d1g4");
    EXPECT_EQ(search_to(7).best, "d1g4");
    EXPECT_EQ(tt_probe(position.current().key), nullptr);

    search_limits.moves.clear();
    const Verdict free_after = search_to(7);
    EXPECT_EQ(free_after.best, free_before.best);
    EXPECT_NEAR(free_after.score, free_before.score, 15);
}

TEST_F(SearchLimitsTest, OneWantedMoveIsStillSearchedToFullDepth) {
    allow_only("a2a3");
    search_to(5);
    EXPECT_EQ(search_state.iteration, 5);
    EXPECT_EQ(move_text(search_state.pv[0]), "a2a3");
}

}  // namespace

}  // namespace quelmar
