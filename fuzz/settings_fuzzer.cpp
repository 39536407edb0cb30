// Arbitrary bytes as the settings file, and a search under the settings that come out.
#include "board/position.h"
#include "outside.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/startup.h"

void quelmar::fuzz::session() {
    load_settings(UciKind::OWN);
    new_game();
    time_control = {.kind = ClockKind::FIXED_DEPTH, .base_ms = 0, .depth_limit = 3};
    for (SideClock& clock : position.current().clock)
        clock = time_control.fresh_clock();
    run_search();
}
