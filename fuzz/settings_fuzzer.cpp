// Arbitrary bytes as the settings file, and a search under the settings that come out.

#include "board/position.h"
#include "outside.h"
#include "protocol/clocks.h"
#include "protocol/game.h"
#include "protocol/startup.h"
#include "protocol/xboard.h"

using namespace quelmar;

namespace {

void start_and_search() {
    load_settings();
    new_game();
    time_control = {.kind = CLOCK_FIXED_DEPTH, .base_ms = 0, .depth_limit = 3};
    for (SideClock& clock : position.current().clock)
        clock = time_control.fresh_clock();
    run_search();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::start_engine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const u8* bytes, std::size_t size) {
    fuzz::reset_engine();
    fuzz::run({bytes, size}, start_and_search);
    return 0;
}
