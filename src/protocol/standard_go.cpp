// "go" of the standard UCI, and what its searches tell the client. All limits that "go" names hold together,
// the first that is reached ends the search. Only the clocks give way to "infinite" and "ponder", and a
// search without any limit is endless.
#include "protocol/standard_go.h"

#include "board/position.h"
#include "protocol/game.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/standard_options.h"
#include "protocol/strength.h"
#include "protocol/text_values.h"
#include "protocol/thinking.h"
#include "protocol/uci.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_reports.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <string>

namespace quelmar {

namespace {

using Limit = std::optional<i64>;

struct GoArguments {
    bool ponder = false, infinite = false;
    bool has_words = false;
    Table<Limit, 2> time, increment;  // by side, milliseconds
    Limit moves_to_go, depth, nodes, mate, move_time;
    std::vector<Move> moves;

    bool has_clock() const {
        return time[WHITE] || time[BLACK] || increment[WHITE] || increment[BLACK] || moves_to_go;
    }
    bool has_limit() const { return has_clock() || depth || nodes || mate || move_time; }
};

using Go = GoArguments;

struct Keyword {
    std::string_view word;
    Limit& (*limit)(Go& go);
};

// clang-format off
constexpr Keyword KEYWORDS[] = {
    {"wtime",     [](Go& go) -> Limit& { return go.time[WHITE]; }},
    {"btime",     [](Go& go) -> Limit& { return go.time[BLACK]; }},
    {"winc",      [](Go& go) -> Limit& { return go.increment[WHITE]; }},
    {"binc",      [](Go& go) -> Limit& { return go.increment[BLACK]; }},
    {"movestogo", [](Go& go) -> Limit& { return go.moves_to_go; }},
    {"depth",     [](Go& go) -> Limit& { return go.depth; }},
    {"nodes",     [](Go& go) -> Limit& { return go.nodes; }},
    {"mate",      [](Go& go) -> Limit& { return go.mate; }},
    {"movetime",  [](Go& go) -> Limit& { return go.move_time; }},
};
// clang-format on

const Keyword* find_keyword(std::string_view word) {
    const auto found = std::find_if(std::begin(KEYWORDS), std::end(KEYWORDS),
                                    [word](const Keyword& k) { return k.word == word; });
    return found != std::end(KEYWORDS) ? found : nullptr;
}

bool is_word_of_go(std::string_view word) {
    return word.empty() || find_keyword(word) != nullptr || word == "ponder" || word == "infinite" ||
           word == "searchmoves";
}

// Moves that are not legal are left out; without a legal one the search has all.
std::vector<Move> take_moves(std::string_view& text) {
    std::vector<Move> moves;
    build_root_moves();
    for (;;) {
        std::string_view rest = text;
        const std::string_view word = take_word(rest);
        if (is_word_of_go(word))
            return moves;
        text = rest;
        if (const Move* move = find_root_move(word))
            moves.push_back(*move);
        else
            tell("illegal move " + excerpt(word) + " in searchmoves");
    }
}

// The number that the next word is; a word that is neither that nor a word of "go" is passed over.
Limit take_limit(std::string_view& text) {
    std::string_view rest = text;
    std::string_view word = take_word(rest);
    if (is_word_of_go(word))
        return std::nullopt;
    text = rest;
    const Limit number = take_big_number(word);
    return word.empty() ? number : std::nullopt;
}

GoArguments read_arguments(std::string_view text) {
    GoArguments go;
    for (std::string_view word = take_word(text); !word.empty(); word = take_word(text)) {
        go.has_words = true;
        if (word == "ponder") {
            go.ponder = true;
        } else if (word == "infinite") {
            go.infinite = true;
        } else if (word == "searchmoves") {
            go.moves = take_moves(text);
        } else if (const Keyword* keyword = find_keyword(word)) {
            if (const Limit limit = take_limit(text))
                keyword->limit(go) = limit;
            else
                tell("no number behind " + excerpt(word));
        } else {
            tell("unknown word " + excerpt(word) + " behind go");
        }
    }
    if (go.has_clock() && !go.time[WHITE] && !go.time[BLACK] && !go.infinite)
        tell("there is no time for the side to move");
    return go;
}

// What may be used of the time that is left, so that the move arrives in time.
i32 without_overhead(i64 ms) {
    return clamp_to_i32(std::max<i64>(1, std::max(ms - move_overhead_ms(), ms / 2)));
}

// The time that is left to `side`; a client that names the other's only gets as much.
i64 time_left(const GoArguments& go, Side side) {
    return std::max<i64>(0, go.time[side].value_or(go.time[other_side(side)].value_or(0)));
}

// The overhead is lost on every move to come as well, as far as the increment does not pay for it.
i64 left_for_thinking(i64 left, i64 increment, i64 moves) {
    const i64 overhead = move_overhead_ms();
    const i64 lost = overhead + (moves - 1) * std::max<i64>(0, overhead - increment);
    return std::max(left - lost, left / 8);
}

SideClock game_clock(const GoArguments& go, Side side) {
    constexpr i64 MOVES_AHEAD = 20;
    const i64 increment = std::max<i64>(0, go.increment[side].value_or(0));
    const i64 to_go = std::max<i64>(0, go.moves_to_go.value_or(0));
    const i64 moves = to_go > 0 ? std::min(to_go, MOVES_AHEAD) : MOVES_AHEAD;
    SideClock clock{.kind = to_go > 0 ? ClockKind::MOVES_IN_TIME : ClockKind::WHOLE_GAME};
    clock.moves_per_control = clamp_to_i32(to_go);
    clock.time_left_ms = clamp_to_i32(left_for_thinking(time_left(go, side), increment, moves));
    clock.increment_ms = clamp_to_i32(std::max<i64>(0, increment - move_overhead_ms()));
    return clock;
}

SideClock clock_of(const GoArguments& go, Side side) {
    if (go.moves_to_go == 1 && go.time[side])  // the next move has time of its own
        return {.kind = ClockKind::PER_MOVE, .time_left_ms = without_overhead(time_left(go, side))};
    if (go.has_clock())
        return game_clock(go, side);
    if (go.move_time)
        return {.kind = ClockKind::PER_MOVE, .time_left_ms = without_overhead(*go.move_time)};
    return {.kind = ClockKind::FIXED_DEPTH, .depth_limit = MAX_ITERATION};
}

// A limit below 1 counts as 1, so that the search ends.
i64 at_least_one(const Limit& limit) {
    return std::max<i64>(1, *limit);
}

SearchLimits limits_of(const GoArguments& go) {
    SearchLimits limits;
    if (go.depth)
        limits.iterations = static_cast<int>(std::min<i64>(at_least_one(go.depth), MAX_ITERATION));
    if (go.nodes) {
        limits.nodes = static_cast<u64>(at_least_one(go.nodes));
        limits.unasked_nodes = 0;
    }
    if (go.mate)
        limits.mate = static_cast<int>(std::min<i64>(at_least_one(go.mate), MAX_PLY));
    if (go.has_clock())
        limits.move_time = without_overhead(time_left(go, position.side_to_move));
    if (go.move_time) {
        const i32 wanted = without_overhead(*go.move_time);
        limits.move_time = limits.move_time > 0 ? std::min(limits.move_time, wanted) : wanted;
    }
    limits.moves = go.moves;
    limits.lines = lines_wanted();
    limits.plays_only_move_at_once = go.has_clock();
    if (go.has_words && !go.infinite && !go.has_limit())
        limits.iterations = 1;
    return limits;
}

// A player of limited strength does not think on the opponent's time: whatever he found would come on top of
// his budget. Returns whether the move is wanted at once.
bool wait_out_pondering() {
    search_control.ponder_state = Pondering::YES;
    search_control.abort_search = false;
    position.search_ply = 0;  // the last move of the game is none of a search
    protocol_state.searching = true;
    while (search_control.ponder_state == Pondering::YES && !search_control.abort_search) {
        wait_for_input();
        poll_input();
    }
    protocol_state.searching = false;
    return search_control.abort_search;
}

void limit_strength(GoArguments& go) {
    if (!is_strength_limited() || go.infinite || (!go.ponder && !go.has_limit()))
        return;
    if (go.ponder && wait_out_pondering())
        go.depth = 1;  // the search itself begins without the stop
    go.ponder = false;
    go.nodes = std::min<i64>(go.nodes.value_or(std::numeric_limits<i64>::max()),
                             static_cast<i64>(nodes_of_strength()));
}

}  // namespace

void standard_go(std::string_view arguments) {
    GoArguments go = read_arguments(arguments);
    limit_strength(go);
    if (go.ponder && !go.has_limit())
        go.move_time = 1;  // that is, until the hit
    for (const Side side : {WHITE, BLACK})
        position.current().clock[side] = clock_of(go, side);
    search_limits = limits_of(go);
    search_control.uci_infinite = go.infinite || !go.has_words;
    search_control.ponder_state = go.ponder ? Pondering::YES : Pondering::NO;
    run_search();
    search_control.ponder_state = Pondering::NO;
    search_control.uci_infinite = false;
    search_limits = SearchLimits{};
    print_best_move();
}

namespace {

constexpr i32 BOUNDS_AFTER_MS = 1000;

// A root that is mated is "mate 0"; one that may take the king has at least a move left.
std::string uci_score_text(Score score) {
    if (!is_mate_score(score))
        return "cp " + std::to_string(centipawns(score));
    const int moves = score > 0 ? std::max(1, (MATE_SCORE + 1 - score) / 2) : -(score + MATE_SCORE) / 2;
    return "mate " + std::to_string(moves);
}

const char* bound_text(LineKind kind) {
    return kind == LineKind::UPPER_BOUND ? " upperbound" : kind == LineKind::LOWER_BOUND ? " lowerbound" : "";
}

void print_line(const RootLine& line, int number) {
    const i32 elapsed = elapsed_since(search_state.start_time);
    const auto nodes = static_cast<long long>(search_state.nodes);
    std::string variation;
    for (const Move& move : line.moves)
        variation += (variation.empty() ? " pv " : " ") + move_text(move);
    print("info depth %d seldepth %d time %d nodes %lld nps %lld hashfull %d tbhits %lld multipv %d "
          "score %s%s%s\n",
          line.depth, std::max(search_state.sel_depth, line.depth), elapsed, nodes,
          nodes * 1000 / std::max(elapsed, 1), tt_hashfull(), static_cast<long long>(search_state.tb_hits),
          number, uci_score_text(line.score).c_str(), bound_text(line.kind), variation.c_str());
}

void print_lines(const std::vector<RootLine>& lines) {
    int number = 0;
    for (const RootLine& line : lines)
        print_line(line, ++number);
}

void print_bound(Score score, i32 elapsed_ms, LineKind kind) {
    if (elapsed_ms < BOUNDS_AFTER_MS)
        return;
    const std::span<const Move> moves(search_state.pv.data(),
                                      static_cast<std::size_t>(search_state.pv_length));
    print_line({.depth = search_state.iteration,
                .score = score,
                .kind = kind,
                .moves = {moves.begin(), moves.end()}},
               1);
}

}  // namespace

void print_standard_lines() {
    search_reports.line = print_bound;
    search_reports.lines = print_lines;
}

}  // namespace quelmar
