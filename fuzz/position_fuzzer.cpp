// Arbitrary text as FEN or EPD. What can be set up is looked at from all sides: every generator, every legal
// move played and taken back, the evaluation, the exchanges, the texts, and a short search.
#include "board/consistency.h"
#include "board/game_result.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "outside.h"
#include "protocol/game.h"
#include "protocol/move_text.h"
#include "protocol/root_moves.h"
#include "search/captures.h"

#include <cstdlib>

using namespace quelmar;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

void look_around() {
    evaluate();
    find_threats();
    generate_captures();
    generate_quiet_checks();
    generate_moves();
    generate_evasions();
    game_state();
}

// Moves that an interface can name, played as a game plays them.
void play_every_move() {
    build_root_moves();
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        require(parse_move(move_text(*move)));
        san_text(*move);
        static_exchange(move->from, move->to);
        make_move(move);
        require(position_is_consistent());
        look_around();
        unmake_move(move);
        require(position_is_consistent());
    }
}

void search_a_little() {
    for (SideClock& clock : position.current().clock)
        clock = {.kind = ClockKind::PER_MOVE, .time_left_ms = 100};
    run_search();
    require(position_is_consistent());
}

}  // namespace

void fuzz::session() {
    if (set_up_game(fuzz::take_input().c_str()) != FenError::NONE)
        return;
    require(position_is_consistent());
    print_board();
    look_around();
    play_every_move();
    search_a_little();
}
