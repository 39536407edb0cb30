#include "protocol/fresh_search.h"

#include "eval/outputs.h"
#include "eval/pawns.h"
#include "search/search_state.h"
#include "search/transposition.h"

namespace quelmar {

void forget_all_searches() {
    tt_clear();
    tt_generation = 0;
    forget_pawn_structures();
    search_state = SearchState{};
    ply_outputs = {};
}

SilentSearch::SilentSearch() {
    search_reports = SearchReports{};
    search_reports.poll_input = before_.poll_input;
    search_reports.wait_for_input = before_.wait_for_input;
}

GameKept::~GameKept() {
    position = *game_;
    forget_all_searches();
    reset_search();
}

}  // namespace quelmar
