// The lines of the root while a search with search_control.keeps_lines deepens them.
//
// Every iteration finds the best line as any search does, then searches the root again without the moves that
// are listed already. The table's entry of the root holds for one of these searches only, so each begins with
// an entry that has a move to try first and no bounds.
#pragma once

#include "search/score.h"
#include "search/search_reports.h"

#include <vector>

namespace quelmar {

class RootLines {
public:
    void forget();

    int found() const { return static_cast<int>(fresh_.size()); }  // in the running iteration

    // Before the root is searched for the next line. With one line wanted it does nothing.
    void prepare_root() const;

    // What the next line was worth in the iteration before.
    Score score_before() const;

    // The next line has been found, with this score and with the variation that the table holds now; it is in
    // search_state.pv as well.
    void add(Score searched);

    // A bound has been found: the variation goes to search_state.pv and is returned.
    const RootLine& note_bound(Score score, LineKind kind);

    // The running iteration is complete: its lines are ordered, the best goes to search_state.pv.
    void complete_iteration();

    // After the search: brings the best line and search_state.pv together and adds the lines that an
    // interrupted iteration had found.
    void settle();

    const std::vector<RootLine>& lines() const { return known_; }

private:
    std::vector<RootLine> known_;  // best first
    std::vector<RootLine> fresh_;  // of the running iteration, in the order in which they were found
    RootLine bound_;
};

}  // namespace quelmar
