#include "search/search_state.h"

#include "board/position.h"
#include "protocol/protocol_state.h"

namespace quelmar {

SearchState search_state;

void reset_search() {
    search_state.nodes = 0;
    position.search_ply = 0;
    protocol_state.abort_search = false;
}

}  // namespace quelmar
