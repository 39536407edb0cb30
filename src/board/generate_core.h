// What the generators share. Moves are written in place at `out`, the end of the list so
// far.
//
// Which moves are tried on the board, and in which order, is behaviour: a trial capture moves the victim to
// the place behind its king in the piece list, a trial castling sorts both lists.
#pragma once

#include "board/attacks.h"
#include "board/check_maps.h"
#include "board/make_move.h"
#include "board/position.h"

namespace quelmar {

// Ends the process: board and piece lists disagree.
[[noreturn]] void report_illegal_piece(Square square);

inline Move* start_list() {
    return move_list.start_of(position.search_ply);
}
inline void close_list(Move* out) {
    move_list.start_of(position.search_ply + 1) = out;
}

inline Move* put_move(Move* out, Square from, Square to, Piece promotion, int gives_check) {
    out->from = static_cast<u8>(from);
    out->to = static_cast<u8>(to);
    out->piece = position.board[from];
    out->captured = position.board[to];
    out->promotion = static_cast<u8>(promotion);
    out->flags = 0;
    out->gives_check = static_cast<u8>(gives_check);
    return out + 1;
}

constexpr int check_bit(Piece kind) {
    return kind == KING ? 0 : 1 << (kind - PAWN);
}
static_assert(check_bit(PAWN) == CHECK_BY_PAWN && check_bit(QUEEN) == CHECK_BY_QUEEN);

// In the order in which they are tried: White's towards the h-file first, Black's towards the a-file; en
// passant the other way round.
template <Side Us>
inline constexpr Table<int, 2> PAWN_CAPTURES = {17 * Facing<Us>::SIGN, 15 * Facing<Us>::SIGN};

// The gives-check flag of an ordinary move; `step` is that of the line it moves along, 0 for a knight.
template <Piece Kind> int check_flag(Square from, Square to, int step) {
    if ((check_square_map[to] & check_bit(Kind)) != 0)
        return 1;
    const int discovery = discovery_map[from];
    return discovery != 0 && discovery != std::abs(step);
}

// Hands every man of the side, in piece-list order, to the function of its kind; a list square without a man
// to `on_nobody`.
template <Side Us, typename Generator> void visit_men(Generator& moves, void (*on_nobody)(Square)) {
    for (Square from = position.first_of(Us); from != LIST_END; from = position.next_man(from)) {
        switch (position.at(from) - 6 * Us) {
        case PAWN:
            moves.pawn(from);
            break;
        case KNIGHT:
            moves.knight(from);
            break;
        case BISHOP:
            moves.template slider<BISHOP>(from, bishop_directions);
            break;
        case ROOK:
            moves.template slider<ROOK>(from, rook_directions);
            break;
        case QUEEN:
            moves.template slider<QUEEN>(from, king_offsets);
            break;
        case KING:
            moves.king(from);
            break;
        default:
            on_nobody(from);
        }
    }
}

// `Accept` says of a target square whether moves to it are wanted; the king's moves are not asked.
template <Side Us, typename Accept> struct ManMoves {
    Move* out;
    const Accept& accept;

    bool enemy_on(Square square) const { return is_man_of(position.at(square), Facing<Us>::THEM); }

    // A pawn move with all its promotions; under-promotions are never marked as checks.
    void put_pawn_move(Square from, Square to, int step) {
        const int check = check_flag<PAWN>(from, to, step);
        if (Facing<Us>::rank(to) != 7) {
            out = put_move(out, from, to, EMPTY, check);
            return;
        }
        const bool queen_checks = (check_square_map[to] & CHECK_BY_QUEEN) != 0;
        out = put_move(out, from, to, man_of(Us, QUEEN), check != 0 || queen_checks);
        if (Facing<Us>::rank(from) != 6)
            return;
        for (Piece kind : {ROOK, BISHOP, KNIGHT})
            out = put_move(out, from, to, man_of(Us, kind), 0);
    }

    void pawn(Square from) {
        for (int step : PAWN_CAPTURES<Us>) {
            if (enemy_on(from + step) && accept(from + step))
                put_pawn_move(from, from + step, step);
        }
        const Square ahead = from + Facing<Us>::FORWARD, two_ahead = ahead + Facing<Us>::FORWARD;
        if (position.at(ahead) != EMPTY)
            return;
        if (accept(ahead))
            put_pawn_move(from, ahead, Facing<Us>::FORWARD);
        if (Facing<Us>::rank(from) == 1 && position.at(two_ahead) == EMPTY && accept(two_ahead))
            put_pawn_move(from, two_ahead, Facing<Us>::FORWARD);
    }

    void knight(Square from) {
        for (int offset : knight_offsets) {
            const Square to = from + offset;
            if ((position.at(to) == EMPTY || enemy_on(to)) && accept(to))
                out = put_move(out, from, to, EMPTY, check_flag<KNIGHT>(from, to, 0));
        }
    }

    template <Piece Kind, typename Steps> void slider(Square from, const Steps& steps) {
        for (int step : steps) {
            Square to = from + step;
            for (; position.at(to) == EMPTY; to += step) {
                if (accept(to))
                    out = put_move(out, from, to, EMPTY, check_flag<Kind>(from, to, step));
            }
            if (enemy_on(to) && accept(to))
                out = put_move(out, from, to, EMPTY, check_flag<Kind>(from, to, step));
        }
    }

    void king(Square from) {
        for (int step : king_offsets) {
            const Square to = from + step;
            if (position.at(to) == EMPTY || enemy_on(to))
                out = put_move(out, from, to, EMPTY, check_flag<KING>(from, to, step));
        }
    }

    // Castling and en passant apart, the moves of all men in piece-list order.
    Move* all() {
        visit_men<Us>(*this, report_illegal_piece);
        return out;
    }
};

// Plays each move and keeps those that leave no own king in check; captures of the enemy king stay untried.
// Returns the new end.
template <Side Us> Move* keep_legal(Move* begin, Move* end) {
    Move* out = begin;
    for (Move* move = begin; move != end; ++move) {
        if (move->captured != Facing<Us>::THEIR_KING) {
            make_move(move);
            const bool illegal = in_check(Us);
            unmake_move(move);
            if (illegal)
                continue;
        }
        *out++ = *move;
    }
    return out;
}

// Plays the move at `out` for its gives-check flag. Returns whether it belongs into the list: always, unless
// `LegalOnly` is set and it leaves the own king in check.
template <Side Us, bool LegalOnly> bool try_special_move(Move* out) {
    make_move(out);
    out->gives_check = in_check(Facing<Us>::THEM);
    const bool illegal = LegalOnly && in_check(Us);
    unmake_move(out);
    return !illegal;
}

template <Side Us, bool LegalOnly> Move* en_passant_moves(Move* out) {
    const Square to = position.current().ep_square;
    if (to == 0)
        return out;
    for (int step : {PAWN_CAPTURES<Us>[1], PAWN_CAPTURES<Us>[0]}) {
        if (position.at(to - step) != Facing<Us>::OUR_PAWN)
            continue;
        put_move(out, to - step, to, EMPTY, 0);
        out->captured = Facing<Us>::THEIR_PAWN;
        out->flags = EN_PASSANT;
        out += try_special_move<Us, LegalOnly>(out);
    }
    return out;
}

}  // namespace quelmar
