#include "protocol/tester_commands.h"

#include "board/attacks.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/perft.h"
#include "board/position.h"
#include "board/setup.h"
#include "eval/eval_trace.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/text_values.h"
#include "search/search_control.h"

#include <cinttypes>
#include <string>

namespace quelmar {

namespace {

// ---- d ----

bool stands_on(Side side, Piece kind, Square square) {
    return position.at(square) == man_of(side, kind);
}

// Whether the man that stands first on the line of `step` from the king attacks him from there.
bool attacks_along(Square king, Square square, int step) {
    const Side them = other_side(side_of(position.at(king)));
    if (stands_on(them, QUEEN, square) || stands_on(them, is_diagonal(step) ? BISHOP : ROOK, square))
        return true;
    // Seen from the king, as his enemy's pawns do.
    const bool comes_from_ahead = (step > 0) == (them == BLACK);
    return square == king + step && is_diagonal(step) && comes_from_ahead && stands_on(them, PAWN, square);
}

// The squares of the men that check the side to move, with a blank before each.
std::string checkers() {
    const Side us = position.side_to_move;
    const Square king = position.king_square(us);
    std::string text;
    for (const int offset : knight_offsets) {
        if (stands_on(other_side(us), KNIGHT, king + offset))
            text += " " + square_text(king + offset);
    }
    for (const int step : king_offsets) {
        Square square = king + step;
        while (position.at(square) == EMPTY)
            square += step;
        if (attacks_along(king, square, step))
            text += " " + square_text(square);
    }
    return text;
}

// ---- eval ----

void print_row(const EvalTrace::Row& row) {
    print("%-20s %7d %7d %8d %7d %8d %7d\n", row.term, row.white.mg, row.white.eg, row.black.mg, row.black.eg,
          row.balance.mg, row.balance.eg);
}

void print_trace(const EvalTrace& trace) {
    print("%-20s %15s %16s %16s\n", "term", "White  mg     eg", "Black  mg     eg", "balance mg    eg");
    for (const EvalTrace::Row& row : trace.rows)
        print_row(row);
    if (trace.recognised) {
        print("a known ending with a score of its own: the terms do not count\n");
        return;
    }
    print("totals for the side to move: middlegame %d, endgame %d, blended %d\n", trace.mg, trace.eg,
          trace.blended);
    for (const Side side : {WHITE, BLACK}) {
        const char* name = side == WHITE ? "White" : "Black";
        if (trace.scale_shift[side] != 0)
            print("a score for %s is divided by %d\n", name, 1 << trace.scale_shift[side]);
        if (trace.cannot_win[side])
            print("%s cannot win\n", name);
    }
}

// ---- perft ----

constexpr int MAX_PERFT_DEPTH = 60;
constexpr int UNASKED_DEPTH = 2;  // plies without a look at the input; a third can take seconds
// Enough that a count of an instant is complete where all commands come at once, with "quit" or the end
// behind.
constexpr u64 GAMES_BETWEEN_LOOKS = u64{1} << 20;
u64 games_since_look = 0;

u64 count_unasked(int depth) {
    const u64 games = perft(depth, generate_legal_moves);
    games_since_look += games;
    if (games_since_look > GAMES_BETWEEN_LOOKS) {
        games_since_look = 0;
        poll_input();
    }
    return games;
}

u64 count_below(int depth) {
    if (depth <= UNASKED_DEPTH)
        return count_unasked(depth);
    u64 games = 0;
    generate_legal_moves();
    for (const Move& move : move_list.current()) {
        if (search_control.abort_search)
            break;
        make_move(&move);
        games += count_below(depth - 1);
        unmake_move(&move);
    }
    return games;
}

}  // namespace

void show_position() {
    const RootView root;
    print_text(board_diagram());
    print("FEN: %s\nKey: %016" PRIX64 "\nCheckers:%s\n", fen_text().c_str(), position.current().key,
          checkers().c_str());
}

void show_evaluation() {
    const RootView root;
    print_evaluation();
}

void count_games(std::string_view arguments) {
    const auto depth = take_number(arguments);
    if (!depth || *depth < 1 || *depth > MAX_PERFT_DEPTH || !skip_space(arguments).empty()) {
        tell("go perft takes a depth from 1 to " + std::to_string(MAX_PERFT_DEPTH));
        return;
    }
    build_root_moves();
    protocol_state.searching = true;
    games_since_look = 0;
    u64 games = 0;
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        if (search_control.abort_search)
            break;
        const std::string name = move_text(*move);
        make_move(move);
        const u64 of_move = count_below(*depth - 1);
        unmake_move(move);
        games += of_move;
        if (!search_control.abort_search)
            print("%s: %" PRIu64 "\n", name.c_str(), of_move);
    }
    protocol_state.searching = false;
    if (search_control.abort_search)
        tell("stopped before the end");
    else
        print("\nNodes searched: %" PRIu64 "\n", games);
}

void print_evaluation() {
    const EvalTrace trace = trace_evaluation();
    print_trace(trace);
    print("score for %s to move: %d\n", position.side_to_move == WHITE ? "White" : "Black", trace.score);
}

}  // namespace quelmar
