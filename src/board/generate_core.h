// What the generators share. Moves are written in place at `out`, the end of the list so far.
//
// Which moves are tried on the board, and in which order, is behaviour: a trial capture moves the victim to
// the place behind its king in the piece list, a trial castling sorts both lists.
#pragma once

#include "board/attacks.h"
#include "board/check_maps.h"
#include "board/make_move.h"
#include "board/position.h"

#include <bit>
#include <cstddef>
#include <cstdlib>

namespace quelmar {

// Ends the process: board and piece lists disagree.
[[noreturn]] void report_illegal_piece(Square square);

inline Move* start_list() {
    return move_list.start_of(position.search_ply);
}
inline void close_list(Move* out) {
    move_list.start_of(position.search_ply + 1) = out;
}

// A field of a move, by its place in the record, as a part of the word that the record is: so a move is
// written at once.
constexpr u64 field(std::size_t offset, int value) {
    const bool lowest_first = std::endian::native == std::endian::little;
    return static_cast<u64>(value) << 8 * (lowest_first ? offset : sizeof(Move) - 1 - offset);
}
constexpr u64 field_to(Square to) {
    return field(offsetof(Move, to), to);
}
constexpr u64 field_captured(Piece man) {
    return field(offsetof(Move, captured), man);
}
constexpr u64 field_check(bool gives_check) {
    return field(offsetof(Move, gives_check), gives_check);
}
// What all moves of the man on `from` share.
inline u64 fields_of_man(Square from) {
    return field(offsetof(Move, from), from) | field(offsetof(Move, piece), position.at(from));
}

inline Move* put_fields(Move* out, u64 fields) {
    *out = std::bit_cast<Move>(fields);
    return out + 1;
}

inline Move* put_move(Move* out, Square from, Square to, Piece promotion, int gives_check) {
    return put_fields(out, fields_of_man(from) | field_to(to) | field_captured(position.at(to)) |
                               field(offsetof(Move, promotion), promotion) | field_check(gives_check != 0));
}

constexpr int check_bit(Piece kind) {
    return kind == KING ? 0 : 1 << (kind - PAWN);
}
static_assert(check_bit(PAWN) == CHECK_BY_PAWN && check_bit(QUEEN) == CHECK_BY_QUEEN);

// In the order in which they are tried: White's towards the h-file first, Black's towards the a-file; en
// passant the other way round.
template <Side Us>
inline constexpr Table<int, 2> PAWN_CAPTURES = {17 * Facing<Us>::SIGN, 15 * Facing<Us>::SIGN};

// Whether a man of the kind gives check from the square.
template <Piece Kind> bool checks_from(Square square) {
    return (check_square_map[square] & check_bit(Kind)) != 0;
}
// Whether the man on `from` uncovers a check; `step` is that of the line it moves along, 0 for a knight.
inline bool uncovers_check(Square from, int step) {
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

    // Whether a man of ours may go where `met` stands: nobody or an enemy.
    static bool is_target(Piece met) {
        constexpr u32 ENEMIES = 0b111111u << man_of(Facing<Us>::THEM, PAWN), NOBODY = 1u << EMPTY;
        return ((ENEMIES | NOBODY) >> met & 1) != 0;
    }

    // A pawn move with all its promotions; under-promotions are never marked as checks.
    void put_pawn_move(Square from, Square to, int step) {
        const bool check = checks_from<PAWN>(to) || uncovers_check(from, step);
        if (Facing<Us>::rank(to) != 7) {
            out = put_move(out, from, to, EMPTY, check);
            return;
        }
        out = put_move(out, from, to, man_of(Us, QUEEN), check || checks_from<QUEEN>(to));
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
        const u64 fields = fields_of_man(from) | field_check(uncovers_check(from, 0));
        for (int offset : knight_offsets) {
            const Square to = from + offset;
            if (is_target(position.at(to)) && accept(to))
                put<KNIGHT>(fields, to);
        }
    }

    template <Piece Kind, typename Steps> void slider(Square from, const Steps& steps) {
        const u64 man = fields_of_man(from);
        for (int step : steps) {
            const u64 fields = man | field_check(uncovers_check(from, step));
            Square to = from + step;
            for (; position.at(to) == EMPTY; to += step) {
                if (accept(to))
                    put<Kind>(fields, to);
            }
            if (enemy_on(to) && accept(to))
                put<Kind>(fields, to);
        }
    }

    void king(Square from) {
        const u64 man = fields_of_man(from);
        for (int step : king_offsets) {
            const Square to = from + step;
            if (is_target(position.at(to)))
                put<KING>(man | field_check(uncovers_check(from, step)), to);
        }
    }

    // Adds to the fields of the man what differs by the destination.
    template <Piece Kind> void put(u64 fields, Square to) {
        out = put_fields(out, fields | field_to(to) | field_captured(position.at(to)) |
                                  field_check(checks_from<Kind>(to)));
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
