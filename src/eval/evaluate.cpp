// The driver of the evaluation: what is looked at, in which order, and how it becomes one number.
//
// Two totals, one as it counts in the middlegame and one as it counts in the endgame, collect every term as
// White's points minus Black's, turned to the side to move. The men other than pawns decide how the two are
// blended. What the stages do is in their own files: the walk over the men in men.cpp, pawns in pawns.cpp and
// pawn_terms.cpp, kings in kings.cpp, endings in endings.cpp, known_endings.cpp and pawn_endings.cpp.
//
// The driver is compiled twice: as it runs in the search, and with a recorder for the developer's tool.
#include "eval/evaluate.h"

#include "board/position.h"
#include "board/processor.h"
#include "board/reach.h"
#include "board/square_tables.h"
#include "eval/endings.h"
#include "eval/eval_context.h"
#include "eval/eval_trace.h"
#include "eval/outputs.h"

#include <algorithm>

namespace quelmar {

Style playing_style = Style::ACTIVE;

namespace {

constexpr int MOBILITY_WEIGHT = 2, DEVELOPMENT_WEIGHT = 2;

// King danger counts this much less in the endgame.
constexpr int ENDGAME_DANGER_DIVISOR = 8;

// What the search uses: nothing is recorded.
struct NoRecord {
    static constexpr bool GOES_ON = false;

