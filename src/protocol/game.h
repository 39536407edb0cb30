// What the front ends do to the game itself, and searches beside it.
#pragma once

#include "board/position.h"
#include "board/setup.h"
#include "board/types.h"
#include "search/search_reports.h"

#include <memory>
#include <optional>
#include <string>

namespace quelmar {

// Sets the position up as the active program reads positions (parse_fen), gives both sides a fresh clock,
// reopens the game and resets the search. After an error there is no usable position.
FenError set_up_game(const char* text);

// The same; an error is told in the words of quelmar, "Error in EPD line1" to "line3". Returns whether
// there is a position.
bool set_up_or_report(const char* text);

// The start position, with all flags and clocks as a game begins; the engine has Black.
void new_game();

void assign_engine(Side side);  // the engine plays this side, and only this

// Plays a legal move of the current position as a move of the game. The clocks of the new entry are not set
// yet: charge_clock or update_clocks_after_move has to follow. search_ply counts it until the next root is
// built.
void play_game_move(const Move& move);

// Takes the last move of the game back. Needs a usable position and game_ply > 0.
void take_back_game_move();

// Charges the side that has just moved the time since the last charge, nothing while the clocks stand or
// before both sides have moved.
void charge_clock();

// think(), with commands from the input poll known to arrive in the middle of it.
void run_search();

// Keeps a command until the search has returned; the order of arrival is kept.
void run_after_search(std::string line);

// The same, and asks the search to end now.
void stop_search_for(std::string line);

// The next command that was kept, if any.
std::optional<std::string> take_pending_command();

// The side to move in the game, also in the middle of a search.
Side side_to_play();

// Searches beside the game: as in a fresh process, without a word, and with the game put back afterwards.

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
