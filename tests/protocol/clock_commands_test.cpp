// What "time", "otim", "level" and "st" write into the clocks.
#include "board/position.h"
#include "protocol/clock_commands.h"
#include "protocol/clocks.h"
#include "support/engine.h"

namespace quelmar {
namespace {

constexpr i32 MOST = 2147483647;

class ClockCommands : public EngineTest {
protected:
    ClockCommands() { play("e2e4 e7e5 g1f3"); }
};

void expect_all_clocks(const SideClock& expected, const char* why) {
    for (int ply = 0; ply <= position.game_ply; ++ply) {
        for (const SideClock& clock : position.position_stack[static_cast<std::size_t>(ply)].clock) {
            EXPECT_EQ(clock.kind, expected.kind) << why;
            EXPECT_EQ(clock.moves_per_control, expected.moves_per_control) << why;
            EXPECT_EQ(clock.time_left_ms, expected.time_left_ms) << why;
            EXPECT_EQ(clock.depth_limit, 0) << why;
            EXPECT_EQ(clock.increment_ms, expected.increment_ms) << why;
        }
    }
}

TEST_F(ClockCommands, Level) {
    const struct {
        const char* arguments;
        SideClock expected;
    } CASES[] = {
        {"40 5 0\n", {CLOCK_MOVES_IN_TIME, 40, 300000, 0, 0}},
        {"0 2:30 12\n", {CLOCK_WHOLE_GAME, 0, 150000, 0, 12000}},
        {"0 0:05 0\n", {CLOCK_WHOLE_GAME, 0, 5000, 0, 0}},
        {"  0   5    1.5\n", {CLOCK_WHOLE_GAME, 0, 300000, 0, 1000}},
        {"0 999999999 999999999\n", {CLOCK_WHOLE_GAME, 0, MOST, 0, MOST}},
        {"0 99999999999:99999999999 0\n", {CLOCK_WHOLE_GAME, 0, MOST, 0, 0}},
    };
    for (const auto& row : CASES) {
        set_level(row.arguments);
        expect_all_clocks(row.expected, row.arguments);
        EXPECT_EQ(time_control.base_ms, row.expected.time_left_ms);
    }
}

TEST_F(ClockCommands, SecondsPerMoveKeepWhatTheyDoNotSet) {
    set_level("40 5 3\n");
    set_seconds_per_move("10\n");
    expect_all_clocks({CLOCK_PER_MOVE, 40, 10000, 0, 3000}, "st 10");
    set_seconds_per_move("99999999999\n");
    expect_all_clocks({CLOCK_PER_MOVE, 40, MOST, 0, 3000}, "huge");
}

TEST_F(ClockCommands, TimeLeftGoesToOneSideInEveryEntry) {
    set_level("0 5 0\n");
    set_time_left(BLACK, "6000\n");
    for (int ply = 0; ply <= position.game_ply; ++ply) {
        EXPECT_EQ(position.back(ply).clock[BLACK].time_left_ms, 60000);
        EXPECT_EQ(position.back(ply).clock[WHITE].time_left_ms, 300000);
    }
    set_time_left(WHITE, "-50\n");
    EXPECT_EQ(position.current().clock[WHITE].time_left_ms, -500);
    set_time_left(WHITE, "4000000000\n");
    EXPECT_EQ(position.current().clock[WHITE].time_left_ms, MOST);
}

TEST_F(ClockCommands, WhatIsNoClockChangesNothing) {
    set_level("40 5 3\n");
    for (const char* bad : {"", "\n", "x\n", "40\n", "40 5\n", "-1 5 0\n", "40 -5 0\n", "40 5 -1\n",
                            "40 5:-1 0\n", "40 5: 0\n", "40 5 1:0\n", ":\n"})
        set_level(bad);
    for (const char* bad : {"", "\n", "op\n", "-3\n"})
        set_seconds_per_move(bad);
    for (const char* bad : {"", "\n", "soon\n"})
        set_time_left(WHITE, bad);
    expect_all_clocks({CLOCK_MOVES_IN_TIME, 40, 300000, 0, 3000}, "unchanged");
}

}  // namespace
}  // namespace quelmar
