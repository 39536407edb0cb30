#include "search/extensions.h"

#include "board/game_result.h"
#include "board/square_tables.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "search/search_control.h"
#include "search/search_state.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr Depth MAX_EXTENSION = ONE_PLY;
constexpr Depth HALF_PLY = 30, THREE_QUARTERS = 45, THIRD_PLY = 20, QUARTER_PLY = 15, SIXTH_PLY = 10;
constexpr Score PAWN_ENDING_BEST = 384;  // a side that already scores this much needs no proof of the ending
constexpr int NULL_MOVE_MATERIAL = ROOK_VALUE + 1;  // more than a rook
constexpr u64 REDUCTION_NODES = 32768;              // the history says nothing before
constexpr int SELECTIVITY_SHIFT = 19, DEEP_REDUCTION_SHIFT = 24;
constexpr int MAX_NULL_REDUCTION = 60;  // plies; more would only leave the range of a depth
constexpr int RECAPTURE_FEW_PIECES = 1293, RECAPTURE_SOME_PIECES = 2497;
constexpr int COVER_TO_EXTEND_FOR = 57;

int total_material(const UndoRecord& here) {
    return here.material_us + here.material_them;
}

Square last_rank_start(Side side) {
    return side == WHITE ? A8 : A1;
}

bool is_our_pawn(Square square, Side side) {
    return position.at(square) == man_of(side, PAWN);
}

// Pawns that touch `square` from the neighbouring files, beside it or `rank_step` away.
bool has_pawn_partner(Square square, int rank_step, Side side) {
    return is_our_pawn(square - 1, side) || is_our_pawn(square + 1, side) ||
           is_our_pawn(square + rank_step - 1, side) || is_our_pawn(square + rank_step + 1, side);
}

// The last pieces leave the board: everything is decided in the pawn ending, which must not lie beyond the
// horizon. 0 when `move` does not lead there.
Depth pawn_ending_extension(const Move& move, Score best) {
    const UndoRecord& here = position.current();
    const int value = value_of(move.captured);
    if (value < MINOR_VALUE || best >= PAWN_ENDING_BEST || piece_material(here) != value)
        return 0;
    return value == QUEEN_VALUE ? 150 : value == ROOK_VALUE ? 120 : 90;
}

Depth single_reply_extension(const MoveContext& context) {
    if (!context.in_check)
        return 0;
    return context.evasions == 1 ? THREE_QUARTERS : context.evasions == 2 ? THIRD_PLY : 0;
}

// A threatened mate is worth defending while there is something to lose.
Depth mate_threat_extension(int balance) {
    if (balance >= 1)
        return THREE_QUARTERS;
    if (balance >= -99)
        return HALF_PLY;
    return balance >= -199 ? THIRD_PLY : 0;
}

// Whether `move` takes back, with the only man that can, what the opponent has just taken: like for like, and
// nothing else of theirs hangs.
bool is_recapture(const MoveContext& context, const Move& move) {
    if (context.recapture_attackers != 1 || move.captured == EMPTY || position.game_ply <= 1 ||
        position.search_ply <= 1)
        return false;
    const UndoRecord& here = position.current();
    const Move& last = move_before();
    return last.captured != EMPTY && move.to == last.to && here.threat_value_them[0] != 0 &&
           here.threat_square_them[0] == move.to && here.threat_value_them[1] == 0 &&
           own_move_before().to != move.to && value_of(move.captured) == value_of(last.captured) &&
           value_of(move.captured) >= MINOR_VALUE;
}

Depth recapture_extension(const Move& move) {
    const int value = value_of(move.captured);
    const int pieces_left = piece_material(position.current()) - value;
    if (pieces_left < RECAPTURE_FEW_PIECES)
        return ONE_PLY;
    return pieces_left < RECAPTURE_SOME_PIECES || value >= ROOK_VALUE ? THREE_QUARTERS : HALF_PLY;
}

bool promotes_safely_next(const MoveContext& context, const Move& move, Side side) {
    const Square ahead = move.to + forward_of(side);
    const int file = file_of(move.to);
    return position.at(ahead) == EMPTY && exchange_loss(move.piece, context.promotion_attacks[WHITE][file],
                                                        context.promotion_attacks[BLACK][file]) == 0;
}

Depth seventh_rank_extension(const MoveContext& context, const Move& move, Side side) {
    if (!is_endgame_material())
        return THREE_QUARTERS;
    return promotes_safely_next(context, move, side) || has_pawn_partner(move.to, -forward_of(side), side)
               ? ONE_PLY
               : THREE_QUARTERS;
}

Depth sixth_rank_extension(const Move& move, Side side) {
    if (!is_endgame_material())
        return HALF_PLY;
    const int ahead = forward_of(side);
    if (has_pawn_partner(move.to, ahead, side))
        return ONE_PLY;
    if (is_man_of(position.at(move.to + ahead), other_side(side)))
        return is_pawn(move.captured) ? SIXTH_PLY : THIRD_PLY;
    return THREE_QUARTERS;
}

