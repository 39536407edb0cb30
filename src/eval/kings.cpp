// The kings and the back rank: shelter, danger, pawn storms, boxed rooks, development.
//
// Shelter, danger and storm count only while there is more than an ending's material; the playing style
// decides whether shelter counts at all and how much danger weighs.
//
// Danger is an index into a steep table. It starts from where the king stands and grows by one for each open
// square before the king, for each square of the zone that the enemy attacks, and again when nobody but the
// king defends that square; which kinds of men attack adds up to three. The table's value is then scaled by
// the enemy's men, so that a bare attacker frightens nobody.
#include "board/reach.h"
#include "board/square_tables.h"
#include "eval/eval_context.h"
#include "eval/evaluate.h"

#include <algorithm>

namespace quelmar {

namespace {

// Danger index of an undisturbed king by where it stands, White's view.
// clang-format off
constexpr SquareBytes KING_ZONE_BASE = on_board<SquareBytes>({{
    //a  b  c  d  e  f  g  h
    { 4, 4, 4, 4, 4, 4, 4, 4 },  // 8
    { 4, 4, 4, 4, 4, 4, 4, 4 },
    { 4, 4, 4, 4, 4, 4, 4, 4 },
    { 4, 4, 4, 4, 4, 4, 4, 4 },
    { 4, 4, 4, 4, 4, 4, 4, 4 },
    { 3, 3, 3, 3, 3, 3, 3, 3 },
    { 2, 1, 1, 1, 1, 1, 1, 2 },
    { 1, 0, 0, 0, 0, 0, 0, 1 },
}});

// Danger index by the kinds that attack the zone: pawn 1, minor 2, rook 4, queen 8, king 16.
constexpr Table<u8, 32> ATTACKER_KINDS = {
    0, 0, 0, 0, 0, 1, 1, 2,  1, 2, 2, 2, 3, 3, 3, 3,
    0, 0, 0, 0, 0, 1, 2, 2,  3, 3, 3, 3, 3, 3, 3, 3,
};

// By danger index, in units that 4096ths of the enemy's non-pawn material turn into points; the last entry
// stands for all higher indices.
constexpr Table<u16, 30> DANGER = {
      0,   1,   2,   5,  10,  17,  25,  34,  55,  68,
     84, 104, 130, 170, 210, 250, 290, 330, 370, 410,
    450, 490, 520, 550, 590, 630, 670, 710, 750, 760,
};
constexpr int DANGER_SHIFT = 12;

// By weighted count of men at home; the last entry stands for all higher counts.
constexpr Table<i16, 32> DEVELOPMENT = {
       0,    0,   -1,   -2,   -3,   -5,   -8,  -12,
     -16,  -20,  -26,  -32,  -38,  -48,  -58,  -68,
     -78,  -88,  -98, -108, -118, -128, -138, -148,
    -158, -168, -178, -188, -198, -208, -218, -228,
};
// clang-format on

bool style_has_shelter() {
    return playing_style != Style::AGGRESSIVE && playing_style != Style::SUICIDAL;
}

template <Side Us> bool own_man_on(Square square) {
    return is_man_of(position.at(square), Us);
}

// A pawn or bishop beside the king; a bishop with a pawn before it is as good as a pawn.
template <Side Us> int neighbour_cover(SquareSet beside, SquareSet pawns, SquareSet bishops) {
    const SquareSet good = pawns | (bishops & forward<Facing<Us>::THEM>(pawns));
    return 5 * size_of(beside & good) + 3 * size_of(beside & bishops & ~good);
}

template <Side Us> int front_cover(SquareSet front, SquareSet pawns, SquareSet bishops) {
    const SquareSet far = forward<Us>(front);
    const bool diagonal_pawn = ((to_west(front) | to_east(front)) & pawns) != 0,
               far_pawn = (far & pawns) != 0;
    int cover = 0;
    if ((front & pawns) != 0)
        cover += diagonal_pawn ? 14 : 10;
    else if ((front & bishops) != 0)
        cover += diagonal_pawn && far_pawn ? 7 : 4;
    if (far_pawn)
        cover += ((to_west(far) | to_east(far)) & pawns) != 0 ? 4 : 3;
    return cover;
}

// Pawns and bishops that cover the king; the state of the centre says how much that matters.
template <Side Us> int shelter(const EvalContext& context) {
    constexpr int DIAGONAL_PAWN = 7;
    const SquareSet pawns = position.sets.of_man(Facing<Us>::OUR_PAWN);
    const SquareSet bishops = position.sets.of_man(Facing<Us>::OUR_BISHOP);
    const SquareSet king = set_of(context.of(Us).king), beside = to_west(king) | to_east(king);
    const int cover = neighbour_cover<Us>(beside, pawns, bishops) +
                      front_cover<Us>(forward<Us>(king), pawns, bishops) +
                      DIAGONAL_PAWN * size_of(forward<Us>(beside) & pawns);
    switch (context.pawns.structure_type) {
    case CENTRE_OPEN:
        return 2 * cover;
    case CENTRE_CLOSED:
        return cover;
    default:
        return cover + cover / 2;
    }
}

// Which kinds attack a square of the zone, as the index of ATTACKER_KINDS.
int kinds_on(SquareSet zone, const AttackMap& attacks) {
    int kinds = 0, bit = 1;
    for (const SquareSet kind :
         {attacks.pawn(), attacks.minor(), attacks.rook(), attacks.queen(), attacks.king()}) {
        kinds += (zone & kind) != 0 ? bit : 0;
        bit <<= 1;
    }
    return kinds;
}

// The zone are the squares around the king, and the three before those in front of it, of which only the
// kinds of attackers matter.
template <Side Us> int king_danger(const EvalContext& context) {
    const Square king = context.of(Us).king;
    const SquareSet place = set_of(king), near = king_reach_of(index_of(king));
    const SquareSet front = forward<Us>(place | to_west(place) | to_east(place));
    const SquareSet far = forward<Us>(front);
    const AttackMap& enemy = attacks_of(Facing<Us>::THEM);
    const SquareSet attacked = near & enemy.attacked;
    const int count = KING_ZONE_BASE[Facing<Us>::mirror(king)] + size_of(front & ~position.sets.of_side(Us)) +
                      size_of(attacked) + size_of(attacked & attacks_of(Us).king_alone());
    const int index = count + ATTACKER_KINDS[kinds_on(near | far, enemy)];
    const int danger = DANGER[std::min(index, DANGER.size() - 1)];
    return -(danger * context.of(Facing<Us>::THEM).non_pawn) >> DANGER_SHIFT;  // rounds down
}

bool queen_side_king(Square king) {
    return file_of(king) <= FILE_D;
}
bool king_side_king(Square king) {
    return file_of(king) >= FILE_F;
}

// Advanced pawns before an enemy king that has gone to the other wing than ours.
template <Side Us> int pawn_storm(const EvalContext& context) {
    const Square own = context.of(Us).king, enemy = context.of(Facing<Us>::THEM).king;
    if (queen_side_king(own) && king_side_king(enemy))
        return context.pawns.of(Us).storm_king_side;
    if (king_side_king(own) && queen_side_king(enemy))
        return context.pawns.of(Us).storm_queen_side;
    return 0;
}

// `place` names a square as White sees it from the first rank.
template <Side Us> Piece man_on(Square place) {
    return position.at(Facing<Us>::mirror(place));
}

template <Side Us> bool has_castling_right(const EvalContext& context, int white_right) {
    const int right = Us == WHITE ? white_right : white_right << 2;
    return (context.here.castle_lost & right) == 0;
}

// A king that walked instead of castling and shut its own rook in.
template <Side Us> int boxed_rook(const EvalContext& context) {
    using Face = Facing<Us>;
    constexpr int BOXED = -64, BOXED_FOR_GOOD = -94;
    constexpr Square H2 = square_at(FILE_H, RANK_2), G2 = square_at(FILE_G, RANK_2),
                     H3 = square_at(FILE_H, RANK_3), A2 = square_at(FILE_A, RANK_2);
    const Square king = Face::mirror(context.of(Us).king);
    const auto rook_on = [](Square place) { return man_on<Us>(place) == Face::OUR_ROOK; };
    const auto pawn_on_file = [&](int file) {
        return (context.pawns.of(Us).pawn_files & file_mask(file)) != 0;
    };
    if ((king == F1 || king == G1) && (rook_on(H1) || rook_on(H2)) &&
        !has_castling_right<Us>(context, CASTLE_WHITE_SHORT) && pawn_on_file(FILE_H)) {
        const bool for_good = man_on<Us>(H2) == Face::OUR_PAWN && man_on<Us>(G2) == EMPTY &&
                              man_on<Us>(H3) == Face::THEIR_BISHOP;
        return for_good ? BOXED_FOR_GOOD : BOXED;
    }
    if ((king == C1 || king == B1) && (rook_on(A1) || rook_on(A2) || rook_on(B1)) &&
        !has_castling_right<Us>(context, CASTLE_WHITE_LONG) && pawn_on_file(FILE_A))
        return BOXED;
    return 0;
}

// How much a bishop on the first rank is out of play. In a corner the long diagonal counts, elsewhere
// whether both ways out are shut.
template <Side Us> int bishop_at_home(Square square) {
    constexpr int PLAIN = 3, SHUT_IN = 7, CORNER_PAWN = 9, CORNER_PIECE = 7, CORNER_SECOND_PAWN = 2;
    constexpr int FORWARD = Facing<Us>::FORWARD;
    const int file = file_of(square);
    if (file != FILE_A && file != FILE_H)
        return own_man_on<Us>(square + FORWARD - 1) && own_man_on<Us>(square + FORWARD + 1) ? SHUT_IN : PLAIN;
    const int inward = file == FILE_A ? FORWARD + 1 : FORWARD - 1;
    const int first = own_pawn_on<Us>(square + inward)  ? CORNER_PAWN
                      : own_man_on<Us>(square + inward) ? CORNER_PIECE
                                                        : PLAIN;
    return own_pawn_on<Us>(square + 2 * inward) ? first + CORNER_SECOND_PAWN : first;
}

// Men that have not left the first rank, and rooks there without an open file.
template <Side Us> int development(const EvalContext& context) {
    constexpr int BLOCKED_ROOK = 1, KNIGHT_AT_HOME = 5;
    constexpr SquareSet HOME = first_rank<Us>();
    const SquareSet pawn_files = SquareSet{context.pawns.of(Us).pawn_files} << (Us == WHITE ? 0 : 56);
    int at_home = KNIGHT_AT_HOME * size_of(position.sets.of_man(Facing<Us>::OUR_KNIGHT) & HOME) +
                  BLOCKED_ROOK * size_of(position.sets.of_man(Facing<Us>::OUR_ROOK) & pawn_files);
    for (const int index : indices_of(position.sets.of_man(Facing<Us>::OUR_BISHOP) & HOME))
        at_home += bishop_at_home<Us>(square_of(index));
    return DEVELOPMENT[std::min(at_home, DEVELOPMENT.size() - 1)];
}

template <Side Us> KingScore score_king(const EvalContext& context) {
    KingScore score;
    if (context.total_material() > ENDING_MATERIAL) {
        if (style_has_shelter())
            score.shelter = shelter<Us>(context);
        score.danger = king_danger<Us>(context);
        score.storm = pawn_storm<Us>(context);
    }
    score.boxed_rook = boxed_rook<Us>(context);
    score.development = development<Us>(context);
    return score;
}

}  // namespace

int king_safety_weight() {
    switch (playing_style) {
    case Style::NORMAL:
        return 1;
    case Style::SUICIDAL:
        return 3;
    default:
        return 2;
    }
}

Table<KingScore, 2> score_kings(const EvalContext& context) {
    return {score_king<WHITE>(context), score_king<BLACK>(context)};
}

}  // namespace quelmar
