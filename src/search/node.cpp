// A node of the full-width search. It is given one bound, beta, and answers whether the position is worth
// that much to the side to move: a result >= beta is a lower bound of its score, a smaller one an upper
// bound. The children are asked the opposite question with the bound 1 - beta.
//
// search() lists the node's rules in their order, and the order is behaviour: cheap ends first (draws, the
// table), then the evaluation with what it allows (less depth in lopsided positions, a cut on the static
// score, a null move), then the moves. A rule that ends the node puts the score into `result` and returns
// true.
//
// Scores are seen from the side to move. 30000 - p is mate p plies from the root; 30000 + p comes back from a
// node in which the enemy king can be taken, so that the parent sees a value below every real score: that is
// how illegal moves of the pseudo-legal generator are found.
//
// A stop is seen at the entry of a node. That node takes back every move of the path, and all callers return
// at once without touching the board.
#include "search/node.h"

#include "board/attacks.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/square_tables.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "search/extensions.h"
#include "search/ordering.h"
#include "search/search.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_reports.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "tablebase/probe.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr i32 ROOT_NEWS_AFTER_MS = 1000;
constexpr int REFUTATIONS_FROM_ITERATION = 6;

constexpr int CHECK_DANGER = 65;  // a king that lost this much cover counts as having been checked
constexpr int COVER_LOST = 20;    // and one that lost this much is in danger enough to look on

// Clears what the last node at this ply left. The checks along the path are counted for the side that gave
// them; a king whose cover has collapsed, as the last evaluation at this ply saw it, counts as checked.
void open_ply() {
    const int ply = position.search_ply;
    PlyRecord& here = search_state.at(ply);
    here.threat_move = 0;
    here.extension = 0;
    here.mate_threat = here.bm_extended = false;
    here.check_count = search_state.at(ply - 1).check_count;  // zero before the root
    if (ply > 0 && (move_before().gives_check != 0 || king_cover_lost(position.side_to_move, CHECK_DANGER)))
        ++here.check_count[other_side(position.side_to_move)];
}

void count_node(const Node& node) {
    ++search_state.nodes;
    ++search_state.nodes_since_poll;
    search_state.sel_depth = std::max(search_state.sel_depth, node.ply);
}

// Not even a mate against us here would be as bad as beta.
bool mate_distance(Node& node) {
    const Score mated_here = node.ply - MATE_SCORE;
    return mated_here > node.beta && node.decide(mated_here);
}

void poll_when_due() {
    look_when_due();
    if (search_state.nodes_since_poll <= search_limits.unasked_nodes)
        return;
    if (is_node_limit_reached())
        search_control.abort_search = true;
    if (search_state.nodes_since_poll <= NODES_BETWEEN_POLLS || search_control.nodes_between_looks != 0)
        return;
    search_reports.poll_input();
    time_check();
    search_state.nodes_since_poll = 0;
}

// Takes every move of the path back when the search is to stop.
bool stopped_at_root() {
    if (!stop_wanted())
        return false;
    while (position.search_ply > 0)
        unmake_last_move();
    return true;
}

bool stop_requested(Node& node) {
    return stopped_at_root() && node.decide(0);
}

Score enter_quiescence(Score beta, Depth depth) {
    constexpr int PLIES_WITH_CHECKS = 2;
    search_state.qsearch_nodes = 0;
    const Score score = qsearch(beta, depth, position.search_ply + PLIES_WITH_CHECKS);
    if (search_state.qsearch_nodes <= SWOLLEN_QSEARCH)
        return stopped_at_root() ? 0 : score;
    search_reports.poll_input();  // nodes as slow as this one must not wait for the count
    stop_when_time_is_up();
    return stopped_at_root() ? 0 : score;
}

bool kings_touch(Node& node) {
    return distance[position.king_square(WHITE) - position.king_square(BLACK)] == 1 &&
           node.decide(MATE_SCORE + node.ply);
}

bool drawn_by_rule(Node& node) {
    return node.ply > 0 && is_search_draw() && node.decide(0);
}

void probe_table(Node& node) {
    const TTEntry* entry = tt_probe(node.record.key);
    node.in_table = entry != nullptr;
    if (node.in_table)
        node.entry = *entry;
}

bool table_cutoff(Node& node) {
    probe_table(node);
    if (!node.in_table)
        return false;
    const TTEntry& entry = node.entry;
    if (entry.lower_depth >= node.depth && entry.lower_generation == tt_generation) {
        const Score lower = tt_score_at(entry.lower_score, node.ply);
        if (lower >= node.beta)
            return node.decide(lower);
    }
    if (entry.upper_depth >= node.depth && entry.upper_generation == tt_generation) {
        const Score upper = tt_score_at(entry.upper_score, node.ply);
        if (upper < node.beta)
            return node.decide(upper);
    }
    node.context.mate_threat = node.here.mate_threat = (entry.flags & TT_MATE_THREAT) != 0;
    return false;
}