    void add(const char* /*term*/, Points /*white*/, Points /*black*/, Points /*balance*/) {}
    void finish(const EvalContext& /*context*/, Points /*totals*/, int /*blended*/, int /*score*/) {}
    void recognise(int /*score*/) {}
};

// The two totals, as White's points minus Black's; turned() gives them to the side to move.
template <class Record> class Totals {
public:
    Totals(Record& recorder, const int perspective) : record(recorder), sign(perspective) {}

    void add(const char* term, Points white, Points black) { add(term, white, black, white - black); }
    void add(const char* term, Points white, Points black, Points balance) {
        record.add(term, white, black, balance);
        sum += balance;
    }
    // For a term that counts alike in middlegame and endgame.
    void add_both(const char* term, int white, int black) {
        record.add(term, Points::both(white), Points::both(black), Points::both(white - black));
        both += white - black;
    }
    // For the few terms that are reckoned from the side to move.
    void add_for_mover(const char* term, Points points) {
        add(term, sign > 0 ? points : Points{}, sign > 0 ? Points{} : points, sign * points);
    }

    Points turned() const { return sign * (sum + Points::both(both)); }

private:
    Points sum;
    int both = 0;
    Record& record;
    const int sign;
};

// --- the terms that need little more than counts ---

template <Side Us> int endgame_king_gain(const EvalContext& context) {
    const Square king = context.of(Us).king;
    return king_endgame_square[king] - placement_of(Facing<Us>::OUR_KING, king);
}

// Files from the first to the last pawn; knights are slow when pawns stand on both wings.
int pawn_span(const PawnEntry& pawns) {
    const SidePawns& white = pawns.of(WHITE);
    const SidePawns& black = pawns.of(BLACK);
    const int highest = std::max<int>(white.highest_file, black.highest_file);
    if (white.pawn_files == 0)
        return highest - black.lowest_file;
    if (black.pawn_files == 0)
        return highest - white.lowest_file;
    return highest - std::max<int>(white.lowest_file, black.lowest_file);
}

// For the side to move, endgame only. Twice as much for a side that has nothing but knights.
int knights_and_span(const EvalContext& context) {
    constexpr Table<u8, 8> PER_KNIGHT = {0, 0, 0, 0, 5, 10, 15, 20};
    const SideTerms& own = context.of(context.us);
    const SideTerms& enemy = context.of(other_side(context.us));
    if (own.queens + enemy.queens > 0 || own.pawns + enemy.pawns == 0 ||
        context.total_non_pawn() >= MIDDLEGAME_MATERIAL)
        return 0;
    const int value = (enemy.knights - own.knights) * PER_KNIGHT[pawn_span(context.pawns)];
    const SideTerms& slow = value < 0 ? own : enemy;
    return slow.rooks + slow.bishops == 0 ? 2 * value : value;
}

template <Side Us> int bishop_pair(const EvalContext& context) {
    constexpr Table<u8, CENTRE_TYPES> BY_CENTRE = {64, 50, 0, 15, 40, 30};
    constexpr int NO_ENEMY_MINOR = 20;
    if (context.of(Us).bishop_colours != (LIGHT_BISHOP | DARK_BISHOP))
        return 0;
    const SideTerms& enemy = context.of(Facing<Us>::THEM);
    return BY_CENTRE[context.pawns.structure_type] +
           (enemy.knights + enemy.bishops == 0 ? NO_ENEMY_MINOR : 0);
}

// Rooks and queens get in each other's way; the first rook is free.
template <Side Us> int major_pieces(const EvalContext& context) {
    const SideTerms& own = context.of(Us);
    return own.rooks == 0 ? 0 : 16 - (own.queens + 2 * own.rooks) * 8;
}

// Rooks gain and knights lose with every pawn less; middlegame only.
template <Side Us> int pawn_count(const EvalContext& context) {
    const SideTerms& own = context.of(Us);
    return 16 * own.rooks * (5 - own.pawns) + (8 * own.pawns - 40) * own.knights;
}

// Rooks and queens on the last two ranks; a queen alone does not count yet.
template <Side Us> Points seventh_rank(const EvalContext& context) {
    const int count = context.of(Us).seventh;
    if (count <= 1)
        return {};
    const Points king_locked_in = Facing<Us>::rank(context.of(Facing<Us>::THEM).king) == RANK_8
                                      ? Points{6 * count, 15 * count}
                                      : Points{};
    return Points{8 * count + (count > 2 ? count * count : 0), 4 * count} + king_locked_in;
}

// A bishop on the edge of the seventh rank that a pawn has shut in, unless it gets something for that pawn.
template <Side Us> int trapped_bishops(const EvalContext& context) {
    constexpr int TRAPPED = -150;
    constexpr Square WEST = Facing<Us>::mirror(square_at(FILE_A, RANK_7)),
                     WEST_PAWN = Facing<Us>::mirror(square_at(FILE_B, RANK_6));
    constexpr Square EAST = Facing<Us>::mirror(square_at(FILE_H, RANK_7)),
                     EAST_PAWN = Facing<Us>::mirror(square_at(FILE_G, RANK_6));
    if (context.of(Us).bishops == 0)
        return 0;
    const auto trapped = [](Square bishop, Square pawn) {
        return position.at(bishop) == Facing<Us>::OUR_BISHOP && enemy_pawn_on<Us>(pawn) &&
               static_exchange(bishop, pawn) < 1;
    };
    return (trapped(WEST, WEST_PAWN) ? TRAPPED : 0) + (trapped(EAST, EAST_PAWN) ? TRAPPED : 0);
}

// With bishops of opposite colours the side that attacks a shakier king gains; for the side to move.
int opposite_bishop_attack(const EvalContext& context, const Table<KingScore, 2>& kings) {
    constexpr int MARGIN = 40, ATTACK = 10;
    if (!context.opposite_bishops || context.total_material() <= ENDING_MATERIAL)
        return 0;
    const int own = kings[context.us].danger;
    const int enemy = kings[other_side(context.us)].danger;
    return enemy + MARGIN < own ? ATTACK : own + MARGIN < enemy ? -ATTACK : 0;
}

// --- the stages, in their order ---

template <Side Us> void open_side(EvalContext& context) {
    const UndoRecord& here = context.here;
    SideTerms& side = context.of(Us);
    const bool to_move = context.us == Us;
    side.king = position.king_square(Us);
    side.material = to_move ? here.material_us : here.material_them;
    side.pawns = to_move ? here.pawns_us : here.pawns_them;
    side.placement = to_move ? here.pst_us : here.pst_them;
    side.non_pawn = side.material - PAWN_VALUE * side.pawns;
}

template <class Record>
void start_totals(const EvalContext& context, Totals<Record>& totals, PlyOutputs& out) {
    const SideTerms& white = context.of(WHITE);
    const SideTerms& black = context.of(BLACK);
    totals.add_both("material", white.material, black.material);
    totals.add_both("placement", white.placement, black.placement);
    out.ply_material_placement = totals.turned().mg;
    out.ply_king_danger = {};
    out.ply_passed_score = {};
    totals.add("endgame king", {0, endgame_king_gain<WHITE>(context)},
               {0, endgame_king_gain<BLACK>(context)});
}

void compare_bishops(EvalContext& context) {
    context.opposite_bishops = context.of(WHITE).bishops == 1 && context.of(BLACK).bishops == 1 &&
                               context.of(WHITE).bishop_colours != context.of(BLACK).bishop_colours;
}

template <class Record> void score_pieces(const EvalContext& context, Totals<Record>& totals) {
    const SideTerms& white = context.of(WHITE);
    const SideTerms& black = context.of(BLACK);
    totals.add("rooks at king", {white.rook_aim, 0}, {black.rook_aim, 0});
    totals.add_for_mover("knights, span", {0, knights_and_span(context)});
    totals.add_both("bishop pair", bishop_pair<WHITE>(context), bishop_pair<BLACK>(context));
    totals.add_both("major pieces", major_pieces<WHITE>(context), major_pieces<BLACK>(context));
    totals.add("pawn count", {pawn_count<WHITE>(context), 0}, {pawn_count<BLACK>(context), 0});
    totals.add("seventh rank", seventh_rank<WHITE>(context), seventh_rank<BLACK>(context));
    totals.add_both("trapped bishops", trapped_bishops<WHITE>(context), trapped_bishops<BLACK>(context));
    totals.add_both("mobility", MOBILITY_WEIGHT * white.mobility, MOBILITY_WEIGHT * black.mobility);
    totals.add_both("bad bishops", -white.bad_bishops, -black.bad_bishops);
    const Table<int, 2> centre = score_centre();
    totals.add("centre", {centre[WHITE], 0}, {centre[BLACK], 0});
}

template <class Record> void add_kings(const EvalContext& context, Totals<Record>& totals, PlyOutputs& out) {
    const Table<KingScore, 2> kings = score_kings(context);
    const KingScore& white = kings[WHITE];
    const KingScore& black = kings[BLACK];
    out.ply_king_danger = {white.danger, black.danger};
    totals.add("shelter", {white.shelter, 0}, {black.shelter, 0});
    const int weight = king_safety_weight();
    const int danger = (white.danger - black.danger) * weight;  // the quotient of the difference is meant
    totals.add("king danger", {white.danger * weight, white.danger * weight / ENDGAME_DANGER_DIVISOR},
               {black.danger * weight, black.danger * weight / ENDGAME_DANGER_DIVISOR},
               {danger, danger / ENDGAME_DANGER_DIVISOR});
    totals.add_for_mover("opposite bishops", {opposite_bishop_attack(context, kings), 0});
    totals.add("pawn storm", {white.storm, 0}, {black.storm, 0});
    totals.add_both("boxed rook", white.boxed_rook, black.boxed_rook);
    totals.add_both("development", DEVELOPMENT_WEIGHT * white.development,
                    DEVELOPMENT_WEIGHT * black.development);
}

template <class Record> void add_pawns(EvalContext& context, Totals<Record>& totals, PlyOutputs& out) {
    const Table<PawnScore, 2> pawns = score_pawns(context);
    const PawnScore& white = pawns[WHITE];
    const PawnScore& black = pawns[BLACK];
    out.ply_passed_score = {white.passed, black.passed};
    totals.add_both("pawn structure", white.structure, black.structure);
    totals.add("passed pawns", {white.passed / 2, white.passed}, {black.passed / 2, black.passed});
    totals.add("passed pawns' kings", {0, white.passed_kings}, {0, black.passed_kings});
    if (context.total_non_pawn() == 0) {
        flag_rook_pawns(context);
        const Table<int, 2> races = eval_pawn_ending(context);
        totals.add("pawn ending", {0, races[WHITE]}, {0, races[BLACK]});
    }
}

// --- from two totals to one score ---

// A pawn more is worth little when the bishops cannot meet.
void damp_opposite_bishops(const EvalContext& context, Points& totals) {
    if (context.opposite_bishops && context.of(WHITE).non_pawn > MINOR_VALUE &&
        context.of(BLACK).non_pawn > MINOR_VALUE)
        totals.eg -= totals.eg / 4;
}

// Each share is rounded on its own.
int blend(const EvalContext& context, Points totals) {
    constexpr int RANGE = MIDDLEGAME_MATERIAL - ENDING_MATERIAL;
    const int men = context.total_non_pawn();
    if (men >= MIDDLEGAME_MATERIAL)
        return totals.mg;
    if (men <= ENDING_MATERIAL)
        return totals.eg;
    return (men - ENDING_MATERIAL) * totals.mg / RANGE + (MIDDLEGAME_MATERIAL - men) * totals.eg / RANGE;
}

// Only the favoured side's drawish flags matter. Shifts round toward zero.
int scale(const EvalContext& context, int score) {
    const Side favoured = score > 0 ? context.us : other_side(context.us);
    const SideTerms& side = context.of(favoured);
    if (side.cannot_win)
        return 0;
    return score > 0 ? score >> side.scale_shift : -(-score >> side.scale_shift);
}

template <class Reach, class Record> int evaluate_with(Record& record) {
    const Side us = position.side_to_move;
    EvalContext context{position.current(), us, us == WHITE ? 1 : -1, pawn_entry(), {}};
    PlyOutputs& out = outputs_at(position.search_ply);
    Totals<Record> totals(record, context.sign);
    open_side<WHITE>(context);
    open_side<BLACK>(context);
    start_totals(context, totals, out);
    walk_men<Reach>(context);
    compare_bishops(context);
    if (context.total_material() <= ENDING_MATERIAL && recognise_endgame(context, out.ply_eval)) {
        record.recognise(out.ply_eval);
        if constexpr (!Record::GOES_ON)
            return out.ply_eval;
    }
    score_pieces(context, totals);
    add_kings(context, totals, out);
    add_pawns(context, totals, out);
    Points sum = totals.turned();
    damp_opposite_bishops(context, sum);
    const int blended = blend(context, sum);
    out.ply_eval = scale(context, blended);
    record.finish(context, sum, blended, out.ply_eval);
    return out.ply_eval;
}

struct TraceRecord {
    static constexpr bool GOES_ON = true;  // the terms are of interest in a known ending too

