#include "board/generate.h"

#include "board/generate_core.h"
#include "board/position.h"

#include <algorithm>
#include <cstdio>

namespace quelmar {

void report_illegal_piece(Square square) {
    std::printf("Illegal piece: %d at %d\n", position.at(square), square);
    print_board();
    std::fflush(stdout);
    std::exit(1);
}

namespace {

constexpr auto EVERYWHERE = [](Square) { return true; };

// Every square of the king's way is free of other men than the two that castle, and none is attacked.
template <Side Us> bool kings_way_is_clear(Square king, Square king_to, Square rook) {
    for (Square square = std::min(king, king_to); square <= std::max(king, king_to); ++square) {
        if (position.at(square) != EMPTY && square != king && square != rook)
            return false;
    }
    for (Square square = std::min(king, king_to); square <= std::max(king, king_to); ++square) {
        if (is_square_attacked(square, Facing<Us>::THEM))
            return false;
    }
    return true;
}

template <Side Us> bool rooks_way_is_clear(Square rook, Square rook_to) {
    for (Square square = std::min(rook, rook_to); square <= std::max(rook, rook_to); ++square) {
        if (position.at(square) != EMPTY && square != rook && position.at(square) != Facing<Us>::OUR_KING)
            return false;
    }
    return true;
}

// In Chess960 the castling rook may have shielded the king, so a legal list tests the result as well.
template <Side Us, bool LegalOnly> Move* castling_moves(Move* out) {
    constexpr int FIRST_BIT = Us == WHITE ? CASTLE_WHITE_SHORT : CASTLE_BLACK_SHORT;
    const Square king = position.king_home[Us];
    if (position.king_square(Us) != king)
        return out;
    for (int wing : {0, 1}) {
        const int index = 2 * Us + wing;
        const Square rook = position.castle_rook_square[index];
        const Square king_to = Facing<Us>::mirror(wing == 0 ? G1 : C1);
        const Square rook_to = Facing<Us>::mirror(wing == 0 ? F1 : D1);
        if ((position.current().castle_lost & FIRST_BIT << wing) != 0 ||
            position.at(rook) != Facing<Us>::OUR_ROOK || !rooks_way_is_clear<Us>(rook, rook_to) ||
            !kings_way_is_clear<Us>(king, king_to, rook))
            continue;
        put_move(out, king, king_to, EMPTY, 0);
        out->captured = EMPTY;  // in Chess960 the own rook may stand on the king's destination
        out->flags = static_cast<u8>(FIRST_BIT << wing);
        out += try_special_move<Us, LegalOnly>(out);
    }
    return out;
}

template <Side Us, bool LegalOnly> void generate_for() {
    build_check_maps();
    Move* const begin = start_list();
    Move* out = ManMoves<Us, decltype(EVERYWHERE)>{begin, EVERYWHERE}.all();
    if constexpr (LegalOnly)
        out = keep_legal<Us>(begin, out);
    out = castling_moves<Us, LegalOnly>(out);
    close_list(en_passant_moves<Us, LegalOnly>(out));
}

}  // namespace

void generate_moves() {
    if (position.side_to_move == WHITE)
        generate_for<WHITE, false>();
    else
        generate_for<BLACK, false>();
}

void generate_legal_moves() {
    if (position.side_to_move == WHITE)
        generate_for<WHITE, true>();
    else
        generate_for<BLACK, true>();
}

}  // namespace quelmar
