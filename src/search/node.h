// What a full-width node knows while it lives, and the facts that its rules ask for. Included by node.cpp
// alone.
#pragma once

#include "board/position.h"
#include "board/square_tables.h"
#include "eval/outputs.h"
#include "search/extensions.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/transposition.h"

namespace quelmar {

// What lives as long as one call.
struct Node {
    Score beta;
    Depth depth;
    int ply;
    PlyRecord& here;
    const PlyRecord& before;
    const UndoRecord& record;
    Score result = 0;
    Score eval = 0;
    bool in_table = false;
    bool bm_flag = false;  // the Botvinnik-Markoff condition held
    TTEntry entry;         // a copy: the slot may be overwritten by the node's own subtree
    MoveContext context;
    Score fut_small = 0, fut_medium = 0, fut_large = 0;
    int static_score = 0;  // 128ths of a pawn, before the gain of a move
    bool shrinks = false;  // quiet moves may be searched less deep, or left out, on a static estimate
    Score best = -INFINITE_SCORE;
    int searched = 0;  // legal moves, pruned ones included
    Move best_move;

    Node(Score bound, Depth plies_left)
        : beta(bound), depth(plies_left), ply(position.search_ply), here(search_state.at(ply)),
          before(search_state.at(ply - 1)), record(position.current()) {}

    bool decide(Score score) {
        result = score;
        return true;
    }
    bool in_check() const { return context.in_check; }
    Side us() const { return position.side_to_move; }
    Side them() const { return other_side(position.side_to_move); }
    PackedMove table_move() const { return in_table ? entry.move : 0; }
    PlyOutputs& outputs() const { return outputs_at(ply); }
};

inline int danger_of(const Node& node, Side side) {
    return node.outputs().ply_king_danger[side];
}

inline Score worst_own_danger(const Node& node) {
    return node.record.threat_value_us[0] << search_state.threat_shift;
}

// How much less deep a position is searched that is `ahead` for one side while the other has only `material`.
inline Depth lopsided_reduction(Score ahead, int material) {
    const int shift = search_state.grain_shift;
    if (ahead > 1280 >> shift)
        return material <= PAWN_VALUE ? 45 : material <= ROOK_VALUE ? 30 : 0;
    if (ahead > 640 >> shift)
        return 20;
    return ahead > 384 >> shift ? 15 : 0;
}

// Static null moves are tried up to this depth.
inline Depth static_null_depth() {
    return search_state.iteration < 3 ? 0 : search_state.iteration < 6 ? ONE_PLY : 2 * ONE_PLY;
}

// The table knows that we are being mated, so passing cannot reach beta.
inline bool known_to_be_mated(const Node& node, Depth depth) {
    return node.in_table && node.entry.upper_score <= -FOUND_MATE_LIMIT && node.entry.upper_depth >= depth &&
           node.entry.upper_score < node.beta;
}

// The Botvinnik-Markoff condition: the move that refutes passing pursues the same man as the threat two plies
// ago did, so the threat is real and was only delayed.
inline bool is_threat_renewed(const Node& node) {
    const PackedMove threat = node.here.threat_move;
    const PackedMove older = search_state.at(node.ply - 2).threat_move;
    if (threat == 0 || older == 0)
        return false;
    const Move& own = own_move_before();
    if (packed_to(threat) == own.to)
        return own.from == packed_to(older);
    return packed_to(threat) == packed_to(older);
}

}  // namespace quelmar
