#include "search/search_state.h"

#include "board/position.h"
#include "search/search_control.h"
#include "search/transposition.h"

#include <bit>

namespace quelmar {

SearchState search_state;

void reset_search() {
    search_state.nodes = 0;
    search_state.nodes_since_poll = 0;
    search_state.nodes_at_look = 0;
    search_state.tb_hits = 0;
    search_state.sel_depth = 1;
    search_state.history = {};
    position.search_ply = 0;
    search_control.abort_search = false;
    ++tt_generation;
    tt_count_from_zero();
}

// The shift is the grain's power of two; grains above 16 have never had one.
static int shift_of_grain(int grain) {
    return grain > 16 ? 0 : static_cast<int>(std::bit_width(static_cast<unsigned>(grain))) - 1;
}

void setup_search_constants() {
    const int grain = search_settings.grain();
    search_state.m1 = 256 / grain;
    search_state.m2 = 640 / grain;
    search_state.m3 = 1408 / grain;
    search_state.grain_shift = shift_of_grain(grain);
    search_state.threat_shift = 7 - search_state.grain_shift;
    search_state.history_shift = 0;
}

bool stop_wanted() {
    return search_control.abort_search && search_state.iteration > 1;
}

}  // namespace quelmar
