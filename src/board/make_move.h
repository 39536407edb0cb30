// Playing moves and taking them back, and the keys that moves lead to.
#pragma once

#include "board/hash_keys.h"
#include "board/types.h"

namespace quelmar {

// Plays `move`, which a generator made for the current position; whether it leaves the king in check is the
// caller's question. Opens the next stack entry, in which every us/them pair is seen from the new side to
// move.
void make_move(const Move* move);
// The same for a caller that already has the key of the position after the move, from key_after_move.
void make_move(const Move* move, HashKey key_after);

// Takes back the last move made, which must have been `move`.
void unmake_move(const Move* move);

// Pass the turn and back. The null ply owns no moves of the move stack. The side to move must not be in
// check.
void make_null_move();
void unmake_null_move();

// Takes back whatever led to the current position, a move or a passed turn. Needs game_ply > 0.
void unmake_last_move();
// The same for a move that does not count as one of a search: the position it is taken back to has search_ply
// 0.
void unmake_played_move();

HashKey castling_rook_key(int flags);  // what the rook's way changes, by the flag of the castling

// The key after `move`, or after a null move for nullptr. An en-passant victim is keyed on `to`.
inline HashKey key_after_move(HashKey key, const Move* move) {
    key ^= zobrist_side;
    if (move == nullptr)
        return key;
    key ^= piece_key(move->piece, move->from) ^
           piece_key(move->promotion != EMPTY ? move->promotion : move->piece, move->to) ^
           piece_key(move->captured, move->to);
    if (move->flags != 0 && move->flags != EN_PASSANT)
        key ^= castling_rook_key(move->flags);
    return key;
}

// The same for a packed move, but exact for en passant too. A packed null move (from = 0) passes the turn.
HashKey key_after_packed_move(HashKey key, PackedMove packed);

u32 pawn_key_after_move(u32 pawn_key, const Move* move);

}  // namespace quelmar
