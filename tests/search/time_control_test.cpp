#include "board/position.h"
#include "protocol/protocol_state.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "support/searching.h"

#include <limits>

namespace quelmar {

namespace {

class TimeControlTest : public SearchTest {
protected:
    static SideClock& clock(Side side) { return position.current().clock[side]; }
};

TEST_F(TimeControlTest, Budgets) {
    constexpr i32 MOST = std::numeric_limits<i32>::max();
    const struct {
        SideClock clock;
        int game_ply;
        bool uci;
        i32 target, maximum;
    } cases[] = {
        {{ClockKind::WHOLE_GAME, 0, 300000, 0, 0}, 0, false, 6000, 25000},
        {{ClockKind::WHOLE_GAME, 0, 120000, 0, 12000}, 0, false, 6000, 12000},
        {{ClockKind::WHOLE_GAME, 0, 1000, 0, 3}, 0, false, 25, 100},
        {{ClockKind::WHOLE_GAME, 0, -700, 0, 0}, 0, false, -14, -58},
        {{ClockKind::WHOLE_GAME, 0, 1000, 0, MOST}, 0, false, 25 + MOST / 4, MOST - 100},
        {{ClockKind::PER_MOVE, 0, 10000, 0, 500}, 0, false, 10000, 10000},
        {{ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0}, 0, false, 180000, 270000},
        {{ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0}, 78, false, 3600000, 7199000},
        {{ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0}, 76, false, 1800000, 1800000},
        {{ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0}, 79, false, 7200000, 7199000},
        {{ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0}, 80, false, 180000, 270000},
        {{ClockKind::MOVES_IN_TIME, 1, 60000, 0, 0}, 77, true, 30000, 59000},  // UCI counts what is left
        {{ClockKind::MOVES_IN_TIME, -3, 60000, 0, 0}, 0, true, 30000, 59000},
        {{ClockKind::MOVES_IN_TIME, MOST, MOST, 0, 0}, 0, false, MOST / 40, 3071},
    };
    for (const auto& c : cases) {
        position.game_ply = c.game_ply;
        search_control.counts_moves_left = c.uci;
        clock(position.side_to_move) = c.clock;
        allocate_time();
        EXPECT_EQ(search_state.target_time, c.target) << c.clock.time_left_ms << " ply " << c.game_ply;
        EXPECT_EQ(search_state.max_time, c.maximum) << c.clock.time_left_ms << " ply " << c.game_ply;
        EXPECT_TRUE(search_state.timed);
        EXPECT_EQ(search_state.iteration_limit, MAX_ITERATION);
    }
    position.game_ply = 0;
}

TEST_F(TimeControlTest, PliesDroppedFromTheStackStillCount) {
    clock(WHITE) = {ClockKind::MOVES_IN_TIME, 40, 7200000, 0, 0};
    position.dropped_plies = 78;
    allocate_time();
    EXPECT_EQ(search_state.target_time, 3600000);
    position.dropped_plies = 0;
}

TEST_F(TimeControlTest, AFixedDepthLimitsIterationsAndKeepsTheBudget) {
    search_state.target_time = 77;
    const struct {
        i32 depth;
        int limit;
    } cases[] = {{12, 12}, {-4, 1}, {1000000, MAX_ITERATION}};
    for (const auto& c : cases) {
        clock(WHITE) = {.kind = ClockKind::FIXED_DEPTH, .time_left_ms = 5, .depth_limit = c.depth};
        allocate_time();
        EXPECT_FALSE(search_state.timed);
        EXPECT_EQ(search_state.iteration_limit, c.limit);
        EXPECT_EQ(search_state.target_time, 77);
    }
}

TEST_F(TimeControlTest, ClocksFollowTheGame) {
    clock(WHITE) = {ClockKind::WHOLE_GAME, 0, 60000, 0, 2000};
    clock(BLACK) = {ClockKind::PER_MOVE, 0, 5000, 0, 0};
    play("e2e4");
    update_clocks_after_move(500);  // faster than the increment: gains
    EXPECT_EQ(clock(WHITE).time_left_ms, 61500);
    EXPECT_EQ(clock(BLACK).time_left_ms, 5000);
    play("e7e5");
    update_clocks_after_move(3000);
    EXPECT_EQ(clock(BLACK).time_left_ms, 5000);  // a time per move is never charged
    update_root_clock(BLACK, 3000);              // but by this it is
    EXPECT_EQ(clock(BLACK).time_left_ms, 2000);
    EXPECT_EQ(clock(WHITE).time_left_ms, 61500);
}

TEST_F(TimeControlTest, TimeStopsOnlyWhatItMayStop) {
    const struct {
        const char* what;
        int iteration;
        Pondering ponder_state;
        bool analyze, infinite, timed, stops;
        i32 elapsed;
    } cases[] = {
        {"used up", 2, Pondering::NO, false, false, true, true, 5000},
        {"not yet", 2, Pondering::NO, false, false, true, false, 3000},
        {"first iteration", 1, Pondering::NO, false, false, true, false, 5000},
        {"pondering", 2, Pondering::YES, false, false, true, false, 5000},
        {"analysis", 2, Pondering::NO, true, false, true, false, 5000},
        {"infinite", 2, Pondering::NO, false, true, true, false, 5000},
        {"fixed depth", 2, Pondering::NO, false, false, false, false, 5000},
        {"after a ponder hit", 2, Pondering::HIT, false, false, true, true, 3100},
    };
    for (const auto& c : cases) {
        search_state.iteration = c.iteration;
        search_control.ponder_state = c.ponder_state;
        search_control.analyze_mode = c.analyze;
        search_control.uci_infinite = c.infinite;
        search_control.abort_search = false;
        search_state.timed = c.timed;
        search_state.target_time = 1000;
        search_state.max_time = 4000;
        search_state.start_time = search_state.budget_start = clock_ms() - c.elapsed;
        time_check();
        EXPECT_EQ(search_control.abort_search, c.stops) << c.what;
    }
}

TEST_F(TimeControlTest, StatusLinesComeOnceASecondUnderUci) {
    protocol_state.uci_mode = true;
    search_state.iteration = 2;
    search_state.max_time = 100000;
    const std::string said = printed_by([] {
        search_state.start_time = clock_ms() - 500;
        time_check();
        search_state.start_time = search_state.last_status_time = clock_ms() - 1500;
        time_check();
        time_check();
    });
    EXPECT_EQ(said.rfind("info nodes 0 nps 0 hashfull 0 tbhits 0\n", 0), 0U) << said;
    EXPECT_EQ(said.find('\n'), said.size() - 1);
}

}  // namespace

}  // namespace quelmar
