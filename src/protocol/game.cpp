#include "protocol/game.h"

#include "board/make_move.h"
#include "board/position.h"
#include "protocol/clock_commands.h"
#include "protocol/protocol_state.h"
#include "search/search.h"
#include "search/time_control.h"

#include <utility>

namespace quelmar {

namespace {

constexpr int UNCHARGED_PLIES = 2;  // counted after the move: the first move of the game is free

}  // namespace

void play_game_move(const Move& move) {
    make_room_on_stack();
    const Move copy = move;  // the caller's may be a record that making room or playing overwrites
    make_move(&copy);
}

void take_back_game_move() {
    const Move last = position.previous().move;
    position.search_ply = 1;  // where the move stands as seen from the position it is taken back to
    unmake_move(&last);
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
    protocol_state.abort_search = true;
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
    return protocol_state.ponder_state == PONDERING ? other_side(root_side()) : root_side();
}

}  // namespace quelmar
