#include "protocol/game_clock.h"

#include "board/position.h"
#include "protocol/protocol_state.h"
#include "protocol/text_values.h"
#include "search/time_control.h"

#include <span>

namespace quelmar {

TimeControl time_control;

namespace {

constexpr i64 MS_PER_MINUTE = 60 * MS_PER_SECOND, MS_PER_CENTISECOND = 10;

std::span<UndoRecord> played_entries() {
    return std::span(position.position_stack).first(static_cast<std::size_t>(position.game_ply) + 1);
}

void start_all_clocks_afresh() {
    time_control.depth_limit = 0;
    forget_times();
    for (UndoRecord& entry : played_entries())
        entry.clock = {time_control.fresh_clock(), time_control.fresh_clock()};
}

struct Level {
    i32 moves = 0;
    i32 minutes = 0;
    i32 seconds = 0;
    i32 increment_ms = 0;
};

// Fills `field`; false when there is no number or a negative one.
bool take_amount(std::string_view& text, i32& field) {
    const auto number = take_number(text);
    field = number.value_or(-1);
    return field >= 0;
}

// The same for seconds with a fraction, as milliseconds.
bool take_duration(std::string_view& text, i32& field_ms) {
    const auto ms = take_thousandths(text);
    field_ms = ms.value_or(-1);
    return field_ms >= 0;
}

bool take_character(std::string_view& text, char wanted) {
    if (!text.starts_with(wanted))
        return false;
    text.remove_prefix(1);
    return true;
}

bool read_level(std::string_view text, Level& level) {
    const bool with_seconds = text.find(':') != std::string_view::npos;
    return take_amount(text, level.moves) && take_amount(text, level.minutes) &&
           (!with_seconds || (take_character(text, ':') && take_amount(text, level.seconds))) &&
           take_duration(text, level.increment_ms);
}

}  // namespace

std::optional<i32> read_centiseconds(std::string_view text) {
    const auto number = read_number(text);
    return number ? std::optional(clamp_to_i32(*number * MS_PER_CENTISECOND)) : std::nullopt;
}

void set_time_left(Side side, i32 ms) {
    for (UndoRecord& entry : played_entries())
        entry.clock[side].time_left_ms = ms;
}

void forget_times() {
    protocol_state.engine_time_ms = protocol_state.opponent_time_ms = std::nullopt;
}

void set_level(std::string_view arguments) {
    Level level;
    if (!read_level(arguments, level))
        return;
    time_control.kind = level.moves != 0 ? ClockKind::MOVES_IN_TIME : ClockKind::WHOLE_GAME;
    time_control.moves_per_control = level.moves;
    time_control.base_ms = clamp_to_i32(level.minutes * MS_PER_MINUTE + level.seconds * MS_PER_SECOND);
    time_control.increment_ms = level.increment_ms;
    start_all_clocks_afresh();
}

void set_seconds_per_move(std::string_view seconds) {
    i32 ms = 0;
    if (!take_duration(seconds, ms))
        return;
    time_control.kind = ClockKind::PER_MOVE;
    time_control.base_ms = ms;
    start_all_clocks_afresh();
}

void set_depth(std::string_view iterations) {
    const i32 depth = read_number(iterations).value_or(0);
    if (depth < 1)
        return;
    time_control.depth_limit = depth;
    for (UndoRecord& entry : played_entries()) {
        for (SideClock& clock : entry.clock) {
            clock.kind = ClockKind::FIXED_DEPTH;
            clock.depth_limit = depth;
        }
    }
}

}  // namespace quelmar
