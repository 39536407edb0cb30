// The root of the search. Each iteration is one ply deeper than the one before and finds its score by a
// series of null-window searches: the first asks whether the previous iteration's score still holds, the
// following ones walk up or down from the answer in growing steps until the two bounds meet. The
// transposition table makes the repetitions cheap.
#include "board/position.h"
#include "board/square_tables.h"
#include "search/principal_variation.h"
#include "search/root_lines.h"
#include "search/root_tables.h"
#include "search/search.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_reports.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <optional>

namespace quelmar {

namespace {

constexpr int BOUND_LINES_FROM_ITERATION = 6;

bool is_time_limited() {
    return search_state.timed && !is_endless();
}

RootLines root_lines;  // stays empty unless search_control.keeps_lines

// What the line being searched was worth in the iteration before.
Score score_before() {
    return root_lines.found() == 0 ? search_state.iteration_score[search_state.iteration - 1]
                                   : root_lines.score_before();
}

// Without a score to go by, no quiet move is pruned on it.
void forget_futility_bases() {
    SearchState& s = search_state;
    s.prev_minus_small = s.prev_minus_medium = s.prev_minus_large = -INFINITE_SCORE;
    s.prev_plus_small = s.prev_plus_medium = s.prev_plus_large = INFINITE_SCORE;
}

void set_futility_bases() {
    SearchState& s = search_state;
    if (s.iteration == 1) {
        forget_futility_bases();
        return;
    }
    const Score score = score_before();
    s.prev_minus_small = score - s.m1;
    s.prev_minus_medium = score - s.m2;
    s.prev_minus_large = score - s.m3;
    s.prev_plus_small = score + s.m1;
    s.prev_plus_medium = score + s.m2;
    s.prev_plus_large = score + s.m3;
}

// A score that moves this far makes all bounds proved on the old expectation suspect.
void note_sharp_change(Score score) {
    if (search_state.sharp_change || std::abs(score - score_before()) < search_state.m1)
        return;
    ++tt_generation;
    forget_futility_bases();
    search_state.sharp_change = true;
}

// The bound of the next search. Steps grow with the square of the failures in a row; after a fail low the
// first one is 0, which asks whether the score is exactly the bound found.
struct Stepper {
    int fail_highs = 0;
    int fail_lows = 0;
    int max_step = PAWN_VALUE / search_settings.grain();

    int step(int failures) const { return std::min(failures * failures, max_step); }

    Score after_fail_high(Score score) {
        ++fail_highs;
        fail_lows = 0;
        const Score beta = score > FOUND_MATE_LIMIT ? score + 2 : score + step(fail_highs);
        return std::min(beta, search_state.root_upper);
    }

