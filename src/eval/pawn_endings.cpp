// Kings and pawns alone: safe pawns, pawns that can run, and who wins the race.
//
// Every pawn that no enemy pawn holds up is timed: its moves to the last rank, men on the way counted as one
// move each, against the steps of the enemy king to the same square. The difference is the pawn's margin. A
// side's race value is the smallest margin with which one of its pawns gets through; the two race values are
// then set against each other.
#include "board/square_tables.h"
#include "eval/endings.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr int NO_RACE = 32;
constexpr int BLOCKED = 8;

// By the moves a pawn needs to promote.
constexpr Table<u8, 16> RACE = {0, 128, 90, 50, 25, 10, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0};

struct Runner {
    int total = 0;
    int race = NO_RACE;  // by how many moves the side's best pawn outruns the enemy king, NO_RACE for none
};

// Cost of a pawn without a pawn diagonally behind it; the nearer the enemy king, the more.
int exposed_cost(int enemy_king_steps, bool blocked) {
    if (enemy_king_steps == 1)
        return blocked ? 76 : 42;
    return (20 - 2 * enemy_king_steps) * (blocked ? 2 : 1);
}

// Counts the men on the pawn's way from two squares ahead on, or answers -1 when an enemy pawn guards it.
template <Side Us> int obstacles_ahead(Square pawn) {
    int obstacles = 0;
    for (Square square = pawn + 2 * Facing<Us>::FORWARD; position.at(square) != OFF_BOARD;
         square += Facing<Us>::FORWARD) {
        if (enemy_pawn_on<Us>(square) || enemy_pawn_on<Us>(square - 1) || enemy_pawn_on<Us>(square + 1))
            return -1;
        obstacles += position.at(square) != EMPTY;
    }
    return obstacles;
}

template <Side Us> void add_run(Runner& runner, const EvalContext& context, Square pawn, bool guarded) {
    const int obstacles = obstacles_ahead<Us>(pawn);
    if (obstacles < 0)
        return;
    constexpr int FAR_KING = 12;
    const Square enemy_king = context.of(Facing<Us>::THEM).king;
    const Square goal = Facing<Us>::mirror(square_at(file_of(pawn), RANK_8));
    const int moves = distance[pawn - goal] + obstacles;
    const int race_value = RACE[moves];
    runner.total += guarded ? 2 * race_value : race_value;
    const int margin = distance[enemy_king - goal] - moves + (context.us == Us ? 1 : 0);
    if (margin > 1) {
        runner.total += 2 * race_value;
        runner.race = std::min(runner.race, margin);
    }
    runner.total += distance[enemy_king - (pawn + Facing<Us>::FORWARD)] * (FAR_KING - moves);
}

template <Side Us> void add_pawn(Runner& runner, const EvalContext& context, Square pawn) {
    const Square front = pawn + Facing<Us>::FORWARD, behind = pawn - Facing<Us>::FORWARD;
    const bool blocked = position.at(front) != EMPTY || !safe_for_pawn<Us>(front);
    const bool guarded = own_pawn_on<Us>(behind - 1) || own_pawn_on<Us>(behind + 1);
    if (blocked)
        runner.total -= BLOCKED;
    if (!guarded)
        runner.total -= exposed_cost(distance[context.of(Facing<Us>::THEM).king - pawn], blocked);
    if (!blocked)
        add_run<Us>(runner, context, pawn, guarded);
    runner.total += 2 * (Facing<Us>::rank(pawn) + 4);
}

template <Side Us> Runner run_pawns(const EvalContext& context) {
    Runner runner;
    const Square king = context.of(Us).king;
    runner.total = int{king_endgame_square[king]};
    for (Square square = position.next_man(king); square != LIST_END; square = position.next_man(square))
        add_pawn<Us>(runner, context, square);
    return runner;
}

// The side that is ahead by more than two moves, if any, gains; a lone runner gains most.
void settle_race(Runner& white, Runner& black) {
    constexpr int LONE_RUNNER = 40, LONE_FACTOR = 24, EVEN_FACTOR = 40, CLEAR_FACTOR = 64, CLEAR_WIN = 400,
                  CLEAR_LEAD = 2;
    const bool white_runs = white.race < NO_RACE, black_runs = black.race < NO_RACE;
    if (!white_runs && !black_runs)
        return;
    if (white_runs != black_runs) {
        Runner& runner = white_runs ? white : black;
        runner.total += (LONE_RUNNER - runner.race) * LONE_FACTOR;
        return;
    }
    const bool even = white.race <= black.race + CLEAR_LEAD && black.race <= white.race + CLEAR_LEAD;
    const int factor = even ? EVEN_FACTOR : CLEAR_FACTOR;
    white.total -= factor * white.race;
    black.total -= factor * black.race;
    if (!even)
        (white.race > black.race ? black : white).total += CLEAR_WIN;
}

}  // namespace

Table<int, 2> eval_pawn_ending(const EvalContext& context) {
    Runner white = run_pawns<WHITE>(context), black = run_pawns<BLACK>(context);
    settle_race(white, black);
    return {white.total, black.total};
}

}  // namespace quelmar