// The null move's entry is asked for before the evaluation, which takes as long as it takes to come.
void evaluate_node(Node& node) {
    tt_prefetch(key_after_move(node.record.key, nullptr));
    node.eval = evaluate() >> search_state.grain_shift;
    find_threats();
    keep_attack_facts(node.context);
}

// A position far from beta in which the side that is behind has little left, no passed pawn that runs, and
// nothing to win at once needs less depth.
void shrink_lopsided_depth(Node& node) {
    constexpr int RUNNING_PASSER = 63;
    const Score margin = 2 * (PAWN_VALUE >> search_state.grain_shift);
    const auto passed = [&node](Side side) { return node.outputs().ply_passed_score[side]; };
    const UndoRecord& record = node.record;
    if (record.material_them <= QUEEN_VALUE && passed(node.them()) <= RUNNING_PASSER &&
        record.threat_value_us[0] == 0 && node.eval > node.beta + margin)
        node.depth -= lopsided_reduction(node.eval, record.material_them);
    else if (record.material_us <= QUEEN_VALUE && passed(node.us()) <= RUNNING_PASSER &&
             record.threat_value_them[0] == 0 && node.eval < node.beta - margin)
        node.depth -= lopsided_reduction(-node.eval, record.material_us);
}

bool king_en_prise(Node& node) {
    return is_enemy_king_en_prise() && node.decide(MATE_SCORE + node.ply);
}

// Reading a table is slow: only near the root and where the material has just changed.
bool tablebase_cutoff(Node& node) {
    constexpr Depth TABLEBASE_DEPTH = 240;
    if (node.ply == 0 || node.depth < TABLEBASE_DEPTH ||
        node.record.men_us + node.record.men_them > tb_max_men ||
        (node.ply != 1 && move_before().captured == EMPTY))
        return false;
    Score score = 0;
    if (!probe_tablebase(score))
        return false;
    ++search_state.tb_hits;
    return node.decide(score);
}

// The generators flag checks, except those by a man that has just promoted.
void detect_check(Node& node) {
    const bool unknown = position.game_ply == 0 || move_before().promotion != EMPTY;
    node.context.in_check = unknown ? in_check(node.us()) : move_before().gives_check != 0;
}

bool at_ply_limit(Node& node) {
    return node.ply >= MAX_PLY - 1 && node.decide(node.eval);
}

// A quiet position this far above beta is not worth a search near the horizon, unless something of ours
// hangs: the largest danger is taken off first. A king that has just lost its cover is no quiet position.
bool static_null_move(Node& node) {
    if (node.depth > static_null_depth() || node.context.mate_threat || node.in_check() ||
        own_move_before().gives_check != 0 || node.before.extension != 0 ||
        search_state.root_lower >= FOUND_MATE_LIMIT || king_cover_lost(node.us(), COVER_LOST))
        return false;
    return node.eval - worst_own_danger(node) > node.beta && node.decide(node.eval);
}

// Passing is searched a ply deeper near the horizon where a threat may hide.
int null_reduction(const Node& node) {
    constexpr Depth NEAR_HORIZON = 240;
    constexpr int EXPOSED_KING = -64;
    const int plies = null_move_reduction();
    if (node.depth > NEAR_HORIZON)
        return plies;
    const bool careful = danger_of(node, node.us()) <= EXPOSED_KING ||
                         king_cover_lost(node.us(), COVER_LOST) || pawn_to_seventh(move_before()) ||
                         pawn_to_sixth(move_before()) || search_state.at(node.ply - 2).mate_threat;
    return careful ? std::max(plies - 1, 0) : plies;
}

// `answer` is what the opponent played when we passed; it is empty when the table or the static score
// answered.
void note_threat(Node& node, const Move& answer, Score value) {
    node.here.threat_move = answer.from != 0 ? pack_move(answer) : 0;
    if (!is_threat_renewed(node))
        return;
    if (value < node.fut_small)
        node.bm_flag = node.here.bm_extended = true;
    else
        node.here.threat_move = 0;
}

// If the opponent may move twice and we still reach beta, a real move will reach it too. If not, his answer
// shows what he threatens.
bool null_move(Node& node) {
    constexpr Score MATED_AT_ONCE = 2 - MATE_SCORE;
    if (node.ply == 0 || node.in_check())
        return false;
    const int reduction = null_reduction(node);
    const Depth depth = node.depth - ONE_PLY * reduction - ONE_PLY;
    if (reduction == 0 || known_to_be_mated(node, depth) || node.eval - worst_own_danger(node) < node.beta)
        return false;
    make_null_move();
    UndoRecord& passed = position.current();
    passed.move.from = 0;
    const Score value = -search(1 - node.beta, depth, false);
    if (stop_wanted())
        return node.decide(0);
    unmake_null_move();
    if (value >= node.beta)
        return node.decide(value);
    if (search_settings.bm_exts != 0)
        note_threat(node, passed.move, value);
    if (value <= MATED_AT_ONCE + node.ply)
        node.context.mate_threat = node.here.mate_threat = true;
    return false;
}

