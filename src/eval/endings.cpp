// Recognises endings by material.
//
// First come the endings with a score of their own. No position fits two of them, for each names the whole
// material of both sides or a lone king. What is left may be drawish: then a side gets a scale shift, by
// which scores in its favour are divided at the end, or is said not to win at all. Several of these rules can
// speak about one side, and a later one overrules an earlier one, so their order is part of the result.
#include "eval/endings.h"

#include "board/square_tables.h"

namespace quelmar {

namespace {

constexpr int ROOK_AND_PAWN = ROOK_VALUE + PAWN_VALUE, ROOK_AND_MINOR = ROOK_VALUE + MINOR_VALUE,
              BISHOP_AND_PAWN = MINOR_VALUE + PAWN_VALUE, TWO_MINORS = 2 * MINOR_VALUE;
constexpr int FEW_PAWNS = 3 * PAWN_VALUE;

bool material_is(const EvalContext& context, Side strong, int strong_material, int weak_material) {
    return context.of(strong).material == strong_material &&
           context.of(other_side(strong)).material == weak_material;
}

// Endings in which `strong` has a lone king or a single pawn to beat.
bool lone_king_endings(const EvalContext& context, Side strong, int& score) {
    const SideTerms& own = context.of(strong);
    if (material_is(context, strong, ROOK_VALUE, PAWN_VALUE) && own.rooks == 1) {
        score = eval_krkp();
        return true;
    }
    if (material_is(context, strong, TWO_MINORS, 0) && own.knights == 1 && own.bishops == 1) {
        score = eval_kbnk();
        return true;
    }
    if (context.of(other_side(strong)).material == 0 && own.non_pawn >= ROOK_VALUE) {
        const int mating = eval_mate_lone_king(other_side(strong), own);
        score =
            (strong == context.us ? mating : -mating) + context.here.material_us - context.here.material_them;
        return true;
    }
    return false;
}

// The other endings with a score of their own.
bool rook_endings(const EvalContext& context, Side strong, int& score) {
    const SideTerms& own = context.of(strong);
    const SideTerms& other = context.of(other_side(strong));
    if (own.pawns + other.pawns == 0 && material_is(context, strong, ROOK_VALUE, MINOR_VALUE)) {
        score = eval_rook_vs_minor(strong);
        return true;
    }
    const bool rook_each = own.rooks == 1 && other.rooks == 1;
    if (rook_each && material_is(context, strong, ROOK_VALUE, ROOK_VALUE)) {
        score = 0;
        return true;
    }
    if (rook_each && material_is(context, strong, ROOK_AND_PAWN, ROOK_VALUE)) {
        score = eval_krpkr();
        return true;
    }
    if (material_is(context, strong, BISHOP_AND_PAWN, 0) && own.bishops > 0) {
        score = eval_kbpk();
        return true;
    }
    return false;
}

// Rook and minor against rook without pawns of its own.
bool rook_and_minor_against_rook(EvalContext& context, Side strong) {
    SideTerms& own = context.of(strong);
    if (own.pawns != 0 || own.material != ROOK_AND_MINOR ||
        context.of(other_side(strong)).non_pawn != ROOK_VALUE)
        return false;
    own.scale_shift = own.bishops == 0 ? 4 : 2;
    return true;
}

// Without pawns, less than a minor more does not win against a piece that can give itself up.
void small_edge_without_pawns(EvalContext& context, Side strong) {
    SideTerms& own = context.of(strong);
    const SideTerms& other = context.of(other_side(strong));
    if (own.scale_shift == 0 && own.pawns == 0 && own.material - other.material <= MINOR_VALUE &&
        other.bishops + other.rooks + other.queens > 0)
        own.scale_shift = 1;
}

// A single minor does not win against pawns, however well it stands.
void lone_minor(EvalContext& context, Side strong) {
    SideTerms& own = context.of(strong);
    if (own.non_pawn == MINOR_VALUE && own.pawns == 0 && context.of(other_side(strong)).non_pawn == 0)
        own.cannot_win = true;
}

// Two knights win only because the weak side has pawn moves left, and not when those pawns become dangerous.
void two_knights(EvalContext& context, Side strong) {
    SideTerms& own = context.of(strong);
    if (own.material != TWO_MINORS || own.knights != 2)
        return;
    if (context.of(other_side(strong)).material < FEW_PAWNS)
        own.scale_shift = 2;
    else
        own.cannot_win = true;
}

// A pawn of `Us` on the enemy king's square's rank or before it, on the king's file or beside.
template <Side Us> bool pawn_beyond(Square king) {
    for (Square square = king; position.at(square) != OFF_BOARD; square += Facing<Us>::FORWARD) {
        if (own_pawn_on<Us>(square) || own_pawn_on<Us>(square - 1) || own_pawn_on<Us>(square + 1))
            return true;
    }
    return false;
}

// Rook pawns on `edge` whose promotion square the bishop does not control, with the enemy king before them.
template <Side Us> void wrong_bishop(EvalContext& context, int edge, int next_to_edge) {
    SideTerms& own = context.of(Us);
    const Square corner = Facing<Us>::mirror(square_at(edge, RANK_8)),
                 before_corner = Facing<Us>::mirror(square_at(next_to_edge, RANK_7));
    const int wrong_colour = is_dark(corner) ? LIGHT_BISHOP : DARK_BISHOP;
    const Square king = context.of(Facing<Us>::THEM).king;
    if (own.non_pawn != MINOR_VALUE || own.bishop_colours != wrong_colour ||
        context.pawns.of(Us).pawn_files != file_mask(edge) ||
        (file_of(king) != edge && file_of(king) != next_to_edge))
        return;
    if (king != corner && king != before_corner && pawn_beyond<Us>(king))
        return;
    if ((context.pawns.of(Facing<Us>::THEM).pawn_files & file_mask(next_to_edge)) != 0)
        own.scale_shift = 2;
    else
        own.cannot_win = true;
}

void flag_drawish(EvalContext& context) {
    if (!rook_and_minor_against_rook(context, WHITE))
        rook_and_minor_against_rook(context, BLACK);
    small_edge_without_pawns(context, WHITE);
    small_edge_without_pawns(context, BLACK);
    if (context.of(WHITE).non_pawn == MINOR_VALUE && context.of(BLACK).non_pawn == MINOR_VALUE &&
        context.opposite_bishops)
        context.of(WHITE).scale_shift = context.of(BLACK).scale_shift = 1;
    for (const Side side : {WHITE, BLACK}) {
        lone_minor(context, side);
        two_knights(context, side);
    }
    wrong_bishop<WHITE>(context, FILE_A, FILE_B);
    wrong_bishop<WHITE>(context, FILE_H, FILE_G);
    wrong_bishop<BLACK>(context, FILE_A, FILE_B);
    wrong_bishop<BLACK>(context, FILE_H, FILE_G);
}

}  // namespace

bool recognise_endgame(EvalContext& context, int& score) {
    if (context.total_material() == PAWN_VALUE) {
        score = eval_kpk();
        return true;
    }
    for (const Side strong : {WHITE, BLACK}) {
        if (lone_king_endings(context, strong, score))
            return true;
    }
    for (const Side strong : {WHITE, BLACK}) {
        if (rook_endings(context, strong, score))
            return true;
    }
    flag_drawish(context);
    return false;
}

namespace {

// Rank of the first listed passed pawn from White's side, 1 to 8, and 0 without one.
int first_passed_rank(const SidePawns& pawns) {
    return pawns.passed[0] == 0 ? 0 : rank_of(pawns.passed[0]) + 1;
}

// The two files are not treated alike and neither are the two colours, whose ranks are both counted from
// White's side: without a passed pawn White cannot win, Black can.
bool rook_pawns_held(const EvalContext& context, Side strong, int edge, int next_to_edge) {
    const SidePawns& pawns = context.pawns.of(strong);
    const Square king = context.of(other_side(strong)).king;
    if (pawns.pawn_files != file_mask(edge) || (file_of(king) != edge && file_of(king) != next_to_edge))
        return false;
    if (king == square_at(next_to_edge, strong == WHITE ? RANK_7 : RANK_2))
        return true;
    const int king_rank = rank_of(king) + 1, passed_rank = first_passed_rank(pawns);
    const int ahead = strong == WHITE ? king_rank - passed_rank : passed_rank - king_rank;
    return edge == FILE_A ? ahead > 0 : ahead >= 0;
}

}  // namespace

void flag_rook_pawns(EvalContext& context) {
    for (const Side strong : {WHITE, BLACK}) {
        if (rook_pawns_held(context, strong, FILE_A, FILE_B) ||
            rook_pawns_held(context, strong, FILE_H, FILE_G))
            context.of(strong).cannot_win = true;
    }
}

}  // namespace quelmar