    EvalTrace trace;

    void add(const char* term, Points white, Points black, Points balance) {
        trace.rows.push_back({term, white, black, balance});
    }
    void finish(const EvalContext& context, Points totals, int blended, int score) {
        trace.mg = totals.mg;
        trace.eg = totals.eg;
        trace.blended = blended;
        if (!trace.recognised)
            trace.score = score;
        trace.scale_shift = {context.of(WHITE).scale_shift, context.of(BLACK).scale_shift};
        trace.cannot_win = {context.of(WHITE).cannot_win, context.of(BLACK).cannot_win};
    }
    void recognise(int score) {
        trace.recognised = true;
        trace.score = score;
    }
};

}  // namespace

static int evaluate_plainly() {
    NoRecord record;
    return evaluate_with<PlainReach>(record);
}

QUELMAR_MODERN_COPY static int evaluate_on_modern_processor() {
    NoRecord record;
    return evaluate_with<ModernReach>(record);
}

int evaluate() {
    return modern_processor ? evaluate_on_modern_processor() : evaluate_plainly();
}

EvalTrace trace_evaluation() {
    TraceRecord record;
    evaluate_with<PlainReach>(record);
    evaluate();  // leaves what the search would find, in a known ending too
    return record.trace;
}

}  // namespace quelmar
