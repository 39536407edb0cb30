#include "board/generate.h"
#include "board/generate_core.h"

namespace quelmar {

namespace {

// Quiet checks

template <Side Us> struct QuietChecks {
    Move* out;

    static bool pawn_checks(Square from, Square to) {
        return checks_from<PAWN>(to) || uncovers_check(from, Facing<Us>::FORWARD);
    }

    void pawn(Square from) {
        const Square ahead = from + Facing<Us>::FORWARD, two_ahead = ahead + Facing<Us>::FORWARD;
        if (position.at(ahead) != EMPTY)
            return;
        if (pawn_checks(from, ahead))
            out = put_move(out, from, ahead, Facing<Us>::rank(ahead) == 7 ? man_of(Us, QUEEN) : EMPTY, 1);
        if (Facing<Us>::rank(from) == 1 && position.at(two_ahead) == EMPTY && pawn_checks(from, two_ahead))
            out = put_move(out, from, two_ahead, EMPTY, 1);
    }

    void knight(Square from) {
        const bool uncovers = uncovers_check(from, 0);
        for (int offset : knight_offsets) {
            const Square to = from + offset;
            if (position.at(to) == EMPTY && (uncovers || checks_from<KNIGHT>(to)))
                out = put_move(out, from, to, EMPTY, 1);
        }
    }

    template <Piece Kind, typename Steps> void slider(Square from, const Steps& steps) {
        for (int step : steps) {
            const bool uncovers = uncovers_check(from, step);
            for (Square to = from + step; position.at(to) == EMPTY; to += step) {
                if (uncovers || checks_from<Kind>(to))
                    out = put_move(out, from, to, EMPTY, 1);
            }
        }
    }

    void king(Square from) {
        for (int step : king_offsets) {
            if (uncovers_check(from, step) && position.at(from + step) == EMPTY)
                out = put_move(out, from, from + step, EMPTY, 1);
        }
    }

    Move* all() {
        visit_men<Us>(*this, report_illegal_piece);
        return out;
    }
};

// Evasions

// Squares to which a man other than the king may move to end the check.
template <Side Us> class EvasionTargets {
public:
    EvasionTargets() {
        find_contact_checks();
        for (int step : bishop_directions)
            find_line_check(step, Facing<Us>::THEIR_BISHOP);
        for (int step : rook_directions)
            find_line_check(step, Facing<Us>::THEIR_ROOK);
        if (checkers_ > 1)
            wanted_ = {};
        if (checkers_ == 0)  // asked without a check: nothing to aim at, so every move is a candidate
            wanted_.fill(true);
        wanted_[position.king_square(Facing<Us>::THEM)] = true;
    }

    bool operator()(Square square) const { return wanted_[square]; }

private:
    void note_checker(Square square) {
        ++checkers_;
        wanted_[square] = true;
    }

    void find_contact_checks() {
        for (int step : PAWN_CAPTURES<Us>) {
            if (position.at(king_ + step) == Facing<Us>::THEIR_PAWN)
                note_checker(king_ + step);
        }
        for (int offset : knight_offsets) {
            if (position.at(king_ + offset) == Facing<Us>::THEIR_KNIGHT)
                note_checker(king_ + offset);
        }
        // Kings meet in the quiescence search, where the capture of the king then refutes the move before.
        for (int offset : king_offsets) {
            if (position.at(king_ + offset) == Facing<Us>::THEIR_KING)
                note_checker(king_ + offset);
        }
    }

    void find_line_check(int step, Piece slider) {
        Square square = king_ + step;
        while (position.at(square) == EMPTY)
            square += step;
        if (position.at(square) != slider && position.at(square) != Facing<Us>::THEIR_QUEEN)
            return;
        note_checker(square);
        for (square -= step; square != king_; square -= step)
            wanted_[square] = true;
    }

    const Square king_ = position.king_square(Us);
    int checkers_ = 0;
    Table<bool, BOARD_SIZE> wanted_{};
};

template <Side Us> void generate_evasions_for() {
    build_check_maps();
    const EvasionTargets<Us> targets;
    Move* const begin = start_list();
    Move* out = ManMoves<Us, EvasionTargets<Us>>{begin, targets}.all();
    out = keep_legal<Us>(begin, out);
    close_list(en_passant_moves<Us, true>(out));
}

}  // namespace

void generate_quiet_checks() {
    build_check_maps();
    close_list(position.side_to_move == WHITE ? QuietChecks<WHITE>{start_list()}.all()
                                              : QuietChecks<BLACK>{start_list()}.all());
}

void generate_evasions() {
    if (position.side_to_move == WHITE)
        generate_evasions_for<WHITE>();
    else
        generate_evasions_for<BLACK>();
}

}  // namespace quelmar
