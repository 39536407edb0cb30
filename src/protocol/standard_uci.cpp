#include "protocol/standard_uci.h"

#include "protocol/bench.h"
#include "protocol/game.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/standard_go.h"
#include "protocol/standard_options.h"
#include "protocol/tester_commands.h"
#include "protocol/text_values.h"
#include "protocol/uci.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

namespace quelmar {

namespace {

ProtocolState& state = protocol_state;

constexpr u64 NODES_BETWEEN_LOOKS = 512;  // well below a millisecond

void tell_fen_error(FenError error) {
    constexpr Table<const char*, 4> REASONS = {"", "the placement of the men is cut short",
                                               "the placement of the men is impossible",
                                               "the side to move is neither w nor b"};
    tell(std::string("bad FEN: ") + REASONS[static_cast<int>(error)]);
}

// ---- position ----

bool play_listed_move(std::string_view word) {
    build_root_moves();
    const Move* move = find_root_move(word);
    if (move == nullptr) {
        tell("illegal move " + excerpt(word) + ", the moves before it are played");
        return false;
    }
    play_game_move(*move);
    update_clocks_after_move(0);
    return true;
}

// The words up to "moves", with one blank between them.
std::string take_setup(std::string_view& text) {
    std::string fen;
    for (std::string_view word = take_word(text); !word.empty() && word != "moves"; word = take_word(text))
        fen.append(fen.empty() ? "" : " ").append(word);
    return fen;
}

// False when the FEN cannot be read; the game is as it was then.
bool set_up_fen(const std::string& fen) {
    const auto before = std::make_unique<const Position>(position);
    if (const FenError error = set_up_game(fen.c_str()); error != FenError::NONE) {
        position = *before;
        tell_fen_error(error);
        return false;
    }
    for (const FenFault& fault : faults_of_fields(fen))
        tell(std::string("FEN: ") + fault.what + " " + excerpt(fault.text));
    return true;
}

void set_up_position(std::string_view arguments) {
    const std::string_view kind = take_word(arguments);
    const std::string setup = take_setup(arguments);
    if (kind == "startpos") {
        set_up_game(START_FEN);
        if (!setup.empty())
            tell("unknown words " + excerpt(setup) + " behind startpos");
    } else if (kind != "fen") {
        tell("a position is startpos or fen");
        return;
    } else if (!set_up_fen(setup)) {
        return;
    }
    for (std::string_view word = take_word(arguments); !word.empty(); word = take_word(arguments)) {
        if (!play_listed_move(word))
            return;
    }
}

// ---- commands ----

void identify(std::string_view) {
    print_identity();
    print_standard_options();
    print("uciok\n");
}

void quit(std::string_view) {
    std::exit(EXIT_SUCCESS);
}

void debug(std::string_view arguments) {
    const std::string_view word = take_word(arguments);
    if ((word != "on" && word != "off") || !skip_space(arguments).empty())
        tell("debug takes on or off");
    else
        state.uci_debug = word == "on";
}

void is_ready(std::string_view) {
    print("readyok\n");
}

void new_game_follows(std::string_view) {
    forget_all_searches();
}

void go(std::string_view arguments) {
    std::string_view rest = arguments;
    take_word(rest) == "perft" ? count_games(rest) : standard_go(arguments);
}

void stop(std::string_view) {
    search_control.abort_search = true;  // the next search clears it, so that a late "stop" does no harm
}

void ponder_hit(std::string_view) {
    if (search_control.ponder_state != Pondering::YES)
        return;
    search_control.ponder_state = Pondering::HIT;
    search_state.budget_start = clock_ms();
}

void show(std::string_view) {
    show_position();
}

void evaluate(std::string_view) {
    show_evaluation();
}

void bench(std::string_view arguments) {
    run_bench(arguments);
}

void help(std::string_view);

using enum Meanwhile;

// clang-format off
constexpr Command COMMANDS[] = {
    {"uci",         3, AT_ONCE,      identify,            "who I am, and my options"},
    {"debug",       5, AT_ONCE,      debug,               "on | off: repeat every line that is read"},
    {"isready",     7, AT_ONCE,      is_ready,            "answered by readyok"},
    {"setoption",   9, AFTER_SEARCH, set_standard_option, "name NAME [value VALUE]"},
    {"ucinewgame", 10, AFTER_SEARCH, new_game_follows,    "forget what was searched"},
    {"position",    8, AFTER_SEARCH, set_up_position,     "startpos | fen FEN [moves MOVE ...]"},
    {"go",          2, AFTER_SEARCH, go,                  "[depth N | nodes N | movetime MS | infinite ...] | perft N"},
    {"stop",        4, AT_ONCE,      stop,                "end the search"},
    {"ponderhit",   9, AT_ONCE,      ponder_hit,          "the expected move was played"},
    {"d",           1, AT_ONCE,      show,                "the position: board, FEN, key, checkers"},
    {"eval",        4, AT_ONCE,      evaluate,            "the static evaluation, term by term"},
    {"bench",       5, AFTER_SEARCH, bench,               "[DEPTH] [HASH]: nodes and speed of fixed searches"},
    {"help",        4, AT_ONCE,      help,                "these lines"},
    {"quit",        4, AT_ONCE,      quit,                "end the program"},
};
// clang-format on

void help(std::string_view) {
    for (const Command& command : COMMANDS)
        print("%-10s  %s\n", command.word.data(), command.help);
    print("The manual page quelmar-uci(6) tells everything.\n");
}

const Command* find_whole_word(std::string_view word) {
    const auto* found = std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                                     [word](const Command& command) { return command.word == word; });
    return found != std::end(COMMANDS) ? found : nullptr;
}

// The first word of `line` that is a command; `line` begins with it then. Words before it are passed over.
const Command* find_first_command(std::string_view& line) {
    for (;;) {
        line = skip_space(line);
        std::string_view rest = line;
        const std::string_view word = take_word(rest);
        const Command* command = find_whole_word(word);
        if (command != nullptr || word.empty())
            return command;
        line = rest;
    }
}

void report_unknown(std::string_view line) {
    const std::string_view word = take_word(line);
    if (!word.empty())
        tell("unknown command " + excerpt(word));
}

void run_line(std::string_view line) {
    std::string_view command_line = line;
    if (const Command* command = find_first_command(command_line))
        command->run_with(command_line);
    else
        report_unknown(line);
}

void echo_when_debugging(std::string_view line) {
    if (state.uci_debug)
        tell("received: " + excerpt(without_line_end(line)));
}

void line_during_search(std::string_view line) {
    echo_when_debugging(line);
    std::string_view command_line = line;
    const Command* command = find_first_command(command_line);
    if (command != nullptr && command->during_search == AFTER_SEARCH)
        run_after_search(std::string(line));
    else
        run_line(line);
}

}  // namespace

void run_standard_uci() {
    search_control.counts_moves_left = true;
    search_control.keeps_lines = true;
    search_control.nodes_between_looks = NODES_BETWEEN_LOOKS;
    print_standard_lines();
    set_search_line_handler(line_during_search);
    remember_standard_defaults();
    tell_start_tables();
    for (;;) {
        if (const auto line = take_pending_command()) {
            run_line(*line);
        } else {
            const std::string command = read_command();
            echo_when_debugging(command);
            run_line(command);
        }
    }
}

}  // namespace quelmar
