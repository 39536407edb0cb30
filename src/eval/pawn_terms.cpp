// Scores what the pawn table lists against the men on the board: what stands before a weak pawn, and what
// helps or stops a passed one.
//
// A weak pawn costs more when an enemy minor sits safely before it and less when it could step forward, which
// the exchange table tells from the attack bytes of the square. A passed pawn starts from a base value by
// rank; nearly everything else it earns or loses is a share of that base, so that a far pawn weighs more
// throughout. A quarter of the sum comes off at the end. All divisions round toward zero, and their order is
// part of the result.
#include "board/square_tables.h"
#include "eval/eval_context.h"

#include <algorithm>
#include <cstdlib>

namespace quelmar {

namespace {

using FileValues = Table<u8, 8>;

// Penalties by file, and what a blocking enemy piece adds to them.
constexpr FileValues ISOLATED = {4, 8, 14, 20, 20, 14, 8, 4};
constexpr FileValues BACKWARD = {10, 20, 30, 40, 40, 30, 20, 10};
constexpr FileValues KNIGHT_BLOCKADE = {0, 4, 7, 10, 10, 7, 4, 0};
constexpr FileValues BISHOP_BLOCKADE = {0, 2, 4, 7, 7, 4, 2, 0};

constexpr int CAN_ADVANCE = 3;     // off an isolated pawn that is not held
constexpr int HELD_FROM_AFAR = 5;  // a backward pawn that is stopped only two squares on
constexpr int ON_HALF_OPEN_FILE = 6, PER_ROOK_ON_FILE = 6, PER_QUEEN_ON_FILE = 3;

constexpr Table<u8, 8> PASSED_BASE = {0, 12, 12, 24, 48, 84, 128, 0};       // by own rank
constexpr int ROOK_BEHIND = 4, ENEMY_ROOK_BEHIND = 6, ENEMY_KING_NEAR = 6;  // each besides half the base

// Added to the base of a passed pawn that can step on: without and with safety, the latter when its side is
// to move or not.
struct FreePath {
    int unsafe, safe_to_move, safe_waiting;
};
constexpr FreePath FREE_ON_SEVENTH = {20, 220, 120}, FREE_ON_SIXTH = {10, 90, 70};

// King near a passed pawn, eg: rows by how many ranks the king is ahead of the pawn, +4 first, columns by
// file difference -3..3.
constexpr int PROXIMITY_AHEAD = 4, PROXIMITY_BEHIND = -3, PROXIMITY_FILES = 3;
constexpr Table<Table<u8, 7>, 8> PROXIMITY = {{
    {2, 7, 10, 10, 10, 7, 2},
    {7, 14, 22, 22, 22, 14, 7},
    {10, 22, 33, 35, 33, 22, 10},
    {10, 25, 40, 40, 40, 25, 10},
    {8, 20, 30, 0, 30, 20, 8},
    {5, 13, 22, 25, 22, 13, 5},
    {0, 5, 10, 15, 10, 5, 0},
    {0, 0, 5, 8, 5, 0, 0},
}};

constexpr Table<u8, 8> CUT_OFF = {0, 0, 10, 20, 30, 40, 50, 60};  // by files between king and pawn

// Whether any man but a pawn stands there.
template <Side Us> bool enemy_piece_on(Square square) {
    const Piece man = position.at(square);
    return is_man_of(man, Facing<Us>::THEM) && man != Facing<Us>::THEIR_PAWN;
}

template <Side Us> int blockade(Square square) {
    const Piece man = position.at(square);
    const int file = file_of(square);
    return man == Facing<Us>::THEIR_KNIGHT   ? KNIGHT_BLOCKADE[file]
           : man == Facing<Us>::THEIR_BISHOP ? BISHOP_BLOCKADE[file]
                                             : 0;
}

template <Side Us> int isolated_penalty(Square pawn) {
    if (Facing<Us>::rank(pawn) > RANK_5)
        return 0;
    const Square front = pawn + Facing<Us>::FORWARD;
    int penalty = ISOLATED[file_of(pawn)] + blockade<Us>(front);
    if (enemy_pawn_on<Us>(front))
        return penalty / 2;
    if (position.at(front) == EMPTY && safe_for_pawn<Us>(front)) {
        penalty -= CAN_ADVANCE;
        if (attacked_by_enemy_pawn<Us>(front))
            penalty /= 2;
    }
    return penalty;
}

// Enemy rooks and queens anywhere before the pawn, whatever stands between.
template <Side Us> int file_pressure(Square pawn) {
    int pressure = ON_HALF_OPEN_FILE;
    for (Square square = pawn + Facing<Us>::FORWARD; position.at(square) != OFF_BOARD;
         square += Facing<Us>::FORWARD) {
        if (position.at(square) == Facing<Us>::THEIR_ROOK)
            pressure += PER_ROOK_ON_FILE;
        else if (position.at(square) == Facing<Us>::THEIR_QUEEN)
            pressure += PER_QUEEN_ON_FILE;
    }
    return pressure;
}

template <Side Us> int backward_penalty(const EvalContext& context, Square pawn) {
    if (Facing<Us>::rank(pawn) > RANK_5)
        return 0;
    const SideTerms& enemy = context.of(Facing<Us>::THEM);
    int penalty = BACKWARD[file_of(pawn)];
    Square stop = pawn + Facing<Us>::FORWARD;
    if (!attacked_by_enemy_pawn<Us>(stop)) {
        stop += Facing<Us>::FORWARD;
        if (Facing<Us>::rank(pawn) >= RANK_3)
            penalty += HELD_FROM_AFAR;
    }
    if ((context.pawns.of(Facing<Us>::THEM).pawn_files & file_mask(file_of(pawn))) == 0 &&
        enemy.rooks + enemy.queens > 0)
        penalty += file_pressure<Us>(pawn);
    penalty += blockade<Us>(stop);
    if (enemy_pawn_on<Us>(stop) || (position.at(stop) == EMPTY && safe_for_pawn<Us>(stop)))
        penalty /= 2;
    return penalty;
}

template <Side Us> int structure_score(const EvalContext& context) {
    const SidePawns& pawns = context.pawns.of(Us);
    int penalty = 0;
    for (const int index : indices_of(pawns.isolated_set))
        penalty += isolated_penalty<Us>(square_of(index));
    for (const int index : indices_of(pawns.backward_set))
        penalty += backward_penalty<Us>(context, square_of(index));
    return pawns.structure - penalty;
}

template <Side Us>
int advance_bonus(const EvalContext& context, Square pawn, int base, const FreePath& path) {
    if (!safe_for_pawn<Us>(pawn + Facing<Us>::FORWARD))
        return base + path.unsafe;
    return base + (context.us == Us ? path.safe_to_move : path.safe_waiting);
}

// The base value and what the two squares before the pawn make of it.
template <Side Us> int path_value(const EvalContext& context, Square pawn, int base) {
    const Square front = pawn + Facing<Us>::FORWARD;
    const int rank = Facing<Us>::rank(pawn);
    int value = base;
    if (position.at(front) == EMPTY) {
        if (rank == RANK_7)
            value = advance_bonus<Us>(context, pawn, base, FREE_ON_SEVENTH);
        else if (rank == RANK_6)
            value = advance_bonus<Us>(context, pawn, base, FREE_ON_SIXTH);
    } else if (enemy_piece_on<Us>(front)) {
        value = base - base / 2;
    }
    if (rank < RANK_7 && enemy_piece_on<Us>(front + Facing<Us>::FORWARD))
        value -= base / 4;
    return value;
}

template <Side Us> bool held_by_minor(Square square) {
    const Piece man = position.at(square);
    return contains(attacks_of(Facing<Us>::THEM).minor(), square) || man == Facing<Us>::THEIR_KNIGHT ||
           man == Facing<Us>::THEIR_BISHOP;
}

// What a pawn diagonally behind is worth: half as much when the enemy holds the square in front and the one
// beside the passed pawn, before the defender.
template <Side Us> int defender_bonus(const EvalContext& context, Square pawn, int base, int side_step) {
    const Square front = pawn + Facing<Us>::FORWARD, beside = pawn + side_step;
    if (!own_pawn_on<Us>(beside - Facing<Us>::FORWARD))
        return 0;
    const Square enemy_king = context.of(Facing<Us>::THEM).king;
    const bool held = enemy_king == front || enemy_king == beside ||
                      (held_by_minor<Us>(front) && held_by_minor<Us>(beside));
    return held ? base : 2 * base;
}

template <Side Us> int support_bonus(const EvalContext& context, Square pawn, int base) {
    if (own_pawn_on<Us>(pawn - 1) || own_pawn_on<Us>(pawn + 1))
        return 2 * base;
    return defender_bonus<Us>(context, pawn, base, 1) + defender_bonus<Us>(context, pawn, base, -1);
}

// Rooks behind the pawn, up to the first other man.
template <Side Us> int rooks_behind(Square pawn, int base) {
    int bonus = 0;
    for (Square square = pawn - Facing<Us>::FORWARD;; square -= Facing<Us>::FORWARD) {
        const Piece man = position.at(square);
        if (man == Facing<Us>::OUR_ROOK)
            bonus += base / 2 + ROOK_BEHIND;
        else if (man == Facing<Us>::THEIR_ROOK)
            bonus -= base / 2 + ENEMY_ROOK_BEHIND;
        else if (man != EMPTY)
            return bonus;
    }
}

template <Side Us> bool enemy_king_before(const EvalContext& context, Square pawn) {
    const Square king = context.of(Facing<Us>::THEM).king;
    return std::abs(file_of(king) - file_of(pawn)) <= 1 && Facing<Us>::rank(king) >= Facing<Us>::rank(pawn);
}

// Against a lone knight, which cannot stop pawns on both wings, everything counts half as much again.
template <Side Us> int passed_value(const EvalContext& context, Square pawn) {
    const SideTerms& enemy = context.of(Facing<Us>::THEM);
    const int base = PASSED_BASE[Facing<Us>::rank(pawn)];
    int value = path_value<Us>(context, pawn, base) + support_bonus<Us>(context, pawn, base);
    if (context.of(WHITE).rooks + context.of(BLACK).rooks > 0)
        value += rooks_behind<Us>(pawn, base);
    if (enemy_king_before<Us>(context, pawn))
        value -= base / 2 + ENEMY_KING_NEAR;
    if (enemy.queens + enemy.rooks + enemy.bishops == 0 && enemy.knights == 1)
        value += value / 2;
    return value;
}

// What a king near the pawn is worth to its side; most where it clears the way.
template <Side Us> int proximity(Square king, Square pawn) {
    const int ahead = Facing<Us>::rank(king) - Facing<Us>::rank(pawn);
    const int files = file_of(king) - file_of(pawn);
    if (ahead > PROXIMITY_AHEAD || ahead < PROXIMITY_BEHIND || std::abs(files) > PROXIMITY_FILES)
        return 0;
    return PROXIMITY[PROXIMITY_AHEAD - ahead][files + PROXIMITY_FILES];
}

// The enemy king cannot come nearer to the pawn's file: we attack the three squares on its way.
template <Side Us> int cut_off_bonus(const EvalContext& context, Square pawn) {
    const Square king = context.of(Facing<Us>::THEM).king;
    const int files = file_of(pawn) - file_of(king);
    if (files >= -1 && files <= 1)
        return 0;
    const Square beside = king + (files > 0 ? 1 : -1);
    const SquareSet barred = attacks_of(Us).attacked;
    if (!contains(barred, beside) || !contains(barred, beside + 16) || !contains(barred, beside - 16))
        return 0;
    return CUT_OFF[std::abs(files)];
}

// Far back a pawn gains only half as much from its king; what bars the enemy king counts in full.
template <Side Us> int passed_king_value(const EvalContext& context, Square pawn) {
    int value =
        proximity<Us>(context.of(Us).king, pawn) - proximity<Us>(context.of(Facing<Us>::THEM).king, pawn);
    if (Facing<Us>::rank(pawn) <= RANK_3)
        value /= 2;
    return value + cut_off_bonus<Us>(context, pawn);
}

template <Side Us> PawnScore score_side(const EvalContext& context) {
    PawnScore score;
    score.structure = structure_score<Us>(context);
    for (const int index : indices_of(context.pawns.of(Us).passed_set)) {
        score.passed += passed_value<Us>(context, square_of(index));
        score.passed_kings += passed_king_value<Us>(context, square_of(index));
    }
    score.passed -= score.passed / 4;
    return score;
}

}  // namespace

Table<PawnScore, 2> score_pawns(const EvalContext& context) {
    return {score_side<WHITE>(context), score_side<BLACK>(context)};
}

}  // namespace quelmar
