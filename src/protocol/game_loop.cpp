// One pass of the loop looks at the position once: claim a result, resign, then exactly one of think, ponder,
// analyse and wait, and at last the commands that had to wait for the search.
//
// The mode follows from the flags: the engine's colour to move (and not forced) - think; the opponent's turn
// and a move to expect - ponder; analyze mode - analyse; everything else - block on the input. A ponder
// search ends in a hit (the search went on as ours and its move is played), a miss (the expected move is
// taken back and the real one played) or an interruption.

#include "protocol/game_loop.h"

#include "board/game_result.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "protocol/game.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/settings.h"
#include "protocol/thinking.h"
#include "protocol/xboard.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"

#include <cstdio>
#include <cstdlib>

namespace quelmar {

namespace {

ProtocolState& state = protocol_state;

void wait_for_command() {
    dispatch_xboard_command(read_command());
}

void claim_result() {
    if (state.game_over || !position.usable)
        return;
    const GameResult result = game_state();
    if (result == GameResult::NONE)
        return;
    state.resign_count = 0;
    state.game_over = true;
    search_state.last_score = 0;
    const char* score = !is_decisive_result(result)      ? "1/2-1/2"
                        : position.side_to_move == WHITE ? "0-1"
                                                         : "1-0";
    std::printf("%s {%s}\n", score, result_text(result));
}

void resign_when_hopeless() {
    constexpr int HOPELESS_MOVES = 2;  // one more resigns
    if (!settings.resign_enabled || state.resign_count <= HOPELESS_MOVES)
        return;
    std::printf(state.engine_white ? "0-1 {White resigns}\n" : "1-0 {Black resigns}\n");
    state.resign_count = 0;
    search_state.last_score = 0;
}

// After the engine's move: the search and the opponent's view of the board must both see a lost game, but no
// mate, which the opponent may still have to find.
void count_towards_resigning() {
    constexpr int LOST_SCORE = -640, WON_FOR_OPPONENT = 512;  // 128ths of a pawn
    const Score score = search_state.last_score;
    const bool hopeless = score * search_settings.grain() < LOST_SCORE && evaluate() > WON_FOR_OPPONENT &&
                          score >= -MATE_DISPLAY_LIMIT;
    state.resign_count = hopeless ? state.resign_count + 1 : 0;
}

bool engine_to_move() {
    return position.side_to_move == WHITE ? state.engine_white : state.engine_black;
}

void announce(const Move& move) {
    std::printf("move %s\n", move_text(move).c_str());
}

void whisper() {
    if (state.ics_computer_opponent)
        print_tellall();
}

void expect_reply(bool wanted) {
    state.ponder_move = wanted && search_state.pv_length >= 2 ? search_state.pv[1] : Move{};
}

// What the search found. In a set-up position where the side to move could take the king it may have found
// that, which is no move of chess.
Move best_move() {
    const Move found = search_state.pv_length > 0 ? find_legal(search_state.pv[0]) : Move{};
    return found.from != 0 ? found : root_moves[0];
}

void think_and_move() {
    search_control.ponder_state = Pondering::NO;
    run_search();
    const Move best = best_move();
    announce(best);
    play_game_move(best);
    whisper();
    count_towards_resigning();
    charge_clock();
    expect_reply(!state.easy_mode);
}

bool may_ponder() {
    constexpr int LAST_HALFMOVE_CLOCK = 97;   // the ponder move and ours still fit
    constexpr Score DECIDED = TT_MATE_LIMIT;  // nothing to find out beyond
    return position.usable && state.ponder_move.from != 0 && !state.force_mode &&
           !search_control.analyze_mode && !search_control.abort_search && !state.easy_mode &&
           !state.game_over && search_state.pv_length >= 2 && position.game_ply >= 1 &&
           position.current().halfmove_clock <= LAST_HALFMOVE_CLOCK &&
           std::abs(search_state.last_score) < DECIDED &&
           find_legal(state.ponder_move).from != 0;  // moves may have been taken back since it was predicted
}

void play_after_hit() {
    const Move best = search_state.pv[0];
    play_game_move(best);
    charge_clock();
    announce(best);
    whisper();
    count_towards_resigning();
    expect_reply(true);
}

void ponder() {
    const Move expected = find_legal(state.ponder_move);
    state.user_move = {};
    std::printf("Pondering (%s)\n", move_text(expected).c_str());
    play_game_move(expected);
    update_clocks_after_move(0);
    if (game_state() != GameResult::NONE) {
        take_back_game_move();
        wait_for_command();
        return;
    }
    search_control.ponder_state = Pondering::YES;
    run_search();
    if (state.user_move.from == 0) {  // interrupted
        take_back_game_move();
    } else if (search_control.ponder_state == Pondering::HIT) {
        play_after_hit();
    } else {
        take_back_game_move();
        play_game_move(state.user_move);
        charge_clock();
    }
    search_control.ponder_state = Pondering::NO;
}

void analyse() {
    state.user_move = {};
    run_search();
    if (state.user_move.from != 0) {
        play_game_move(state.user_move);
        charge_clock();
    }
}

void idle() {
    if (!state.easy_mode)
        search_control.ponder_state = Pondering::NO;
    wait_for_command();
}

void run_pending_commands() {
    while (const auto line = take_pending_command()) {
        build_root_moves();  // the engine may have moved since, or a command before this one
        dispatch_xboard_command(*line);
    }
}

void one_pass() {
    build_root_moves();
    claim_result();
    resign_when_hopeless();
    const bool may_play = position.usable && !state.game_over && root_moves[0].from != 0;
    if (may_play && !state.force_mode && !search_control.analyze_mode && engine_to_move())
        think_and_move();
    else if (may_ponder())
        ponder();
    else if (may_play && search_control.analyze_mode)
        analyse();
    else
        idle();
    run_pending_commands();
}

}  // namespace

void game_loop() {
    state.easy_mode = false;
    new_game();
    state.last_clock_stamp = clock_ms();
    for (;;)
        one_pass();
}

}  // namespace quelmar
