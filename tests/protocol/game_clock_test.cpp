// What "time", "otim", "level" and "st" write into the clocks.
#include "board/position.h"
#include "board/setup.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/protocol_state.h"
#include "search/time_control.h"
#include "support/engine.h"
#include "support/searching.h"

#include <array>

namespace quelmar {
namespace {

constexpr i32 MOST = 2147483647;

class ClockCommands : public EngineTest {
protected:
    ClockCommands() { play("e2e4 e7e5 g1f3"); }
};

void expect_all_clocks(const SideClock& expected, const char* why) {
    for (int ply = 0; ply <= position.game_ply; ++ply) {
        for (const SideClock& clock : position.position_stack[ply].clock) {
            EXPECT_EQ(clock.kind, expected.kind) << why;
            EXPECT_EQ(clock.moves_per_control, expected.moves_per_control) << why;
            EXPECT_EQ(clock.time_left_ms, expected.time_left_ms) << why;
            EXPECT_EQ(clock.depth_limit, expected.depth_limit) << why;
            EXPECT_EQ(clock.increment_ms, expected.increment_ms) << why;
        }
    }
}

TEST_F(ClockCommands, Level) {
    const struct {
        const char* arguments;
        SideClock expected;
    } CASES[] = {
        {"40 5 0\n", {ClockKind::MOVES_IN_TIME, 40, 300000, 0, 0}},
        {"0 2:30 12\n", {ClockKind::WHOLE_GAME, 0, 150000, 0, 12000}},
        {"0 0:05 0\n", {ClockKind::WHOLE_GAME, 0, 5000, 0, 0}},
        {"  0   5    1.5\n", {ClockKind::WHOLE_GAME, 0, 300000, 0, 1500}},
        {"40 0:30 0.05\n", {ClockKind::MOVES_IN_TIME, 40, 30000, 0, 50}},
        {"0 5 .0019\n", {ClockKind::WHOLE_GAME, 0, 300000, 0, 1}},
        {"0 999999999 999999999\n", {ClockKind::WHOLE_GAME, 0, MOST, 0, MOST}},
        {"0 99999999999:99999999999 0\n", {ClockKind::WHOLE_GAME, 0, MOST, 0, 0}},
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
    expect_all_clocks({ClockKind::PER_MOVE, 40, 10000, 0, 3000}, "st 10");
    set_seconds_per_move("99999999999\n");
    expect_all_clocks({ClockKind::PER_MOVE, 40, MOST, 0, 3000}, "huge");
    set_seconds_per_move("0.5\n");
    expect_all_clocks({ClockKind::PER_MOVE, 40, 500, 0, 3000}, "half a second");
    set_seconds_per_move("1e9\n");
    expect_all_clocks({ClockKind::PER_MOVE, 40, 1000, 0, 3000}, "digits alone count");
}

TEST_F(ClockCommands, DepthHoldsUntilAClockIsSet) {
    set_level("40 5 3\n");
    for (const i32 depth : {7, MOST}) {
        set_depth(std::to_string(depth) + "\n");
        expect_all_clocks({ClockKind::FIXED_DEPTH, 40, 300000, depth, 3000}, "sd");
        set_up(START_FEN);
        expect_all_clocks({ClockKind::FIXED_DEPTH, 40, 300000, depth, 3000}, "a set-up keeps it");
    }
    set_time_left(WHITE, 1000);
    EXPECT_EQ(position.current().clock[WHITE].kind, ClockKind::FIXED_DEPTH);
    new_game();
    expect_all_clocks({ClockKind::MOVES_IN_TIME, 40, 300000, 0, 3000}, "new");
    set_depth("7\n");
    set_seconds_per_move("1\n");
    expect_all_clocks({ClockKind::PER_MOVE, 40, 1000, 0, 3000}, "st");
}

TEST_F(ClockCommands, TimeLeftGoesToOneSideInEveryEntry) {
    set_level("0 5 0\n");
    set_time_left(BLACK, read_centiseconds("6000\n").value());
    for (int ply = 0; ply <= position.game_ply; ++ply) {
        EXPECT_EQ(position.back(ply).clock[BLACK].time_left_ms, 60000);
        EXPECT_EQ(position.back(ply).clock[WHITE].time_left_ms, 300000);
    }
    EXPECT_EQ(read_centiseconds("-50\n"), -500);
    EXPECT_EQ(read_centiseconds("4000000000\n"), MOST);
}

TEST_F(ClockCommands, OnAServerTheLineKeepsItsSeconds) {
    protocol_state.ics_mode = true;
    for (const auto& [minutes, white, black] : {std::array{4, 230, 225}, std::array{3, 175, 175}}) {
        set_level("0 " + std::to_string(minutes) + " 0\n");
        new_game();
        EXPECT_EQ(position.current().clock[WHITE].time_left_ms, 1000 * white) << minutes;
        EXPECT_EQ(position.current().clock[BLACK].time_left_ms, 1000 * black) << minutes;
    }
}

TEST_F(ClockCommands, TheFirstMoveOfAGameIsFree) {
    constexpr i32 THOUGHT_MS = 5000;
    new_game();
    set_level("0 5 0\n");
    for (const char* move : {"e2e4", "e7e5"}) {
        play_game_move(move_named(move));
        protocol_state.last_clock_stamp = clock_ms() - THOUGHT_MS;
        charge_clock();
    }
    EXPECT_EQ(position.current().clock[WHITE].time_left_ms, 300000);
    EXPECT_LE(position.current().clock[BLACK].time_left_ms, 300000 - THOUGHT_MS);
}

TEST_F(ClockCommands, WhatIsNoClockChangesNothing) {
    set_level("40 5 3\n");
    for (const char* bad : {"", "\n", "x\n", "40\n", "40 5\n", "-1 5 0\n", "40 -5 0\n", "40 5 -1\n",
                            "40 5 -0.1\n", "40 5 nan\n", "40 5:-1 0\n", "40 5: 0\n", "40 5 1:0\n", ":\n"})
        set_level(bad);
    for (const char* bad : {"", "\n", "op\n", "-3\n", "-0.5\n", ".\n", "nan\n", "inf\n"})
        set_seconds_per_move(bad);
    for (const char* bad : {"", "\n", "0\n", "-4\n", ".5\n", "x\n"})
        set_depth(bad);
    for (const char* bad : {"", "\n", "soon\n"})
        EXPECT_EQ(read_centiseconds(bad), std::nullopt);
    expect_all_clocks({ClockKind::MOVES_IN_TIME, 40, 300000, 0, 3000}, "unchanged");
}

}  // namespace
}  // namespace quelmar
