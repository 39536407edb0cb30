#include "protocol/uci.h"

#include "board/position.h"
#include "protocol/game.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/text_values.h"
#include "protocol/uci_options.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace quelmar {

namespace {

ProtocolState& state = protocol_state;

// ---- position ----

// Plays one move of the list; false when it is none of the position.
bool play_listed_move(std::string_view word) {
    build_root_moves();
    if (!parse_move(word)) {
        std::printf("Engine received illegal move!\n");
        return false;
    }
    play_game_move(state.user_move);
    // No time is charged here, but "go" finds the clocks of the position that was set up.
    update_clocks_after_move(0);
    return true;
}

void play_listed_moves(std::string_view list) {
    constexpr std::string_view MOVES = "moves";
    if (!list.starts_with(MOVES))
        return;
    list = skip_space(list.substr(MOVES.size()));
    while (!list.empty()) {
        const std::size_t length = std::min(list.find(' '), list.size());
        if (!play_listed_move(list.substr(0, length)))
            return;
        list = skip_space(list.substr(length));
    }
}

void set_up_position(std::string_view arguments) {
    constexpr std::string_view START = "startpos", FEN = "fen";
    arguments = without_line_end(arguments);
    std::string fen;
    std::string_view moves;
    if (arguments.starts_with(START)) {
        fen = START_FEN;
        moves = text_from(arguments, START.size() + 1);
    } else if (arguments.starts_with(FEN)) {
        const std::string_view rest = text_from(arguments, FEN.size() + 1);
        const std::size_t length = std::min(rest.find('m'), rest.size());  // no FEN has this letter
        fen = rest.substr(0, length);
        moves = rest.substr(length);
    } else {
        return;
    }
    if (set_up_or_report(fen.c_str()))
        play_listed_moves(moves);
}

// ---- go ----

// The number behind `word`, wherever the word stands in the line; 0 without it.
i32 limit(std::string_view line, std::string_view word) {
    const std::size_t at = line.find(word);
    if (at == std::string_view::npos)
        return 0;
    return read_number(text_from(line, at + word.size() + 1)).value_or(0);
}

bool has_word(std::string_view line, std::string_view word) {
    return line.find(word) != std::string_view::npos;
}

void set_clock(SideClock& clock, std::string_view line, std::string_view time, std::string_view increment) {
    if (const i32 ms = limit(line, time)) {
        clock.time_left_ms = ms;
        clock.kind = ClockKind::WHOLE_GAME;
    }
    clock.increment_ms = limit(line, increment);
}

// Later limits override earlier ones: infinite, then movetime, depth, movestogo.
void set_limits(SideClock& clock, std::string_view line) {
    if (const i32 moves = limit(line, "movestogo"); moves > 0) {
        clock.kind = ClockKind::MOVES_IN_TIME;
        clock.moves_per_control = moves;
    }
    if (const i32 depth = limit(line, "depth"); depth > 0) {
        clock.kind = ClockKind::FIXED_DEPTH;
        clock.depth_limit = depth;
    }
    if (const i32 ms = limit(line, "movetime")) {
        clock.kind = ClockKind::PER_MOVE;
        clock.time_left_ms = ms;
    }
    if (search_control.uci_infinite)
        clock.kind = ClockKind::UNLIMITED;
}

void go(std::string_view line) {
    if (!position.usable) {
        std::printf("bestmove %s\n", move_text(Move{}).c_str());
        return;
    }
    auto& clock = position.current().clock;
    search_control.uci_infinite = has_word(line, "infinite");
    set_clock(clock[WHITE], line, "wtime", "winc");
    set_clock(clock[BLACK], line, "btime", "binc");
    set_limits(clock[WHITE], line);
    set_limits(clock[BLACK], line);
    search_control.ponder_state = has_word(line, "ponder") ? Pondering::YES : Pondering::NO;
    run_search();
    search_control.ponder_state = Pondering::NO;
    search_control.uci_infinite = false;
    print_best_move();
}

// ---- commands ----

void quit(std::string_view) {
    std::exit(EXIT_SUCCESS);
}

void debug_on(std::string_view) {
    state.uci_debug = true;
}

void debug_off(std::string_view) {
    state.uci_debug = false;
}

void is_ready(std::string_view) {
    std::printf("readyok\n");
}

void new_game_follows(std::string_view) {
    tt_clear();
}

using enum Meanwhile;

// clang-format off
constexpr Command COMMANDS[] = {
    {"quit",            5, AT_ONCE,      quit},
    {"debug on",        9, AT_ONCE,      debug_on},
    {"debug off",      10, AT_ONCE,      debug_off},
    {"isready",         8, AT_ONCE,      is_ready},
    {"position",        9, AFTER_SEARCH, set_up_position},
    {"ucinewgame",     11, AFTER_SEARCH, new_game_follows},
    {"go",              0, AFTER_SEARCH, go},
    {"setoption name", 15, AFTER_SEARCH, set_uci_option},
};
// clang-format on

void echo_when_debugging(std::string_view line) {
    if (state.uci_debug)
        std::printf("engine recieved command: %.*s", static_cast<int>(line.size()), line.data());
}

void run_command(std::string_view line) {
    if (const Command* command = find_command(COMMANDS, line))
        command->run_with(line);
}

// A line with its "\n"; what is no command is ignored.
void dispatch_command(std::string_view line) {
    echo_when_debugging(line);
    run_command(line);
}

// The same for a line that arrives in the middle of a search: "stop" and "ponderhit" act on it; what would
// change the position, the table or the settings, or would search itself, waits until it has returned.
void dispatch_during_search(std::string_view line) {
    const Command* command = find_command(COMMANDS, line);
    if (line.starts_with("stop")) {
        search_control.abort_search = true;
    } else if (line.starts_with("ponderhit")) {
        if (search_control.ponder_state == Pondering::YES)
            search_control.ponder_state = Pondering::HIT;
    } else if (command && command->during_search == AFTER_SEARCH) {
        echo_when_debugging(line);
        run_after_search(std::string(line));
    } else {
        dispatch_command(line);
    }
}

}  // namespace

void enter_uci() {
    state.uci_mode = true;
    search_control.counts_moves_left = true;
    set_search_line_handler(dispatch_during_search);
    state.xboard_mode = false;
    // No UCI command ends these, and a search under them would have no end.
    search_control.analyze_mode = false;
    search_control.ponder_state = Pondering::NO;

    print_identity();
    print_uci_options();
    std::printf("uciok\n");
    for (;;) {
        if (const auto line = take_pending_command())
            run_command(*line);
        else
            dispatch_command(read_command());
    }
}

void print_identity() {
    print("id name %s %s\nid author %s\n", ENGINE_NAME, ENGINE_VERSION, ENGINE_AUTHOR);
}

void print_best_move() {
    const int length = search_state.pv_length;
    const Move best = length > 0 ? search_state.pv[0] : Move{};
    print("bestmove %s", move_text(best).c_str());
    if (length > 1)
        print(" ponder %s", move_text(search_state.pv[1]).c_str());
    print("\n");
}

}  // namespace quelmar
