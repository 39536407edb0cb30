#include "search/captures.h"

#include "board/generate_core.h"
#include "board/square_tables.h"
#include "eval/exchange.h"
#include "eval/outputs.h"

namespace quelmar {

namespace {

template <Side Us> struct Captures {
    Move* out;

    static bool enemy_on(Square square) { return is_man_of(position.at(square), Facing<Us>::THEM); }

    // A cheaper man is worth capturing only where the attack maps find it badly defended.
    static bool worth_trying(Square from, Square to) {
        const Piece victim = position.at(to);
        return value_of(victim) >= value_of(position.at(from)) ||
               exchange_loss(victim, attack_byte(WHITE, to), attack_byte(BLACK, to)) != 0;
    }

    void pawn(Square from) {
        for (int step : PAWN_CAPTURES<Us>) {
            const Square to = from + step;
            if (enemy_on(to))
                out = put_move(out, from, to, Facing<Us>::rank(to) == 7 ? man_of(Us, QUEEN) : EMPTY, 0);
        }
        const Square ahead = from + Facing<Us>::FORWARD;
        if (Facing<Us>::rank(from) == 6 && position.at(ahead) == EMPTY)
            out = put_move(out, from, ahead, man_of(Us, QUEEN), 0);
    }

    template <typename Steps> void stepper(Square from, const Steps& steps) {
        for (int step : steps) {
            if (enemy_on(from + step) && worth_trying(from, from + step))
                out = put_move(out, from, from + step, EMPTY, 0);
        }
    }

    template <Piece, typename Steps> void slider(Square from, const Steps& steps) {
        for (int step : steps) {
            Square to = from + step;
            while (position.at(to) == EMPTY)
                to += step;
            if (enemy_on(to) && worth_trying(from, to))
                out = put_move(out, from, to, EMPTY, 0);
        }
    }

    void knight(Square from) { stepper(from, knight_offsets); }
    void king(Square from) { stepper(from, king_offsets); }

    Move* all() {
        visit_men<Us>(*this, [](Square) {});
        return out;
    }
};

}  // namespace

void generate_captures() {
    close_list(position.side_to_move == WHITE ? Captures<WHITE>{start_list()}.all()
                                              : Captures<BLACK>{start_list()}.all());
}

}  // namespace quelmar
