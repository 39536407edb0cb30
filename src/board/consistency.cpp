#include "board/consistency.h"

#include "board/hash_keys.h"
#include "board/position.h"
#include "board/square_tables.h"

namespace quelmar {

namespace {

// What a record counts, recounted from the board.
struct Recount {
    Table<i32, 2> material{}, pst{};
    Table<int, 2> pawns{}, men{};
};

Recount recount() {
    Recount count;
    for (u8 index_square : square_of_index) {
        const Piece piece = position.at(index_square);
        if (!is_man(piece))
            continue;
        const Side side = side_of(piece);
        count.pst[side] += placement_of(piece, index_square);
        ++count.men[side];
        count.pawns[side] += is_pawn(piece);
        if (kind_of(piece) != KING)
            count.material[side] += value_of(piece);
    }
    return count;
}

bool list_is_consistent(Side side, int men) {
    Square before = side;
    int listed = 0;
    for (Square square = position.first_of(side); square != LIST_END; square = position.next_man(square)) {
        const bool is_king = position.at(square) == man_of(side, KING);
        if (++listed > men || !is_man_of(position.at(square), side) || link_of(square).prev != before ||
            is_king != (listed == 1))
            return false;
        before = square;
    }
    return listed == men;
}

}  // namespace

bool position_is_consistent() {
    const Recount count = recount();
    const Side us = position.side_to_move, them = other_side(us);
    const UndoRecord& here = position.current();
    return position.sets == piece_sets_of_board() && here.key == compute_key() &&
           here.pawn_key == compute_pawn_key() && here.material_us == count.material[us] &&
           here.material_them == count.material[them] && here.pst_us == count.pst[us] &&
           here.pst_them == count.pst[them] && here.pawns_us == count.pawns[us] &&
           here.pawns_them == count.pawns[them] && here.men_us == count.men[us] &&
           here.men_them == count.men[them] && list_is_consistent(WHITE, count.men[WHITE]) &&
           list_is_consistent(BLACK, count.men[BLACK]);
}

}  // namespace quelmar
