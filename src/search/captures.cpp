#include "search/captures.h"

#include "board/generate_core.h"
#include "board/reach.h"
#include "eval/exchange.h"
#include "eval/outputs.h"

namespace quelmar {

namespace {

// The men that can capture something worth it are found by sets; only they are then visited, in list order.
template <Side Us> class Captures {
    using Face = Facing<Us>;

public:
    explicit Captures(Move* begin) : out_(begin) {
        const PieceSets& sets = position.sets;
        enemies_ = sets.of_side(Face::THEM);
        // A cheaper man is worth capturing only where an exchange loses it.
        for_king_ = endangered_men[Face::THEM];
        for_queens_ = for_king_ | sets.of_man(Face::THEIR_QUEEN);
        for_rooks_ = for_queens_ | sets.of_man(Face::THEIR_ROOK);
        for_minors_ = for_rooks_ | sets.of_man(Face::THEIR_KNIGHT) | sets.of_man(Face::THEIR_BISHOP);
    }

    Move* all() {
        visit_in_list_order(Us, capturers(), [this](Square from) { visit(from); });
        return out_;
    }

private:
    SquareSet knight_targets(int index) const { return knight_reach_of(index) & for_minors_; }
    SquareSet bishop_targets(int index) const { return bishop_reach(index, occupied_) & for_minors_; }
    SquareSet rook_targets(int index) const { return rook_reach(index, occupied_) & for_rooks_; }
    SquareSet queen_targets(int index) const {
        return (bishop_reach(index, occupied_) | rook_reach(index, occupied_)) & for_queens_;
    }
    SquareSet king_targets(int index) const { return king_reach_of(index) & for_king_; }

    // The men of a kind for which `targets` finds something.
    template <typename Targets> static SquareSet with_targets(Piece man, Targets targets) {
        SquareSet capturers = NO_SQUARES;
        for (const int index : indices_of(position.sets.of_man(man)))
            capturers |= targets(index) != 0 ? SquareSet{1} << index : 0;
        return capturers;
    }

    // The attack maps tell which kinds need not be asked.
    SquareSet capturers() const {
        const AttackMap& attacks = attacks_of(Us);
        SquareSet men = pawns();
        if ((attacks.minor() & for_minors_) != 0)
            men |= with_targets(Face::OUR_KNIGHT, [this](int index) { return knight_targets(index); }) |
                   with_targets(Face::OUR_BISHOP, [this](int index) { return bishop_targets(index); });
        if ((attacks.rook() & for_rooks_) != 0)
            men |= with_targets(Face::OUR_ROOK, [this](int index) { return rook_targets(index); });
        if ((attacks.queen() & for_queens_) != 0)
            men |= with_targets(Face::OUR_QUEEN, [this](int index) { return queen_targets(index); });
        if ((attacks.king() & for_king_) != 0)
            men |= position.sets.of_man(Face::OUR_KING);
        return men;
    }

    // The pawns that can capture or promote.
    SquareSet pawns() const {
        const SquareSet before_enemies = forward<Face::THEM>(enemies_);
        const SquareSet before_last_rank = forward<Face::THEM>(first_rank<Face::THEM>());
        const SquareSet can_promote = before_last_rank & ~forward<Face::THEM>(occupied_);
        return position.sets.of_man(Face::OUR_PAWN) &
               (to_west(before_enemies) | to_east(before_enemies) | can_promote);
    }

    void visit(Square from) {
        const int index = index_of(from);
        switch (position.at(from)) {
        case Face::OUR_PAWN:
            return pawn(from);
        case Face::OUR_KNIGHT:
            return steps(from, knight_targets(index), knight_offsets);
        case Face::OUR_BISHOP:
            return lines(from, bishop_targets(index), bishop_directions);
        case Face::OUR_ROOK:
            return lines(from, rook_targets(index), rook_directions);
        case Face::OUR_QUEEN:
            return lines(from, queen_targets(index), king_offsets);
        default:
            return steps(from, king_targets(index), king_offsets);
        }
    }

    void pawn(Square from) {
        for (int step : PAWN_CAPTURES<Us>) {
            const Square to = from + step;
            if (contains(enemies_, to))
                out_ = put_move(out_, from, to, Face::rank(to) == RANK_8 ? man_of(Us, QUEEN) : EMPTY, 0);
        }
        const Square ahead = from + Face::FORWARD;
        if (Face::rank(from) == RANK_7 && position.at(ahead) == EMPTY)
            out_ = put_move(out_, from, ahead, man_of(Us, QUEEN), 0);
    }

    template <typename Steps> void steps(Square from, SquareSet targets, const Steps& offsets) {
        for (int offset : offsets) {
            if (contains(targets, from + offset))
                out_ = put_move(out_, from, from + offset, EMPTY, 0);
        }
    }

    template <typename Steps> void lines(Square from, SquareSet targets, const Steps& directions) {
        if (is_single(targets)) {
            out_ = put_move(out_, from, square_of(std::countr_zero(targets)), EMPTY, 0);
            return;
        }
        for (int step : directions) {
            Square to = from + step;
            while (position.at(to) == EMPTY)
                to += step;
            if (contains(targets, to))
                out_ = put_move(out_, from, to, EMPTY, 0);
        }
    }

    Move* out_;
    const SquareSet occupied_ = position.sets.occupied();
    SquareSet enemies_;
    // Victims that are worth a man of the kind.
    SquareSet for_minors_, for_rooks_, for_queens_, for_king_;
};

}  // namespace

void generate_captures() {
    close_list(position.side_to_move == WHITE ? Captures<WHITE>(start_list()).all()
                                              : Captures<BLACK>(start_list()).all());
}

}  // namespace quelmar
