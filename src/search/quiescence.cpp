// The search below the horizon: captures and queen promotions, all replies to a check and, as long as the
// limits allow, quiet checks. Like the full-width search it has a null window, and it stores its bounds in
// the same table.
//
// Checks are bounded by a ply that depends on the iteration and on where the full-width search ended, by the
// nodes of this quiescence search, and by the pieces left to attack with. Captures have no limit; what keeps
// them few is that a side may always stand pat, that the generator leaves losing captures out, and that those
// which cannot come near the best score are skipped.
#include "board/check_maps.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/square_tables.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "search/captures.h"
#include "search/extensions.h"
#include "search/ordering.h"
#include "search/search.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>

namespace quelmar {

namespace {

// Deepest ply at which checks may still be searched, by iteration.
constexpr Table<int, MAX_ITERATION + 1> qcheck_plies = [] {
    Table<int, MAX_ITERATION + 1> plies{0, 16, 18, 22, 24, 26, 28, 30, 32, 36, 40, 44, 48, 52};
    for (int iteration = 14; iteration < plies.size(); ++iteration)
        plies[iteration] = 56;
    return plies;
}();

struct QNode {
    Score beta;
    Depth depth;  // as stored in the table
    int check_limit;
    int ply = position.search_ply;
    const UndoRecord& record = position.current();
    Score result = 0;
    Score eval = 0;
    PackedMove table_move = 0;
    bool in_check = false;
    bool checks_allowed = false;
    int evasions = 0;
    Score best = -INFINITE_SCORE;
    Move best_move{};