// The king has just lost cover. Worth a look while we are not behind; less so when we win something anyway.
Depth king_safety_extension(int balance) {
    if (!king_cover_lost(position.side_to_move, COVER_TO_EXTEND_FOR))
        return 0;
    if (position.current().threat_value_them[0] < 2) {
        if (balance >= 160)
            return THREE_QUARTERS;
        if (balance >= 64)
            return HALF_PLY;
        if (balance >= 0)
            return THIRD_PLY;
        return balance >= -128 ? QUARTER_PLY : 0;
    }
    if (balance >= 128)
        return HALF_PLY;
    if (balance >= 64)
        return THIRD_PLY;
    return balance >= 0 ? QUARTER_PLY : 0;
}

bool is_pawn_move_to_rank(const Move& move, int rank_from_own_side) {
    return (move.piece == WHITE_PAWN && Facing<WHITE>::rank(move.to) == rank_from_own_side) ||
           (move.piece == BLACK_PAWN && Facing<BLACK>::rank(move.to) == rank_from_own_side);
}

}  // namespace

void keep_attack_facts(MoveContext& context) {
    const Side us = position.side_to_move;
    const Square target = move_before().to;
    context.recapture_attackers = target != 0 ? attacks_of(us).count_on(target) : 0;
    if (!is_endgame_material())
        return;
    for (int file = 0; file < 8; ++file) {
        for (const Side side : {WHITE, BLACK})
            context.promotion_attacks[side][file] =
                static_cast<u8>(attack_byte(side, last_rank_start(us) + file));
    }
}

Depth common_extension(const MoveContext& context) {
    const int balance = outputs_at(position.search_ply).ply_material_placement;
    return single_reply_extension(context) + (context.mate_threat ? mate_threat_extension(balance) : 0) +
           king_safety_extension(balance);
}

Depth move_extension(const MoveContext& context, const Move& move, Score best) {
    if (const Depth pawn_ending = pawn_ending_extension(move, best))
        return pawn_ending;
    const Side us = position.side_to_move;
    Depth sum = context.common + (move.gives_check != 0 ? ONE_PLY : 0);
    if (is_recapture(context, move))
        sum += recapture_extension(move);
    if (pawn_to_seventh(move))
        sum += seventh_rank_extension(context, move, us);
    if (pawn_to_sixth(move))
        sum += sixth_rank_extension(move, us);
    return std::min(sum, MAX_EXTENSION);
}

int late_move_reduction(const Move& move) {
    const int ply = position.search_ply - 1;  // of the node that made the move
    if (move.captured != EMPTY || search_state.nodes < REDUCTION_NODES || search_settings.selectivity <= 0 ||
        search_state.at(ply).extension != 0 || search_state.at(ply - 1).extension != 0)
        return 0;
    const u64 history = search_state.history_of(move);
    if (history < search_state.nodes >> DEEP_REDUCTION_SHIFT) {
        for (int back = 2; back <= PLY_GUARD; ++back) {
            if (search_state.at(ply - back).extension != 0)
                return 1;
        }
        return 2;
    }
    const int shift = SELECTIVITY_SHIFT - std::min(search_settings.selectivity, SELECTIVITY_SHIFT);
    return history < search_state.nodes >> shift ? 1 : 0;
}

int null_move_reduction() {
    const UndoRecord& here = position.current();
    if (total_material(here) > ENDGAME_MATERIAL)
        return std::clamp(search_settings.null_reduction, 0, MAX_NULL_REDUCTION);
    // Zugzwang is at home where only pawns are left.
    if (here.material_us == 0 || here.material_them == 0 || here.material_us < NULL_MOVE_MATERIAL ||
        (here.material_us == PAWN_VALUE * here.pawns_us &&
         here.material_them == PAWN_VALUE * here.pawns_them))
        return 0;
    return std::clamp(search_settings.null_reduction_endgame, 0, MAX_NULL_REDUCTION);
}

bool pruning_allowed() {
    const PlyRecord& here = search_state.at(position.search_ply);
    const PlyRecord& before = search_state.at(position.search_ply - 1);
    return !is_endgame_material() && !here.bm_extended && !before.bm_extended && !here.mate_threat &&
           !before.mate_threat;
}

bool is_endgame_material() {
    return total_material(position.current()) <= ENDGAME_MATERIAL;
}

bool pawn_to_seventh(const Move& move) {
    return is_pawn_move_to_rank(move, RANK_7);
}

bool pawn_to_sixth(const Move& move) {
    return is_pawn_move_to_rank(move, RANK_6);
}

bool is_search_repetition() {
    const UndoRecord& here = position.current();
    if (here.halfmove_clock <= 2)
        return false;
    for (int back = 2; back < here.halfmove_clock && back <= position.game_ply; back += 2) {
        if (position.back(back).key == here.key)
            return true;
    }
    return false;
}

bool is_search_draw() {
    const UndoRecord& here = position.current();
    if (is_search_repetition() || here.halfmove_clock >= FIFTY_MOVES)
        return true;
    if (here.material_us == 0 && here.material_them == 0)
        return true;
    // One quiet ply is granted, so that the last capture is not called a draw when it can be punished.
    return has_bare_material(here) && has_bare_material(position.back(1));
}

}  // namespace quelmar