// A deep node without a move to start with finds one by a shallower search of itself.
bool deepen_internally(Node& node) {
    constexpr Depth MIN_DEPTH = 360, DEPTH_STEP = 120;
    constexpr Score SHORT_OF_BETA = 100;
    if (search_settings.iid == 0 || node.in_table || node.depth < MIN_DEPTH ||
        node.eval <= node.beta - (SHORT_OF_BETA >> search_state.grain_shift))
        return false;
    search(node.beta, node.depth - DEPTH_STEP, false);
    if (stop_wanted())
        return node.decide(0);
    probe_table(node);
    return false;
}

// Lists the moves. True when the side in check has none.
bool without_moves(Node& node) {
    if (node.ply == 0)
        generate_root_moves();
    else if (node.in_check())
        generate_evasions();
    else
        generate_moves();
    position.current().move.from = 0;  // generators try moves out; nothing has been played from here yet
    const int count = static_cast<int>(move_list.current().size());
    if (node.ply == 0) {
        search_state.root_moves_searched = 0;
        search_state.root_legal_moves = count;
    }
    if (!node.in_check())
        return false;
    node.context.evasions = count;
    return count == 0 && node.decide(node.ply - MATE_SCORE);
}

// What the rules about single moves ask of the node as a whole.
void judge_all_moves(Node& node) {
    constexpr Depth SHRINK_BELOW = 240;
    node.context.common = common_extension(node.context);
    node.shrinks = !node.in_check() && node.depth < SHRINK_BELOW && pruning_allowed();
    node.static_score =
        material_placement_balance() + node.outputs().ply_eval - node.outputs().ply_material_placement;
}

// Whether a child is known, deeply enough, to be bad for the opponent.
bool child_table_cutoff(Node& node) {
    constexpr Depth MIN_DEPTH = 240;
    if (node.depth < MIN_DEPTH || node.ply == 0)
        return false;
    tt_prefetch_children();
    for (const Move& move : move_list.current()) {
        const TTEntry* child = tt_probe(key_after_packed_move(node.record.key, pack_move(move)));
        if (child == nullptr ||
            child->upper_depth < move_extension(node.context, move, 0) + node.depth - ONE_PLY)
            continue;
        const Score upper = tt_score_at(child->upper_score, node.ply + 1);
        if (upper < 1 - node.beta)
            return node.decide(-upper);
    }
    return false;
}

// A quiet move must come near the root's score to be worth a search. Bases are the previous iteration's score
// and what this one has already proved, each less a margin, as the side to move sees them.
void set_futility_thresholds(Node& node) {
    const SearchState& s = search_state;
    const bool root_side = node.ply % 2 == 0;
    const Score proved = root_side ? s.root_lower : -s.root_upper;
    node.fut_small = std::max(root_side ? s.prev_minus_small : -s.prev_plus_small, proved - s.m1);
    node.fut_medium = std::max(root_side ? s.prev_minus_medium : -s.prev_plus_medium, proved - s.m2);
    node.fut_large = std::max(root_side ? s.prev_minus_large : -s.prev_plus_large, proved - s.m3);
}

void announce_root_move(const Node& node, const Move& move) {
    if (node.ply != 0)
        return;
    ++search_state.root_moves_searched;
    search_state.current_root_move = move;
    if (elapsed_since(search_state.start_time) > ROOT_NEWS_AFTER_MS)
        search_reports.root_move_begins();
}

Depth extend(Node& node, const Move& move) {
    constexpr Depth RENEWED_THREAT = 30;
    const Depth extra = move_extension(node.context, move, node.best) + (node.bm_flag ? RENEWED_THREAT : 0);
    node.here.extension = extra;
    return extra;
}

// Leaves a quiet move out that cannot come near the root's score, or takes a ply off `extra`. A pruned move
// stands with its estimate.
bool futile(Node& node, const Move& move, Depth& extra) {
    constexpr Depth PRUNE_BELOW = 180, PRUNE_PUSHES_BELOW = 120;
    if (!node.shrinks || move.gives_check != 0)
        return false;
    const Score estimate = (node.static_score + material_placement_gain(move)) >> 1;
    if (extra == 0 && estimate < node.fut_large)
        extra = -ONE_PLY;
    const bool near = extra <= 0 && extra + node.depth < PRUNE_BELOW && estimate < node.fut_medium;
    const bool nearest = extra + node.depth < PRUNE_PUSHES_BELOW && !pawn_to_seventh(move) &&
                         !pawn_to_sixth(move) && !node.context.mate_threat && !node.bm_flag &&
                         estimate < node.fut_small;
    if (!near && !nearest)
        return false;
    if (estimate > node.best) {
        node.best = estimate;
        node.best_move = move;
    }
    ++node.searched;
    return true;
}

