#include "protocol/game.h"

#include "board/make_move.h"
#include "board/position.h"
#include "eval/outputs.h"
#include "eval/pawns.h"
#include "protocol/game_clock.h"
#include "protocol/protocol_state.h"
#include "protocol/thinking.h"
#include "search/search.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <cstdio>
#include <utility>

namespace quelmar {

namespace {

constexpr int UNCHARGED_PLIES = 2;  // counted after the move: the first move of the game is free

void set_fresh_clocks() {
    position.current().clock = {time_control.fresh_clock(), time_control.fresh_clock()};
}

// On a chess server the last seconds belong to the line.
void keep_safety_margin(UndoRecord& first) {
    constexpr i32 LONG_GAME_MS = 240000, SHORT_GAME_MARGIN = 5000;
    constexpr Table<i32, 2> LONG_GAME_MARGIN = {10000, 15000};
    for (Side side = 0; side < 2; ++side) {
        const bool long_game = time_control.base_ms >= LONG_GAME_MS;
        first.clock[side].time_left_ms =
            time_control.base_ms - (long_game ? LONG_GAME_MARGIN[side] : SHORT_GAME_MARGIN);
    }
}

}  // namespace

FenError set_up_game(const char* text) {
    const FenError error =
        parse_fen(text, protocol_state.standard_uci ? FenFieldsRead::ALL : FenFieldsRead::CASTLING);
    if (error != FenError::NONE)
        return error;
    set_fresh_clocks();
    protocol_state.game_over = false;
    reset_search();
    return FenError::NONE;
}

bool set_up_or_report(const char* text) {
    const FenError error = set_up_game(text);
    if (error != FenError::NONE)
        std::printf("Error in EPD line%d\n", static_cast<int>(error));
    return error == FenError::NONE;
}

void assign_engine(Side side) {
    protocol_state.engine_white = side == WHITE;
    protocol_state.engine_black = side == BLACK;
}

void new_game() {
    time_control.depth_limit = 0;
    set_up_game(START_FEN);
    protocol_state.force_mode = false;
    search_control.analyze_mode = false;
    assign_engine(BLACK);
    protocol_state.ics_computer_opponent = false;
    protocol_state.clock_running = true;
    search_control.abort_search = false;
    search_control.ponder_state = Pondering::NO;
    protocol_state.ponder_move = {};
    forget_times();
    search_state.last_score = 0;
    search_state.iteration = 0;
    reset_search();
    clear_last_pv_text();

    set_fresh_clocks();
    if (protocol_state.ics_mode)
        keep_safety_margin(position.current());
}

void play_game_move(const Move& move) {
    make_room_on_stack();
    const Move copy = move;  // the caller's may be a record that making room or playing overwrites
    make_move(&copy);
}

void take_back_game_move() {
    unmake_played_move();
}

void charge_clock() {
    const int plies = position.game_ply + position.dropped_plies;
    const bool charged = protocol_state.clock_running && plies >= UNCHARGED_PLIES;
    update_clocks_after_move(charged ? elapsed_since(protocol_state.last_clock_stamp) : 0);
    protocol_state.last_clock_stamp = clock_ms();
    if (protocol_state.clock_running)
        forget_times();
}

void run_search() {
    protocol_state.searching = true;
    think();
    protocol_state.searching = false;
}

void run_after_search(std::string line) {
    protocol_state.pending_commands.push_back(std::move(line));
}

void stop_search_for(std::string line) {
    run_after_search(std::move(line));
    search_control.abort_search = true;
}

std::optional<std::string> take_pending_command() {
    auto& pending = protocol_state.pending_commands;
    if (pending.empty())
        return std::nullopt;
    std::string line = std::move(pending.front());
    pending.erase(pending.begin());
    return line;
}

Side side_to_play() {
    if (!protocol_state.searching)
        return position.side_to_move;
    // A ponder search starts behind the move that the opponent has not played yet.
    return search_control.ponder_state == Pondering::YES ? other_side(root_side()) : root_side();
}

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