    Score after_fail_low(Score score) {
        const Score beta = std::max(score - step(fail_lows), search_state.root_lower + 1);
        ++fail_lows;
        fail_highs = 0;
        return score < -FOUND_MATE_LIMIT ? std::max(score - 2, search_state.root_lower) : beta;
    }
};

// Whether the bounds known so far will do, since time is running out.
bool settles_for_bounds(const Stepper& stepper) {
    constexpr int ENOUGH_FAIL_HIGHS = 3;
    constexpr int CLOSE_BOUNDS = 32, CLEARLY_AHEAD = 64;  // 128ths of a pawn
    if (!is_time_limited() || search_state.root_lower <= -INFINITE_SCORE)
        return false;
    const i64 elapsed = elapsed_since(search_state.budget_start);
    const i64 target = search_state.target_time;
    if (elapsed <= 2 * target)
        return false;
    const int grain = search_settings.grain();
    return search_state.root_upper - search_state.root_lower <= CLOSE_BOUNDS / grain ||
           search_state.root_lower >= CLEARLY_AHEAD / grain || stepper.fail_highs >= ENOUGH_FAIL_HIGHS ||
           elapsed > 4 * target;
}

bool has_only_move() {
    return search_state.root_legal_moves == 1 && search_state.iteration > 1 && !is_endless() &&
           search_limits.moves.empty() && search_limits.plays_only_move_at_once && root_lines.found() == 0;
}

void report_line(Score score, LineKind kind) {
    if (search_control.keeps_lines) {
        const RootLine& bound = root_lines.note_bound(score, kind);
        if (root_lines.found() == 0 && root_choice.ranked.empty() && !bound.moves.empty())
            search_reports.line(score, elapsed_since(search_state.start_time), kind);
        return;
    }
    read_principal_variation();
    search_reports.line(score, elapsed_since(search_state.start_time), kind);
}

void record_iteration(Score score) {
    search_state.last_score = score;
    search_state.iteration_score[search_state.iteration] = score;
    if (!search_control.keeps_lines)
        report_line(score, LineKind::EXACT);
    else
        search_reports.lines(root_lines.lines());
}

bool has_more_root_moves() {
    const PieceOrderGuard guard;
    generate_root_moves();
    return !move_list.current().empty();
}

// The root searched for one line; nothing when the search is to end with what it had.
std::optional<Score> search_line() {
    root_lines.prepare_root();
    set_futility_bases();
    search_state.sharp_change = false;
    const Score score = mtd_driver(score_before(), ONE_PLY * search_state.iteration);
    if (stop_wanted() || has_only_move())
        return std::nullopt;
    return score;
}

// False when the iteration is not complete and none shall follow.
bool search_iteration() {
    auto score = search_line();
    if (!score)
        return false;
    if (search_control.keeps_lines) {
        root_lines.add(*score);
        while (root_lines.found() < search_limits.lines && has_more_root_moves()) {
            score = search_line();
            if (!score)
                return false;
            root_lines.add(*score);
        }
        root_lines.complete_iteration();
        score = root_lines.lines().front().searched;
    }
    record_iteration(*score);
    return true;
}

// Sleeps until the front end ends the search, or ends the mode in which it has no end.
void wait_for_the_end() {
    while (is_endless() && !search_control.abort_search) {
        search_reports.wait_for_input();
        search_reports.poll_input();
    }
}

// Whether the mate that was asked for has been found, with all its moves where lines are kept.
bool is_wanted_mate_found() {
    if (!search_control.keeps_lines)
        return is_mate_in(search_state.last_score, search_limits.mate);
    const RootLine& best = root_lines.lines().front();
    return best.is_whole_mate && is_mate_in(best.score, search_limits.mate);
}

bool is_every_line_a_mate() {
    const auto& lines = root_lines.lines();
    return std::all_of(lines.begin(), lines.end(),
                       [](const RootLine& line) { return std::abs(line.searched) > FOUND_MATE_LIMIT; });
}

// Two iterations in a row have seen a mate, or one the short mate that was asked for.
bool is_mate_enough() {
    if (search_limits.mate > 0)
        return is_wanted_mate_found();
    return !search_control.test_mode && is_every_line_a_mate() &&
           std::abs(search_state.last_score) > FOUND_MATE_LIMIT &&
           std::abs(score_before()) > FOUND_MATE_LIMIT;
}

// Whether the iteration just completed was the last.
bool is_finished() {
    if (search_control.abort_search)
        return true;
    if (search_state.iteration > 1 && is_time_limited() &&
        elapsed_since(search_state.budget_start) > search_state.target_time)
        return true;
    if (!is_endless() && is_mate_enough())
        return true;
    // Neither a deeper search nor the same again could bring anything new.
    if (search_state.iteration >= search_state.iteration_limit || search_state.root_legal_moves == 0) {
        wait_for_the_end();
        return true;
    }
    return false;
}

void start_search() {
    allocate_time();
    apply_search_limits();
    search_state.start_time = search_state.budget_start = search_state.last_status_time = clock_ms();
    reset_search();
    setup_search_constants();
    search_state.root_moves_searched = search_state.root_legal_moves = 0;
    search_state.root_best_move = search_state.current_root_move = Move{};
    search_state.pv[0] = Move{};
    search_state.pv_length = 0;
    root_lines.forget();
    rank_root_moves();
    forget_restricted_root();
}

// The variation comes from the table, where the root's entry may have been overwritten, and a position in
// which the enemy king can be taken is not searched at all. Any legal move is better than none.
void make_sure_of_a_move() {
    if (search_state.pv_length > 0 && is_wanted_at_root(search_state.pv[0]))
        return;
    const Move move =
        search_state.root_best_move.from != 0 ? search_state.root_best_move : first_playable_move();
    if (move.from == 0)
        return;
    search_state.pv[0] = move;
    search_state.pv_length = 1;
}

}  // namespace

Score mtd_driver(Score guess, Depth depth) {
    search_state.root_lower = -INFINITE_SCORE;
    search_state.root_upper = INFINITE_SCORE;
    Stepper stepper;
    Score beta = guess;
    for (;;) {
        const Score score = std::max(search(beta, depth, true), search_state.root_lower);
        if (stop_wanted())
            return score;
        note_sharp_change(score);
        const bool failed_high = score >= beta;
        if (search_state.iteration >= BOUND_LINES_FROM_ITERATION)
            report_line(score, failed_high ? LineKind::LOWER_BOUND : LineKind::UPPER_BOUND);
        (failed_high ? search_state.root_lower : search_state.root_upper) = score;
        if (settles_for_bounds(stepper))
            return score;
        beta = failed_high ? stepper.after_fail_high(score) : stepper.after_fail_low(score);
        if (search_state.root_lower >= search_state.root_upper)
            return score;
    }
}

void think() {
    start_search();
    for (search_state.iteration = 1;; ++search_state.iteration) {
        search_reports.iteration_begins();
        if (!search_iteration() || is_finished())
            break;
    }
    make_sure_of_a_move();
    if (search_control.keeps_lines) {
        root_lines.settle();
        search_reports.lines(root_lines.lines());
    }
    forget_restricted_root();
}

}  // namespace quelmar
