// What the stages of one evaluation share. Private to eval/; lives for one call, nothing in it survives.
//
// Every rule is written once, for a side, and answers in points for that side. Only the driver knows the
// perspective: it adds White's points minus Black's to the two totals.
#pragma once

#include "board/position.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "eval/pawns.h"

namespace quelmar {

// Middlegame and endgame share of a term, 128ths of a pawn.
struct Points {
    int mg = 0, eg = 0;

    static constexpr Points both(int value) { return {value, value}; }
    constexpr Points& operator+=(Points other) {
        mg += other.mg;
        eg += other.eg;
        return *this;
    }
    friend constexpr Points operator+(Points a, Points b) { return {a.mg + b.mg, a.eg + b.eg}; }
    friend constexpr Points operator-(Points a, Points b) { return {a.mg - b.mg, a.eg - b.eg}; }
    friend constexpr Points operator*(int factor, Points a) { return {factor * a.mg, factor * a.eg}; }
    bool operator==(const Points&) const = default;
};

// Bits of SideTerms::bishop_colours.
inline constexpr int LIGHT_BISHOP = 1, DARK_BISHOP = 2;

struct SideTerms {
    Square king = 0;
    int material = 0, pawns = 0, non_pawn = 0;  // non_pawn: material without pawns
    int placement = 0;
    // Left by the walk over the men:
    int knights = 0, bishops = 0, rooks = 0, queens = 0;
    int bishop_colours = 0;
    int mobility = 0;     // before its weight
    int bad_bishops = 0;  // penalty, positive
    int seventh = 0;      // 2 per rook and 1 per queen on the last two ranks
    int rook_aim = 0;     // rooks on files without own pawns next to the enemy king, mg points
    // Left by the recogniser of endings:
    int scale_shift = 0;  // the score in favour of this side is shifted right by this
    bool cannot_win = false;
};

struct EvalContext {
    const UndoRecord& here;
    const Side us;   // side to move
    const int sign;  // +1 White to move, -1 Black
    const PawnEntry& pawns;
    Table<SideTerms, 2> terms;
    bool opposite_bishops = false;  // one bishop each, of different square colours

    SideTerms& of(Side side) { return terms[side]; }
    const SideTerms& of(Side side) const { return terms[side]; }
    int total_material() const { return terms[WHITE].material + terms[BLACK].material; }
    int total_non_pawn() const { return terms[WHITE].non_pawn + terms[BLACK].non_pawn; }
};

// Up to this much on the board, pawns included, endings are looked for and kings are safe. Less than what
// the search calls endgame material.
inline constexpr int ENDING_MATERIAL = 3328;
// From this much non-pawn material on the middlegame total alone counts, from the former down the endgame's.
inline constexpr int MIDDLEGAME_MATERIAL = 4608;

// Clears both attack maps and walks all men: maps, counts, mobility and what else a man sees on its way.
// `Reach` says how sliders look along their lines: PlainReach, or ModernReach in the copy for newer
// processors.
template <class Reach> void walk_men(EvalContext& context);

struct PawnScore {
    int structure = 0;     // bonus less penalties
    int passed = 0;        // already reduced by a quarter
    int passed_kings = 0;  // kings near passed pawns, endgame only
};
// Scores the pawn entry against the men on the board. Needs the walk.
Table<PawnScore, 2> score_pawns(const EvalContext& context);

struct KingScore {
    int shelter = 0;      // middlegame only
    int danger = 0;       // zero or negative, before its weight
    int storm = 0;        // pawn storm against a king on the other wing
    int boxed_rook = 0;   // zero or negative
    int development = 0;  // zero or negative, before its weight
};
// Needs the walk.
Table<KingScore, 2> score_kings(const EvalContext& context);

// Control of the centre, middlegame only. Needs the walk.
Table<int, 2> score_centre();

// Multiplies the balance of king danger; depends on playing_style.
int king_safety_weight();

// A pawn of `Us` on the square would not be lost to the men that bear on it.
template <Side Us> bool safe_for_pawn(Square square) {
    return !contains(attacks_of(Facing<Us>::THEM).attacked, square) ||
           exchange_loss(Facing<Us>::OUR_PAWN, attack_pair_on<Facing<Us>::THEM>(square)) == 0;
}

}  // namespace quelmar