    bool decide(Score score) {
        result = score;
        return true;
    }
};

void open_ply(const QNode& node) {
    ++search_state.nodes;
    ++search_state.qsearch_nodes;
    look_when_due();  // a stop lets the tree run dry, see is_swollen
    search_state.at(node.ply).check_count = search_state.at(node.ply - 1).check_count;
}

bool mate_distance(QNode& node) {
    const Score mated_here = node.ply - MATE_SCORE;
    return mated_here > node.beta && node.decide(mated_here);
}

// Checks are not searched beyond `limit`, nor against a safe king by a side that has hardly checked on the
// way. The king's danger is that of the last evaluation at this ply.
bool without_checks(const QNode& node, int limit) {
    constexpr int CHECKS_ON_THE_WAY = 2, SAFE_KING = -40;
    if (limit < node.ply)
        return true;
    const Side us = position.side_to_move;
    return search_state.at(node.ply).check_count[us] < CHECKS_ON_THE_WAY && move_before().from != 0 &&
           outputs_at(node.ply).ply_king_danger[other_side(us)] > SAFE_KING;
}

bool table_cutoff(QNode& node) {
    const TTEntry* entry = tt_probe(node.record.key);
    if (entry == nullptr)
        return false;
    node.table_move = entry->move;
    if (entry->lower_generation == tt_generation &&
        (entry->lower_depth >= node.depth || without_checks(node, node.check_limit))) {
        const Score lower = tt_score_at(entry->lower_score, node.ply);
        if (lower >= node.beta)
            return node.decide(lower);
    }
    if (entry->upper_generation == tt_generation &&
        (entry->upper_depth >= node.depth || node.check_limit < node.ply)) {
        const Score upper = tt_score_at(entry->upper_score, node.ply);
        if (upper < node.beta)
            return node.decide(upper);
    }
    return false;
}

void evaluate_node(QNode& node) {
    const Side us = position.side_to_move;
    node.eval = evaluate() >> search_state.grain_shift;
    node.in_check = contains(attacks_of(other_side(us)).attacked, position.king_square(us));
}

// The move before was illegal. Nothing may answer before this is known, neither a draw nor a stand pat: the
// parent would count that move as legal, miss stalemates and believe in mates that are none.
bool king_en_prise(QNode& node) {
    return is_enemy_king_en_prise() && node.decide(MATE_SCORE + 1 - node.ply);
}

// A stop in the first iteration, which has to complete, shortens what is left of it.
bool is_swollen() {
    return search_state.qsearch_nodes > SWOLLEN_QSEARCH || search_control.abort_search;
}

// Also with what hangs on both sides the position is above beta by a clear margin.
bool stand_pat(QNode& node) {
    constexpr Score CLEAR_MARGIN = 128;
    if (node.in_check)
        return false;
    if (node.eval >= node.beta)
        return node.decide(node.eval);
    find_threats();
    const int shift = search_state.threat_shift;
    const Score settled =
        node.eval + (node.record.threat_value_them[0] << shift) - (node.record.threat_value_us[0] << shift);
    return settled > node.beta + CLEAR_MARGIN && node.decide(settled);
}

void decide_on_checks(QNode& node) {
    constexpr int ATTACKING_MATERIAL = 2496;
    constexpr u64 NODE_BUDGET = 500;
    const int limit = std::min(qcheck_plies[search_state.iteration], node.check_limit);
    node.checks_allowed =
        !without_checks(node, limit) && !node.in_check && search_settings.qsearch_checks != 0 &&
        piece_material(node.record) >= ATTACKING_MATERIAL && search_state.qsearch_nodes <= NODE_BUDGET;
}

// Lists the moves. True when the side in check has none.
bool without_moves(QNode& node) {
    if (!node.in_check) {
        generate_captures();
        node.best = node.eval;
        return false;
    }
    find_threats();
    generate_evasions();
    node.evasions = static_cast<int>(move_list.current().size());
    return node.evasions == 0 && node.decide(node.ply - MATE_SCORE);
}

// Whether a capture may still reach the best score, or must be looked at for another reason.
bool worth_searching(const QNode& node, const Move& move) {
    constexpr int SLACK = 50;
    if (node.in_check || move_before().promotion != EMPTY || node.record.material_us <= 0 ||
        move.promotion != EMPTY)
        return true;
    const PlyOutputs& outputs = outputs_at(node.ply);
    const Score reach = ((outputs.ply_eval - outputs.ply_material_placement + SLACK) >> 1) +
                        (material_placement_after_move(move) >> 1);
    return node.best <= reach || (node.checks_allowed && check_kind(move) != CheckKind::NONE);
}

// True when the move reached beta.
bool search_move(QNode& node, const Move& move, int check_limit) {
    make_move(&move);
    const Score value = -qsearch(1 - node.beta, node.depth - ONE_PLY, check_limit);
    unmake_move(&move);
    if (value > node.best) {
        node.best = value;
        node.best_move = move;
    }
    return node.best >= node.beta;
}

void search_captures(QNode& node) {
    constexpr int FORCED_REPLY_BONUS = 2;
    const int child_limit = node.check_limit + (node.evasions == 1 ? FORCED_REPLY_BONUS : 0);
    while (const Move* move = pick_move()) {
        if (worth_searching(node, *move) && search_move(node, *move, child_limit))
            return;
    }
}

// The score that makes quiet checks pointless: far above what the root expects.
Score enough_without_checks(const QNode& node) {
    const Score expected = node.ply % 2 == 0 ? search_state.prev_plus_small : -search_state.prev_minus_small;
    return std::min(QUEEN_VALUE >> search_state.grain_shift, expected);
}

void search_quiet_checks(QNode& node) {
    if (node.best >= node.beta || !node.checks_allowed || node.best >= enough_without_checks(node))
        return;
    generate_quiet_checks();
    tt_prefetch_children();
    order_moves(node.table_move);
    while (const Move* move = pick_move()) {
        if (static_exchange(move->from, move->to) >= 0 && search_move(node, *move, node.check_limit))
            return;
    }
}

Score store_verdict(const QNode& node) {
    if (node.best < node.beta)
        tt_store_upper(node.depth, node.best, 0);
    else
        tt_store_lower(node.depth, pack_move(node.best_move), node.best, 0);
    return node.best;
}

}  // namespace

Score qsearch(Score beta, Depth depth, int check_limit) {
    QNode node{beta, depth, check_limit};
    open_ply(node);
    if (mate_distance(node) || table_cutoff(node))
        return node.result;
    evaluate_node(node);
    if (king_en_prise(node))
        return node.result;
    if (is_search_draw())
        return 0;
    if (node.ply >= MAX_PLY - 1 || is_swollen())
        return node.eval;
    if (stand_pat(node))
        return node.result;
    decide_on_checks(node);
    if (without_moves(node))
        return node.result;
    tt_prefetch_children();
    order_moves(node.table_move);
    search_captures(node);
    search_quiet_checks(node);
    return store_verdict(node);
}

}  // namespace quelmar
