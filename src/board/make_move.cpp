#include "board/make_move.h"

#include "board/consistency.h"
#include "board/hash_keys.h"
#include "board/position.h"
#include "board/square_tables.h"

namespace quelmar {

namespace {

struct Castling {
    Square king_to, rook_to;
    int rook_index;  // into castle_rook_square
    Side side;
};

Castling castling_of(int flags) {
    switch (flags) {
    case CASTLE_WHITE_SHORT:
        return {G1, F1, 0, WHITE};
    case CASTLE_WHITE_LONG:
        return {C1, D1, 1, WHITE};
    case CASTLE_BLACK_SHORT:
        return {G8, F8, 2, BLACK};
    default:
        return {C8, D8, 3, BLACK};
    }
}

Square rook_home(const Castling& castling) {
    return position.castle_rook_square[castling.rook_index];
}

Square king_home(const Castling& castling) {
    return position.king_home[castling.side];
}

u8& square_ref(Square square) {
    return position.board[square];
}

// Where the victim of an en-passant capture stands, seen from the record before the capture.
Square en_passant_victim(const UndoRecord& before, Side mover) {
    return before.ep_square - forward_of(mover);
}

// Opens `after`, in which the mover has become "them".
void carry_forward(const UndoRecord& before, UndoRecord& after) {
    after.halfmove_clock = static_cast<u8>(before.halfmove_clock + (before.halfmove_clock < 255));
    after.castle_lost = before.castle_lost;
    after.ep_square = 0;
    after.material_us = before.material_them;
    after.material_them = before.material_us;
    after.pawns_us = before.pawns_them;
    after.pawns_them = before.pawns_us;
    after.men_us = before.men_them;
    after.men_them = before.men_us;
    after.pst_us = before.pst_them;
    after.pst_them = before.pst_us;
}

// King and rook change places with their destinations; in Chess960 either may stay where it is.
void toggle_castling(const Castling& castling, Square king_from, Square rook_from) {
    position.sets.toggle(man_of(castling.side, KING), set_of(king_from) ^ set_of(castling.king_to));
    position.sets.toggle(man_of(castling.side, ROOK), set_of(rook_from) ^ set_of(castling.rook_to));
}

// What make and unmake of every other move do to the sets. Each is its own inverse.
inline void toggle_men(const Move& move, Square victim) {
    if (move.promotion == EMPTY) {
        position.sets.toggle(move.piece, set_of(move.from) ^ set_of(move.to));
    } else {
        position.sets.toggle(move.piece, set_of(move.from));
        position.sets.toggle(move.promotion, set_of(move.to));
    }
    if (move.captured != EMPTY)
        position.sets.toggle(move.captured, set_of(victim));
}

// Empties both origins before it fills the destinations, since in Chess960 they may overlap.
void play_castling(UndoRecord& after, int flags) {
    const Castling castling = castling_of(flags);
    const Square king_from = king_home(castling), rook_from = rook_home(castling);
    const Piece king = man_of(castling.side, KING), rook = man_of(castling.side, ROOK);
    after.pst_them += placement_of(king, castling.king_to) - placement_of(king, king_from) +
                      placement_of(rook, castling.rook_to) - placement_of(rook, rook_from);
    square_ref(rook_from) = EMPTY;
    square_ref(king_from) = EMPTY;
    square_ref(castling.king_to) = static_cast<u8>(king);
    square_ref(castling.rook_to) = static_cast<u8>(rook);
    rebuild_piece_lists();
    toggle_castling(castling, king_from, rook_from);
    after.castle_lost |= castling.side == WHITE ? CASTLE_WHITE_SHORT | CASTLE_WHITE_LONG
                                                : CASTLE_BLACK_SHORT | CASTLE_BLACK_LONG;
    after.halfmove_clock = 0;
}

void take_castling_back(int flags) {
    const Castling castling = castling_of(flags);
    square_ref(castling.king_to) = EMPTY;
    square_ref(castling.rook_to) = EMPTY;
    square_ref(rook_home(castling)) = static_cast<u8>(man_of(castling.side, ROOK));
    square_ref(king_home(castling)) = static_cast<u8>(man_of(castling.side, KING));
    rebuild_piece_lists();
    toggle_castling(castling, king_home(castling), rook_home(castling));
}

void play_en_passant(const UndoRecord& before, UndoRecord& after, const Move& move) {
    const Square victim = en_passant_victim(before, position.side_to_move);
    after.pst_them += placement_of(move.piece, move.to) - placement_of(move.piece, move.from);
    after.pst_us -= placement_of(move.captured, victim);
    after.halfmove_clock = 0;
    --after.pawns_us;
    --after.men_us;
    after.material_us -= value_of(move.captured);
    unlink_square(victim);
    move_link(move.from, move.to);
    square_ref(victim) = EMPTY;
    square_ref(move.from) = EMPTY;
    square_ref(move.to) = move.piece;
    toggle_men(move, victim);
}

void play_ordinary(UndoRecord& after, const Move& move) {
    after.pst_them += placement_of(move.piece, move.to) - placement_of(move.piece, move.from);
    if (move.captured != EMPTY) {
        after.pst_us -= placement_of(move.captured, move.to);
        --after.men_us;
        after.material_us -= value_of(move.captured);
        if (is_pawn(move.captured))
            --after.pawns_us;
        after.halfmove_clock = 0;
        unlink_square(move.to);
    } else if (is_pawn(move.piece)) {
        after.halfmove_clock = 0;
    }
    move_link(move.from, move.to);
    if (move.promotion != EMPTY) {
        --after.pawns_them;
        after.pst_them += placement_of(move.promotion, move.to) - placement_of(move.piece, move.to);
        after.material_them += value_of(move.promotion) - PAWN_VALUE;
        square_ref(move.to) = move.promotion;
    } else {
        square_ref(move.to) = move.piece;
    }
    square_ref(move.from) = EMPTY;
    toggle_men(move, move.to);
    // A capture on a rook's home square loses no right: the generator looks whether the rook is there.
    after.castle_lost |= position.castle_bits_of[move.from];
}

// Set after every double step, whether or not an enemy pawn could capture.
void note_double_step(UndoRecord& after, const Move& move) {
    constexpr int TWO_RANKS = 32;  // as the difference of squares of one file
    if ((move.from ^ move.to) == TWO_RANKS && is_pawn(move.piece))
        after.ep_square = static_cast<u8>((move.from + move.to) / 2);
}

}  // namespace

void make_move(const Move* move) {
    make_move(move, key_after_move(position.current().key, move));
}

void make_move(const Move* move, HashKey key_after) {
    assert(position.game_ply + 1 < POSITION_STACK_SIZE);
    UndoRecord& before = position.current();
    before.move = *move;
    ++position.game_ply;
    ++position.search_ply;
    UndoRecord& after = position.current();
    carry_forward(before, after);
    if (move->flags == 0)
        play_ordinary(after, *move);
    else if (move->flags == EN_PASSANT)
        play_en_passant(before, after, *move);
    else
        play_castling(after, move->flags);
    note_double_step(after, *move);
    after.key = key_after;
    after.pawn_key = pawn_key_after_move(before.pawn_key, move);
    position.side_to_move = other_side(position.side_to_move);
    if (move->flags == EN_PASSANT) {
        after.key = compute_key();
        after.pawn_key = compute_pawn_key();
    }
    assert(position_is_consistent());
}

void unmake_move(const Move* move) {
    --position.search_ply;
    --position.game_ply;
    position.side_to_move = other_side(position.side_to_move);
    if (move->flags != 0 && move->flags != EN_PASSANT) {
        take_castling_back(move->flags);
        assert(position_is_consistent());
        return;
    }
    square_ref(move->from) = move->piece;
    move_link(move->to, move->from);
    Square victim = move->to;
    if (move->flags == EN_PASSANT) {
        square_ref(move->to) = EMPTY;
        victim = en_passant_victim(position.current(), position.side_to_move);
    }
    square_ref(victim) = move->captured;
    toggle_men(*move, victim);
    if (move->captured != EMPTY)
        insert_after_king(victim, position.king_square(other_side(position.side_to_move)));
    assert(position_is_consistent());
}

void make_null_move() {
    assert(position.game_ply + 1 < POSITION_STACK_SIZE);
    move_list.start_of(position.search_ply + 1) = move_list.start_of(position.search_ply);
    UndoRecord& before = position.current();
    before.move.from = 0;
    before.move.gives_check = 0;
    ++position.game_ply;
    ++position.search_ply;
    UndoRecord& after = position.current();
    carry_forward(before, after);
    after.key = key_after_move(before.key, nullptr);
    after.pawn_key = before.pawn_key;
    position.side_to_move = other_side(position.side_to_move);
}

void unmake_null_move() {
    position.side_to_move = other_side(position.side_to_move);
    --position.search_ply;
    --position.game_ply;
}

HashKey castling_rook_key(int flags) {
    const Castling castling = castling_of(flags);
    const Piece rook = man_of(castling.side, ROOK);
    return piece_key(rook, rook_home(castling)) ^ piece_key(rook, castling.rook_to);
}

HashKey key_after_packed_move(HashKey key, PackedMove packed) {
    if (packed_from(packed) == 0)
        return key ^ zobrist_side;
    const Move move = unpack_move(packed);
    key = key_after_move(key, &move);
    if (move.flags == EN_PASSANT) {
        // The victim was keyed on `to`; it stands one rank behind.
        const Square victim = move.to - forward_of(side_of(move.piece));
        key ^= piece_key(move.captured, victim) ^ piece_key(move.captured, move.to);
    }
    return key;
}

u32 pawn_key_after_move(u32 pawn_key, const Move* move) {
    if (move == nullptr)
        return pawn_key;
    if (is_pawn(move->piece)) {
        const auto& keys = pawn_zobrist[side_of(move->piece)];
        pawn_key ^= keys[move->from];
        if (move->promotion == EMPTY)
            pawn_key ^= keys[move->to];
    }
    if (is_pawn(move->captured))
        pawn_key ^= pawn_zobrist[side_of(move->captured)][move->to];
    return pawn_key;
}

void unmake_last_move() {
    const Move& last = position.previous().move;
    if (last.from == 0)
        unmake_null_move();
    else
        unmake_move(&last);
}

void unmake_played_move() {
    position.search_ply = 1;  // where the move stands as seen from the position it is taken back to
    unmake_last_move();
}

}  // namespace quelmar
