#include "protocol/suite.h"

#include "board/position.h"
#include "protocol/command_line.h"
#include "protocol/game.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/text_values.h"
#include "protocol/thinking.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/time_control.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

namespace {

// ---- a line of the file ----

constexpr std::string_view DIGITS = "0123456789";

bool consists_of(std::string_view word, std::string_view letters) {
    return word.find_first_not_of(letters) == std::string_view::npos;
}

// Whether `word` can be the field of that number. Placement and side are taken as they come; the others may
// be missing, and operations follow at once.
bool is_fen_field(std::string_view word, std::size_t number) {
    constexpr std::string_view CASTLING = "KQkqABCDEFGHabcdefgh-", SQUARES = "abcdefgh36-";
    switch (number) {
    case 0:
    case 1:
        return true;
    case 2:
        return consists_of(word, CASTLING);
    case 3:
        return consists_of(word, SQUARES);
    default:
        return consists_of(word, DIGITS);
    }
}

std::string take_fen_fields(std::string_view& text) {
    constexpr std::size_t FIELDS = 6;
    std::string fen;
    for (std::size_t number = 0; number < FIELDS; ++number) {
        std::string_view rest = text;
        const std::string_view word = take_word(rest);
        if (word.empty() || !is_fen_field(word, number))
            break;
        fen.append(fen.empty() ? "" : " ").append(word);
        text = rest;
    }
    return fen;
}

// The next word or quoted text of an operation; empty behind its last, where `text` begins at the ";".
std::string take_operand(std::string_view& text) {
    text = skip_space(text);
    if (text.starts_with('"')) {
        const std::size_t end = std::min(text.find('"', 1), text.size());
        std::string operand(text.substr(1, end - 1));
        text = text_from(text, end + 1);
        return operand;
    }
    std::string operand(text.substr(0, text.find_first_of("; \t\n\r")));
    text.remove_prefix(operand.size());
    return operand;
}

struct EpdOperation {
    std::string code;                   // "bm", "id"
    std::vector<std::string> operands;  // without quotes
};

struct EpdLine {
    // Placement, side, castling rights, en-passant square and counters, as far as they are there.
    std::string fen;
    std::vector<EpdOperation> operations;
};

// Takes a line apart without looking at the sense of it.
EpdLine read_epd(std::string_view line) {
    EpdLine epd;
    epd.fen = take_fen_fields(line);
    for (line = skip_space(line); !line.empty(); line = skip_space(line)) {
        EpdOperation operation{.code = take_operand(line), .operands = {}};
        for (std::string operand = take_operand(line); !operand.empty(); operand = take_operand(line))
            operation.operands.push_back(operand);
        if (line.starts_with(';'))
            line.remove_prefix(1);
        if (!operation.code.empty())
            epd.operations.push_back(operation);
    }
    return epd;
}

// ---- moves by name ----

struct WantedSan {
    Piece kind = PAWN, promotion = EMPTY;
    std::string_view origin;  // file, rank, both or none
    std::string_view target;

    bool is(const Move& move) const {
        const std::string from = square_text(move.from);
        return (move.flags & CASTLE_ANY) == 0 && kind_of(move.piece) == kind &&
               square_text(move.to) == target && kind_of(move.promotion) == promotion &&
               std::all_of(origin.begin(), origin.end(),
                           [&from](char c) { return from.find(c) != std::string::npos; });
    }
};

// EMPTY for anything but the upper-case letter of a piece.
Piece piece_of_letter(char letter) {
    constexpr std::string_view PIECES = "NBRQK";
    const std::size_t place = PIECES.find(letter);
    return place != std::string_view::npos ? KNIGHT + static_cast<Piece>(place) : EMPTY;
}

WantedSan read_san(std::string_view letters) {
    constexpr std::size_t SQUARE = 2;
    WantedSan san;
    if (const Piece kind = letters.empty() ? EMPTY : piece_of_letter(letters.front()); kind != EMPTY) {
        san.kind = kind;
        letters.remove_prefix(1);
    }
    if (const Piece kind = letters.empty() ? EMPTY : piece_of_letter(letters.back()); kind != EMPTY) {
        san.promotion = kind;
        letters.remove_suffix(1);
    }
    const std::size_t origin = letters.size() - std::min(letters.size(), SQUARE);
    san.origin = letters.substr(0, origin);
    san.target = letters.substr(origin);
    return san;
}

// The moves of root_moves that a text in SAN or coordinates may mean: none when it is illegal, several when
// it is ambiguous. Check marks and annotations do not matter. root_moves must have been built.
std::vector<Move> moves_named(std::string_view text) {
    if (const Move* move = find_root_move(text))
        return {*move};
    std::string letters(text);
    std::erase_if(letters,
                  [](char c) { return std::string_view("x-=+#!?:").find(c) != std::string_view::npos; });
    const WantedSan san = read_san(letters);
    std::vector<Move> moves;
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        if (san.is(*move))
            moves.push_back(*move);
    }
    return moves;
}

// ---- a suite ----

struct Solution {
    std::vector<Move> best, avoid;
    int mate_in = 0;   // moves, 0: none is asked for
    std::string text;  // as it is printed: "bm Qg6 Rxh7"

    bool is_known() const { return !best.empty() || !avoid.empty() || mate_in > 0; }
};

bool holds(const std::vector<Move>& moves, const Move& move) {
    return std::any_of(moves.begin(), moves.end(), [&move](const Move& one) { return same_move(one, move); });
}

struct Totals {
    int positions = 0, with_solution = 0, solved = 0;
    i64 solving_ms = 0, searching_ms = 0;
    u64 nodes = 0;
};