Score search_child(Node& node, const Move& move, Depth extra) {
    constexpr int MOVES_IN_FULL = 3;
    constexpr Depth REDUCE_FROM = 180;
    const int reduction =
        node.searched >= MOVES_IN_FULL && node.depth >= REDUCE_FROM ? late_move_reduction(move) : 0;
    if (reduction == 0)
        return -search(1 - node.beta, node.depth + extra - ONE_PLY, true);
    const Score value = -search(1 - node.beta, node.depth - ONE_PLY * reduction - ONE_PLY, true);
    if (stop_wanted() || value < node.beta)
        return value;
    return -search(1 - node.beta, node.depth - ONE_PLY, false);
}

// True when the move was good enough to end the node.
bool record_result(Node& node, const Move& move, Score value) {
    if (value > node.ply - MATE_SCORE)
        ++node.searched;
    if (value > node.best) {
        node.best = value;
        node.best_move = move;
    }
    if (value < node.beta)
        return false;
    if (node.best_move.captured == EMPTY)
        update_history_and_killer(node.best_move, node.depth);
    if (node.best == MATE_SCORE - 1 - node.ply)
        node.here.mate_killer = node.best_move;
    return true;
}

void report_refutation(const Node& node, const Move& move) {
    if (node.ply == 0 && search_state.iteration >= REFUTATIONS_FROM_ITERATION &&
        elapsed_since(search_state.start_time) > ROOT_NEWS_AFTER_MS)
        search_reports.root_move_refuted(move);
}

// A move and the key of the position after it.
struct Pick {
    const Move* move;  // nullptr when all have been searched
    HashKey key = 0;
};

// The next move in order, whose child's entry is asked for now: it comes while the move before is searched.
Pick pick_ahead(const Node& node) {
    Pick pick{pick_move()};
    if (pick.move != nullptr) {
        pick.key = key_after_move(node.record.key, pick.move);
        tt_prefetch(pick.key);
    }
    return pick;
}

// True only when the search was stopped.
bool search_moves(Node& node) {
    Pick next = pick_ahead(node);
    while (const Move* move = next.move) {
        const HashKey key = next.key;
        next = pick_ahead(node);
        announce_root_move(node, *move);
        Depth extra = extend(node, *move);
        if (futile(node, *move, extra))
            continue;
        make_move(move, key);
        const Score value = search_child(node, *move, extra);
        if (stop_wanted())  // the node that saw it has already taken every move back
            return node.decide(0);
        unmake_move(move);
        if (record_result(node, *move, value))
            break;
        report_refutation(node, *move);
    }
    return false;
}

Score store_verdict(const Node& node) {
    if (node.searched == 0 && !node.in_check())
        return 0;  // stalemate
    const u8 flags = node.context.mate_threat ? TT_MATE_THREAT : 0;
    if (node.best < node.beta) {
        tt_store_upper(node.depth, node.best, flags);
        return node.best;
    }
    tt_store_lower(node.depth, pack_move(node.best_move), node.best, flags);
    if (node.ply == 0)
        search_state.root_best_move = node.best_move;
    return node.best;
}

}  // namespace

Score search(Score beta, Depth depth, bool null_allowed) {
    open_ply();
    if (depth < ONE_PLY)
        return enter_quiescence(beta, depth);
    Node node(beta, depth);
    count_node(node);
    if (mate_distance(node))
        return node.result;
    search_state.at(node.ply + 2).mate_killer.from = 0;
    poll_when_due();
    if (stop_requested(node) || kings_touch(node) || drawn_by_rule(node) || table_cutoff(node))
        return node.result;
    evaluate_node(node);
    shrink_lopsided_depth(node);
    if (king_en_prise(node) || tablebase_cutoff(node))
        return node.result;
    detect_check(node);
    set_futility_thresholds(node);
    if (at_ply_limit(node) || static_null_move(node) || (null_allowed && null_move(node)) ||
        deepen_internally(node) || without_moves(node))
        return node.result;
    judge_all_moves(node);
    if (child_table_cutoff(node))
        return node.result;
    order_moves(node.table_move());
    if (search_moves(node))  // true only when the search was stopped
        return node.result;
    return store_verdict(node);
}

}  // namespace quelmar
