#include "board/perft.h"

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/position.h"

namespace quelmar {

u64 perft(int depth, void (*generate)()) {
    if (depth == 0)
        return 1;
    u64 leaves = 0;
    generate();
    for (const Move& move : move_list.current()) {
        make_move(&move);
        if (!in_check(other_side(position.side_to_move)))
            leaves += perft(depth - 1, generate);
        unmake_move(&move);
    }
    return leaves;
}

}  // namespace quelmar