// The position being searched.
struct Trial {
    Solution solution;
    std::optional<i32> solved_at;  // milliseconds; nothing while the engine would play something else

    bool is_solved(Score score) const {
        const Move& move = search_state.pv[0];
        return solution.is_known() && search_state.pv_length > 0 &&
               (solution.best.empty() || holds(solution.best, move)) && !holds(solution.avoid, move) &&
               (solution.mate_in == 0 || (score > 0 && is_mate_in(score, solution.mate_in)));
    }
    // To be called with every line: what counts is since when the solution has been kept.
    void judge(Score score, i32 elapsed_ms) {
        if (!is_solved(score))
            solved_at.reset();
        else if (!solved_at)
            solved_at = elapsed_ms;
    }
};

Trial trial;

void add_moves(std::vector<Move>& moves, const EpdOperation& operation) {
    for (const std::string& name : operation.operands) {
        const std::vector<Move> named = moves_named(name);
        if (named.empty())
            tell(operation.code + " " + excerpt(name) + " is no legal move");
        moves.insert(moves.end(), named.begin(), named.end());
    }
}

void add_mate(Solution& solution, const EpdOperation& operation) {
    const auto moves = operation.operands.empty() ? std::nullopt : read_number(operation.operands.front());
    if (moves && *moves >= 1 && *moves <= MAX_PLY)
        solution.mate_in = *moves;
    else
        tell("dm takes a number of moves");
}

// root_moves must have been built.
Solution solution_of(const EpdLine& epd) {
    Solution solution;
    for (const EpdOperation& operation : epd.operations) {
        if (operation.code == "bm")
            add_moves(solution.best, operation);
        else if (operation.code == "am")
            add_moves(solution.avoid, operation);
        else if (operation.code == "dm")
            add_mate(solution, operation);
        else if (operation.code != "id")
            continue;
        solution.text += "  " + operation.code;
        for (const std::string& operand : operation.operands)
            solution.text += " " + operand;
    }
    return solution;
}

void search_for(i32 milliseconds) {
    for (SideClock& clock : position.current().clock)
        clock = {.kind = ClockKind::PER_MOVE, .time_left_ms = milliseconds};
    search_limits.move_time = milliseconds;
    const i32 start = clock_ms();
    run_search();
    trial.judge(search_state.last_score, elapsed_since(start));
    search_limits = SearchLimits{};
}

void print_result(int number) {
    const char* verdict = !trial.solution.is_known() ? "-" : trial.solved_at ? "solved" : "missed";
    Table<char, 24> time{};
    if (trial.solved_at)
        std::snprintf(time.data(), time.size(), "%.3f s", seconds_of(*trial.solved_at));
    print("%4d  %-6s  %-5s  %9s  %7s%s\n", number, verdict, move_text(search_state.pv[0]).c_str(),
          time.data(), score_text(search_state.last_score).c_str(), trial.solution.text.c_str());
}

// Written over on a terminal by the next line that is printed there.
void show_progress(const Totals& totals) {
    constexpr int WIDTH = 40;
    const std::string text = "position " + std::to_string(totals.positions) + ", " +
                             std::to_string(totals.solved) + " of " + std::to_string(totals.with_solution) +
                             " solved";
    if (errors_reach_terminal())
        std::fprintf(stderr, "%-*s\r", WIDTH, text.c_str());
}

void try_position(const std::string& line, i32 milliseconds, Totals& totals) {
    const EpdLine epd = read_epd(line);
    if (set_up_game(epd.fen.c_str()) != FenError::NONE) {
        tell("no position: " + excerpt(line));
        return;
    }
    ++totals.positions;
    show_progress(totals);
    build_root_moves();
    trial = {.solution = solution_of(epd), .solved_at = {}};
    forget_all_searches();
    const i32 start = clock_ms();
    search_for(milliseconds);
    totals.searching_ms += elapsed_since(start);
    totals.nodes += search_state.nodes;
    totals.with_solution += trial.solution.is_known() ? 1 : 0;
    totals.solved += trial.solved_at ? 1 : 0;
    totals.solving_ms += trial.solved_at.value_or(0);
    print_result(totals.positions);
}

void print_summary(const Totals& totals) {
    const double seconds = seconds_of(totals.searching_ms);
    const double mean = seconds_of(totals.solving_ms) / std::max(totals.solved, 1);
    constexpr double LEAST = 0.001;
    print("%d of %d solved, %.3f s each; %d positions, %.1f s, %" PRIu64 " nodes, %.0f nps\n", totals.solved,
          totals.with_solution, mean, totals.positions, seconds, totals.nodes,
          static_cast<double>(totals.nodes) / std::max(seconds, LEAST));
}

bool is_comment(std::string_view line) {
    constexpr std::string_view MARKS = "#;%";
    line = skip_space(line);
    return line.empty() || MARKS.find(line.front()) != std::string_view::npos;
}

}  // namespace

bool run_suite(const char* file_name, i32 milliseconds) {
    std::ifstream file(file_name);
    std::string line;
    if (!file || file.peek() == std::ifstream::traits_type::eof())
        return false;
    const SilentSearch silent;
    search_reports.line = [](Score score, i32 elapsed_ms, LineKind) { trial.judge(score, elapsed_ms); };
    search_control.test_mode = true;
    Totals totals;
    while (std::getline(file, line)) {
        if (!is_comment(line))
            try_position(line, milliseconds, totals);
    }
    print_summary(totals);
    return true;
}

}  // namespace quelmar
