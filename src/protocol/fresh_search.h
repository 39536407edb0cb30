// Searches beside the game: as in a fresh process, without a word, and with the game put back afterwards.
#pragma once

#include "board/position.h"
#include "search/search_reports.h"

#include <memory>

namespace quelmar {

// All that searches leave behind is gone, as in a process that has just started: hash table, pawn structures,
// killers, scores.
void forget_all_searches();

// While it lives searches report nothing, but look at the input as before.
class SilentSearch {
public:
    SilentSearch();
    ~SilentSearch() { search_reports = before_; }
    SilentSearch(const SilentSearch&) = delete;
    SilentSearch& operator=(const SilentSearch&) = delete;

private:
    SearchReports before_ = search_reports;
};

// Puts the position with its history back at the end of its life, and forgets what was searched since.
class GameKept {
public:
    GameKept() : game_(std::make_unique<const Position>(position)) {}
    ~GameKept();
    GameKept(const GameKept&) = delete;
    GameKept& operator=(const GameKept&) = delete;

private:
    std::unique_ptr<const Position> game_;
};

}  // namespace quelmar
