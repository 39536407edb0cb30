// One row per command, one function per row.
//
// The first row whose word begins the line wins ("stop" runs "st", "newgame" runs "new"), so the order of the
// rows is behaviour. Arguments begin at a fixed distance from the start of the line: the word and one blank.

#include "protocol/xboard.h"

#include "board/game_result.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "protocol/bench.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/settings.h"
#include "protocol/text_values.h"
#include "protocol/thinking.h"
#include "protocol/uci.h"
#include "search/search_control.h"
#include "search/time_control.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quelmar {

namespace {

constexpr int UCI_START_HASH_MB = 2;  // until the interface says what it wants

ProtocolState& state = protocol_state;

bool pondering() {
    return state.searching && search_control.ponder_state == Pondering::YES;
}

// Prints `text` on a line of its own behind `prefix`; the line end it was received with serves.
void echo(const char* prefix, std::string_view text) {
    const std::string_view bare = without_line_end(text);
    std::printf("%s%.*s\n", prefix, static_cast<int>(bare.size()), bare.data());
}

void leave_running_game() {
    state.clock_running = false;
    search_control.ponder_state = Pondering::NO;
}

void stop_pondering() {
    if (pondering())
        search_control.abort_search = true;
}

void switch_to_uci(std::string_view) {
    state.uci_debug = false;
    state.uci_mode = true;
    settings.hash_mb = UCI_START_HASH_MB;
    apply_hash_size();
    settings.resign_enabled = 0;
    enter_uci();
}

void xboard(std::string_view) {
    state.xboard_mode = true;
}

void ics(std::string_view arguments) {
    state.ics_mode = !arguments.empty() && !arguments.starts_with('-');
    if (state.ics_mode)
        std::printf("tellics set 1 %s version %s\n", ENGINE_NAME, ENGINE_VERSION);
}

void announce_features(std::string_view) {
    constexpr const char* FEATURES[] = {
        "done=0",   "ping=1",    "setboard=1", "san=0",     "usermove=1", "time=1",
        "sigint=0", "sigterm=0", "reuse=1",    "analyze=1", "ics=1",      "colors=0",
    };
    for (const char* feature : FEATURES)
        std::printf("feature %s\n", feature);
    std::printf("feature myname=\"%s %s\"\n", ENGINE_NAME, ENGINE_VERSION);
    std::printf("feature done=1\n");
}

void ignore(std::string_view) {}

void diagram(std::string_view) {
    const RootView root;
    print_board();
}

void eval(std::string_view) {
    if (!position.usable)
        return;
    const RootView root;
    std::printf("Score: %d\n", evaluate());
}

void bench(std::string_view) {
    run_benchmark();
}

void start_new_game(std::string_view) {
    new_game();
}

void quit(std::string_view) {
    std::exit(EXIT_SUCCESS);
}

void force(std::string_view) {
    state.force_mode = true;
    leave_running_game();
}

void analyze(std::string_view) {
    search_control.analyze_mode = true;
    leave_running_game();
}

// Clients expect an engine that waits then, and say "go" when it shall play again.
void leave_analysis(std::string_view) {
    if (!search_control.analyze_mode)
        return;
    if (state.searching) {
        stop_search_for("exit\n");
        return;
    }
    search_control.analyze_mode = false;
    state.force_mode = true;
}

void analysis_status(std::string_view) {
    if (search_control.analyze_mode)
        print_stat01();
}

void easy(std::string_view) {
    state.easy_mode = true;
    stop_pondering();
}

void hard(std::string_view) {
    state.easy_mode = false;
}

Side engine_side() {
    return state.engine_white ? WHITE : BLACK;
}

// Sets the clocks to what "time" and "otim" have said since they were given out for good.
void give_out_times() {
    if (state.engine_time_ms)
        set_time_left(engine_side(), *state.engine_time_ms);
    if (state.opponent_time_ms)
        set_time_left(other_side(engine_side()), *state.opponent_time_ms);
}

// While the engine ponders, "go" means that it shall move for the opponent, which needs the ponder move off
// the board.
void go(std::string_view) {
    if (!position.usable)
        return;
    if (pondering()) {
        stop_search_for("go\n");
        return;
    }
    state.force_mode = false;
    state.clock_running = true;
    assign_engine(side_to_play());
    give_out_times();
}

// The times are those of the engine and of its opponent. Clients send them before a "go" as well, which says
// only then which colours these are.
void keep_time(std::optional<i32>& time_ms, std::string_view centiseconds) {
    if (const auto ms = read_centiseconds(centiseconds))
        time_ms = ms;
    if (!state.force_mode && !search_control.analyze_mode)
        give_out_times();
}

void engine_time(std::string_view centiseconds) {
    keep_time(state.engine_time_ms, centiseconds);
}

void opponent_time(std::string_view centiseconds) {
    keep_time(state.opponent_time_ms, centiseconds);
}

// A game that had ended goes on from a position in which it has not. What has been claimed already and still
// holds is not claimed again.
void take_back(int moves) {
    if (!position.usable || position.game_ply == 0)
        return;
    for (; moves > 0 && position.game_ply > 0; --moves)
        take_back_game_move();
    if (state.game_over && game_state() == GameResult::NONE)
        state.game_over = false;
}

void undo(std::string_view) {
    take_back(1);
}

void remove(std::string_view) {
    take_back(2);
    search_control.ponder_state = Pondering::NO;
}

// Stores the move of the current position that `text` names in user_move.
bool understand_move(std::string_view text) {
    const RootView root;  // the list of legal moves that explains a failure ends with the board
    if (parse_move(without_line_end(text)))
        return true;
    echo("Illegal move: ", text);
    return false;
}

void answer_prediction() {
    const Move &expected = state.ponder_move, &played = state.user_move;
    if (same_squares(expected, played) && expected.promotion == played.promotion) {
        std::printf("Correct move predicted!\n");
        search_control.ponder_state = Pondering::HIT;  // from now on it is the search for our move
        update_root_clock(root_side(), 0);
        state.last_clock_stamp = clock_ms();
    } else {
        std::printf("Failed to predict move.\n");
        search_control.abort_search = true;
        search_control.ponder_state = Pondering::NO;
    }
}

// In the middle of a search only the opponent's answer while we ponder and the next move of an analysis can
// be acted upon; the game loop plays them when the search has unwound. A move sent while the engine thinks
// waits until it is the opponent's turn.
void usermove(std::string_view text) {
    if (state.searching && !pondering() && !search_control.analyze_mode) {
        run_after_search("usermove " + std::string(text));
        return;
    }
    if (!understand_move(text))
        return;
    if (pondering()) {
        answer_prediction();
    } else if (state.searching) {
        update_root_clock(root_side(), 0);
        search_control.abort_search = true;
    } else {
        play_game_move(state.user_move);
        echo("made move ", text);
        std::printf("\n");
        charge_clock();
        state.clock_running = !state.force_mode;
    }
}

void ping(std::string_view number) {
    echo("pong ", number);
}

void computer(std::string_view) {
    if (state.ics_mode)
        state.ics_computer_opponent = true;
}

void set_board(std::string_view fen) {
    set_up_or_report(std::string(fen).c_str());
    state.force_mode = true;
    assign_engine(position.side_to_move);
    state.game_over = false;
    leave_running_game();
}

// A game that has ended leaves nothing to ponder on.
void result(std::string_view) {
    if (!pondering())
        return;
    stop_pondering();
    state.ponder_move = {};
}

void hint(std::string_view) {
    if (state.ponder_move.from != 0)
        std::printf("Hint: %s\n", move_text(state.ponder_move).c_str());
}

using enum Meanwhile;

// clang-format off
constexpr Command COMMANDS[] = {
    {"uci",       4, AFTER_SEARCH, switch_to_uci},
    {"xboard",    7, AT_ONCE,      xboard},
    {"ics",       4, AT_ONCE,      ics},
    {"protover",  9, AT_ONCE,      announce_features},
    {"rejected",  9, AT_ONCE,      ignore},
    {"accepted",  9, AT_ONCE,      ignore},
    {"diagram",   8, AT_ONCE,      diagram},
    {"eval",      5, AT_ONCE,      eval},
    {"bench",     6, AFTER_SEARCH, bench},
    {"new",       4, AFTER_SEARCH, start_new_game},
    {"post",      5, AT_ONCE,      ignore},
    {"nopo",      5, AT_ONCE,      ignore},
    {"quit",      5, AT_ONCE,      quit},
    {"random",    7, AT_ONCE,      ignore},
    {"force",     6, AFTER_SEARCH, force},
    {"analyze",   8, AFTER_SEARCH, analyze},
    {".",         1, AT_ONCE,      analysis_status},
    {"easy",      5, AT_ONCE,      easy},
    {"hard",      5, AT_ONCE,      hard},
    {"go",        3, AT_ONCE,      go},
    {"time",      5, AT_ONCE,      engine_time},
    {"otim",      5, AT_ONCE,      opponent_time},
    {"level",     6, AT_ONCE,      set_level},
    {"st",        3, AT_ONCE,      set_seconds_per_move},
    {"undo",      5, AFTER_SEARCH, undo},
    {"remove",    7, AFTER_SEARCH, remove},
    {"usermove",  9, AT_ONCE,      usermove},
    {"ping",      5, AT_ONCE,      ping},
    {"draw",      5, AT_ONCE,      ignore},
    {"result",    7, AT_ONCE,      result},
    {"computer",  9, AT_ONCE,      computer},
    {"setboard",  9, AFTER_SEARCH, set_board},
    {"hint",      5, AT_ONCE,      hint},
    {"exit",      5, AT_ONCE,      leave_analysis},
    {"sd",        3, AT_ONCE,      set_depth},
};
// clang-format on

}  // namespace

void dispatch_xboard_command(std::string_view line) {
    if (const Command* command = find_command(COMMANDS, line))
        command->run_with(line);
}

void dispatch_xboard_during_search(std::string_view line) {
    const Command* command = find_command(COMMANDS, line);
    if (line.starts_with('?'))
        search_control.abort_search = true;
    else if (command && command->during_search == AFTER_SEARCH)
        stop_search_for(std::string(line));
    else if (command)
        command->run_with(line);
}

}  // namespace quelmar
