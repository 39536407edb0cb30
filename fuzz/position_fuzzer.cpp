// Arbitrary text as FEN or EPD. What can be set up is looked at from all sides: every generator, every legal
// move played and taken back, the evaluation, the exchanges, the texts, and a short search.
#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/position.h"
#include "board/san.h"
#include "board/setup.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/game_result.h"
#include "eval/threats.h"
#include "outside.h"
#include "protocol/clocks.h"
#include "protocol/game.h"

#include <cstdlib>
#include <string>

using namespace quelmar;

namespace {

std::string text;

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
        require(parse_move(move_text(*move)) == 1);
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
        clock = {.kind = CLOCK_PER_MOVE, .time_left_ms = 100};
    run_search();
    require(position_is_consistent());
}

void examine() {
    if (parse_fen(text.c_str()) != 0)
        return;
    require(position_is_consistent());
    print_board();
    look_around();
    play_every_move();
    search_a_little();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::start_engine();
    fuzz::reset_engine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const u8* bytes, std::size_t size) {
    text.assign(reinterpret_cast<const char*>(bytes), size);
    fuzz::run({}, examine);
    return 0;
}
