// The solved endings. Each is turned first so that the strong side plays up the board and, where the rules
// are written for one wing, so that the pawn stands on files a to d. Then one function answers for the strong
// side, and the answer is seen from the side to move.
//
// Names: `king` and `lone` are the strong and the weak king, `goal` is the square on which the pawn promotes,
// `turn` is 1 when the strong side is to move and 0 otherwise.
#include "board/square_tables.h"
#include "eval/endings.h"

#include <cstdlib>

namespace quelmar {

namespace {

// clang-format off
// Where a lone king is mated most easily.
constexpr SquareBytes MATING_CORNER = on_board<SquareBytes>({{
    //a    b    c    d    e    f    g    h
    {100,  95,  92,  90,  90,  92,  95, 100 },  // 8
    { 95,  87,  82,  80,  80,  82,  87,  95 },
    { 92,  82,  76,  74,  74,  76,  82,  92 },
    { 90,  80,  74,  70,  70,  74,  80,  90 },
    { 90,  80,  74,  70,  70,  74,  80,  90 },
    { 92,  82,  76,  74,  74,  76,  82,  92 },
    { 95,  87,  82,  80,  80,  82,  87,  95 },
    {100,  95,  92,  90,  90,  92,  95, 100 },
}});

// The same for bishop and knight, with a dark-squared bishop.
constexpr SquareBytes BISHOP_KNIGHT_CORNER = on_board<SquareBytes>({{
    {130, 140, 150, 170, 170, 180, 190, 100 },  // 8
    {140, 130, 140, 150, 160, 170, 180, 190 },
    {150, 140, 125, 140, 140, 155, 170, 180 },
    {160, 150, 140, 110, 120, 140, 160, 170 },
    {170, 160, 140, 120, 110, 140, 150, 160 },
    {180, 170, 155, 140, 140, 125, 140, 150 },
    {190, 180, 170, 160, 150, 140, 130, 140 },
    {200, 190, 180, 170, 160, 150, 140, 130 },
}});
// clang-format on

// h8 is as good a corner as a1 and yet holds half of it. It is part of the playing strength: leave it.
static_assert(BISHOP_KNIGHT_CORNER[H8] == 100 && BISHOP_KNIGHT_CORNER[A1] == 200);

// By the distance of the kings; they cannot be nearer than 2.
constexpr Table<u8, 8> KINGS_CLOSE = {0, 0, 100, 90, 80, 70, 60, 50};
// By the distance between a lone king and its knight.
constexpr Table<u8, 8> KNIGHT_AWAY = {0, 0, 4, 10, 20, 32, 48, 70};

constexpr int MATE_BONUS = 1280;
constexpr int DRAW = 0;

int steps_between(Square a, Square b) {
    return distance[a - b];
}

// In king steps, for squares that may lie beyond the board's edge.
bool next_to(Square a, Square b) {
    return a != b && std::abs(file_of(a) - file_of(b)) <= 1 && std::abs(rank_of(a) - rank_of(b)) <= 1;
}

Square find_man(Side side, Piece kind) {
    for (Square square = position.first_of(side); square != LIST_END; square = position.next_man(square)) {
        if (position.at(square) == man_of(side, kind))
            return square;
    }
    return position.king_square(side);  // not reached: the material was recognised
}

// An ending as its strong side sees it.
struct Ending {
    Side strong;
    int turn;
    int turned = 0;  // mirrors squares: ranks for a black strong side, files on request

    Ending() {
        const UndoRecord& here = position.current();
        strong =
            here.material_us > here.material_them ? position.side_to_move : other_side(position.side_to_move);
        turn = strong == position.side_to_move ? 1 : 0;
    }
    void turn_board() { turned = strong == WHITE ? 0 : 0xF0; }
    void turn_pawn_to_queen_side() {
        if (file_of(strong_man(PAWN)) > FILE_D)
            turned ^= 7;
    }

    Square strong_man(Piece kind) const { return find_man(strong, kind) ^ turned; }
    Square weak_man(Piece kind) const { return find_man(other_side(strong), kind) ^ turned; }
    int for_side_to_move(int value) const { return turn != 0 ? value : -value; }
};

Square goal_of(Square pawn) {
    return square_at(file_of(pawn), RANK_8);
}

}  // namespace

int eval_mate_lone_king(Side lone, const SideTerms& attacker) {
    if (attacker.queens + attacker.rooks + attacker.bishops + attacker.pawns == 0 && attacker.knights < 3)
        return 0;
    const Square king = position.king_square(lone);
    return MATE_BONUS + MATING_CORNER[king] +
           KINGS_CLOSE[steps_between(king, position.king_square(other_side(lone)))];
}

int eval_rook_vs_minor(Side strong) {
    constexpr int AGAINST_BISHOP = -60, AGAINST_KNIGHT = -50;
    const Side weak = other_side(strong);
    const Square lone = position.king_square(weak);
    const Square minor = position.next_man(lone);
    int value = MATING_CORNER[lone];
    if (kind_of(position.at(minor)) == BISHOP)
        value += AGAINST_BISHOP;
    else
        value += AGAINST_KNIGHT + KNIGHT_AWAY[steps_between(lone, minor)];
    return strong == position.side_to_move ? value : -value;
}

int eval_kbnk() {
    const Ending ending;
    const bool light = !is_dark(ending.strong_man(BISHOP));
    Square lone = ending.weak_man(KING);
    const int kings_apart = steps_between(ending.strong_man(KING), lone);
    if (light)
        lone = flip_file(lone);
    return ending.for_side_to_move(MATE_BONUS + BISHOP_KNIGHT_CORNER[lone] + KINGS_CLOSE[kings_apart]);
}

// --- king and pawn against king ---

namespace {

struct PawnAgainstKing {
    Square king, lone, pawn, goal;
    int turn;
    int steps;  // moves the pawn needs to promote

    int win() const { return 1408 - steps; }
    int king_to_pawn() const { return steps_between(king, pawn); }
    int lone_to_pawn() const { return steps_between(lone, pawn); }
    bool king_is_nearer() const {
        return steps_between(king, goal) - turn + 1 < steps_between(lone, goal) &&
               king_to_pawn() - turn + 1 < lone_to_pawn();
    }
};

// The king has locked itself in before its own pawn.
int king_in_corner(const PawnAgainstKing& e) {
    constexpr int PAWN_FREES_ITSELF = 1407;
    constexpr Square C7 = square_at(FILE_C, RANK_7);
    const bool held = e.turn != 0 ? e.lone == C7 || e.lone == C8 : next_to(e.lone, C7) || next_to(e.lone, C8);
    return held ? DRAW : PAWN_FREES_ITSELF;
}

int rook_pawn_value(const PawnAgainstKing& e) {
    constexpr int UNCLEAR = 40;
    if (file_of(e.lone) <= FILE_B && rank_of(e.lone) > rank_of(e.pawn))
        return DRAW;
    const Square beside_opposition = e.king + 2;
    if (file_of(e.king) == FILE_A && rank_of(e.king) > rank_of(e.pawn) &&
        (e.lone == beside_opposition || (e.turn == 0 && next_to(e.lone, beside_opposition))))
        return DRAW;
    if (steps_between(e.lone, e.goal) + e.turn + 1 < steps_between(e.king, e.goal))
        return DRAW;
    return e.king_is_nearer() ? e.win() : UNCLEAR - e.steps;
}

// The king stands directly or diagonally in front of the pawn: the opposition decides.
int opposition_value(const PawnAgainstKing& e) {
    const Square opposition = e.king + 32;
    if (e.lone == opposition)
        return e.turn != 0 ? DRAW : e.win();
    return e.turn == 0 && next_to(e.lone, opposition) ? DRAW : e.win();
}

int centre_pawn_value(const PawnAgainstKing& e) {
    constexpr int UNCLEAR = 128;
    const int ranks_ahead = rank_of(e.king) - rank_of(e.pawn);
    const bool near_file = std::abs(file_of(e.king) - file_of(e.pawn)) <= 1;
    if (ranks_ahead == 2 && near_file)
        return e.win();
    if (rank_of(e.king) >= RANK_6 && ranks_ahead > 0 && near_file &&
        e.king_to_pawn() + e.turn < e.lone_to_pawn())
        return e.win();
    if (ranks_ahead == 1 && near_file)
        return opposition_value(e);
    return e.king_is_nearer() ? e.win() : UNCLEAR - e.steps;
}

// The weak king can reach the promotion square in time: what matters is which king controls the squares in
// front of the pawn, and on the edge whether the weak king gets before it at all.
int inside_square_value(const PawnAgainstKing& e) {
    if (e.king_to_pawn() > e.lone_to_pawn() + e.turn + 2)
        return DRAW;
    if (file_of(e.king) > file_of(e.pawn) && rank_of(e.lone) == rank_of(e.king) && e.lone > e.king)
        return e.win();
    const bool rook_pawn = file_of(e.pawn) == FILE_A;
    if (e.lone == e.pawn + 32) {
        const bool king_beside = e.king == e.pawn - 1 || e.king == e.pawn + 1;
        if (rank_of(e.pawn) <= RANK_5 || rook_pawn || !king_beside)
            return DRAW;
        return e.turn != 0 ? e.win() : DRAW;
    }
    if (e.lone == e.pawn + 16 && (rank_of(e.pawn) == RANK_2 || rank_of(e.pawn) == RANK_3))
        return DRAW;
    return rook_pawn ? rook_pawn_value(e) : centre_pawn_value(e);
}

int kpk_value(const PawnAgainstKing& e) {
    if (e.turn == 0 && e.king_to_pawn() > 1 && e.lone_to_pawn() == 1)
        return DRAW;
    if (e.king == A8 && e.pawn == square_at(FILE_A, RANK_7))
        return king_in_corner(e);
    if (steps_between(e.lone, e.goal) > e.steps - e.turn + 1)
        return e.win();
    return inside_square_value(e);
}

}  // namespace

int eval_kpk() {
    Ending ending;
    ending.turn_board();
    ending.turn_pawn_to_queen_side();
    const Square pawn = ending.strong_man(PAWN);
    const int steps = RANK_8 - rank_of(pawn) - (rank_of(pawn) == RANK_2 ? 1 : 0);
    return ending.for_side_to_move(
        kpk_value({ending.strong_man(KING), ending.weak_man(KING), pawn, goal_of(pawn), ending.turn, steps}));
}

// --- rook against pawn ---

namespace {

// A king's place relative to the pawn that runs down the board, as far as it matters: far behind it, or far
// up ahead on one side.
int place_behind_pawn(Square king, Square pawn) {
    constexpr Table<u8, 7> RANKS_7 = {5, 13, 22, 25, 22, 13, 5};        // files -3..3
    constexpr Table<u8, 5> RANKS_6 = {5, 10, 15, 10, 5};                // files -2..2
    constexpr Table<u8, 3> RANKS_5 = {5, 8, 5};                         // files -1..1
    constexpr Table<u8, 8> RANKS_MINUS_5 = {0, 4, 8, 10, 10, 8, 4, 0};  // files 0..7, as below
    constexpr Table<u8, 8> RANKS_MINUS_6 = {4, 10, 16, 24, 24, 16, 10, 4};
    constexpr Table<u8, 8> RANKS_MINUS_7 = {8, 14, 28, 40, 40, 28, 14, 8};
    const int files = file_of(king) - file_of(pawn);
    const auto centred = [files](const auto& row, int reach) {
        return std::abs(files) <= reach ? row[files + reach] : u8{0};
    };
    const auto rightward = [files](const auto& row) { return files >= 0 ? row[files] : u8{0}; };
    switch (rank_of(king) - rank_of(pawn)) {
    case 7:
        return centred(RANKS_7, 3);
    case 6:
        return centred(RANKS_6, 2);
    case 5:
        return centred(RANKS_5, 1);
    case -5:
        return rightward(RANKS_MINUS_5);
    case -6:
        return rightward(RANKS_MINUS_6);
    case -7:
        return rightward(RANKS_MINUS_7);
    default:
        return 0;
    }
}

// The rook wins when its king gets before the pawn or the weak king is too far off. Otherwise the pawn costs
// the rook, unless the rook's king comes near in time.
int krkp_value(const Ending& ending) {
    const Square king = ending.strong_man(KING), rook = ending.strong_man(ROOK), lone = ending.weak_man(KING),
                 pawn = ending.weak_man(PAWN), goal = square_at(file_of(pawn), RANK_1);
    const int king_to_pawn = steps_between(king, pawn), lone_to_pawn = steps_between(lone, pawn),
              lone_to_rook = steps_between(lone, rook), turn = ending.turn;
    const int win = 1290 - king_to_pawn;
    if (file_of(king) == file_of(pawn) && rank_of(king) < rank_of(pawn) && (turn != 0 || lone_to_rook >= 2))
        return win;
    if (steps_between(lone, goal) > steps_between(king, goal) - turn + 1)
        return win;
    if (lone_to_pawn + turn > 3 && lone_to_rook > 2)
        return win;
    if ((rank_of(pawn) == RANK_2 || rank_of(pawn) == RANK_3) && lone_to_pawn == 1 &&
        rank_of(king) >= RANK_4 && king_to_pawn - turn > 2)
        return 80 - 8 * king_to_pawn;
    return place_behind_pawn(king, pawn) - place_behind_pawn(lone, pawn) + 8 * steps_between(pawn, goal) +
           200;
}

}  // namespace

int eval_krkp() {
    Ending ending;
    ending.turn_board();
    return ending.for_side_to_move(krkp_value(ending));
}

// --- bishop and pawn against king ---

namespace {

// A bishop that cannot drive the king out of the corner does not win with a rook pawn; all other questions
// are whether the pawn can be held.
int kbpk_value(const Ending& ending) {
    const Square king = ending.strong_man(KING), bishop = ending.strong_man(BISHOP),
                 pawn = ending.strong_man(PAWN), lone = ending.weak_man(KING), goal = goal_of(pawn);
    const int steps = steps_between(pawn, goal), king_to_pawn = steps_between(king, pawn),
              lone_to_pawn = steps_between(lone, pawn), turn = ending.turn;
    const bool bishop_guards = bishop_direction[bishop - pawn] != 0;
    if (turn == 0 && lone_to_pawn == 1 && king_to_pawn > 1 && !bishop_guards)
        return DRAW;
    if (file_of(pawn) == FILE_A && is_dark(bishop)) {
        const bool lone_before = file_of(lone) <= FILE_B && rank_of(lone) > rank_of(pawn);
        const bool at_last_moment = pawn == square_at(FILE_A, RANK_7) && lone == square_at(FILE_B, RANK_7);
        return lone_before || at_last_moment ? DRAW : 256 - steps;
    }
    if (steps_between(lone, goal) > steps - turn + 1 ||
        (king_to_pawn == 1 && steps_between(lone, bishop) > 1) || king_to_pawn - turn < lone_to_pawn + 1)
        return 1696 - steps;
    return (bishop_guards ? 1024 : 640) - steps;
}

}  // namespace

int eval_kbpk() {
    Ending ending;
    ending.turn_board();
    ending.turn_pawn_to_queen_side();
    return ending.for_side_to_move(kbpk_value(ending));
}

// --- rook and pawn against rook ---

namespace {

struct RookEnding {
    Square king, rook, pawn, lone, guard;  // `guard` is the weak side's rook
    Square goal;
    int turn;

    bool lone_before_goal() const { return lone == goal || lone == goal - 16; }
};

// The two classic ways to hold: the rook on the sixth rank before the pawn has come there, the rook behind
// the pawn after it has.
bool held_from_behind_or_sixth(const RookEnding& e) {
    if (!e.lone_before_goal() || rank_of(e.king) > RANK_5)
        return false;
    if (rank_of(e.pawn) <= RANK_5 &&
        (rank_of(e.guard) == RANK_6 || (rank_of(e.pawn) <= RANK_3 && rank_of(e.rook) != RANK_6)))
        return true;
    return rank_of(e.pawn) == RANK_6 && rank_of(e.guard) == RANK_1;
}

// The strong rook is tied to the corner before its own a-pawn.
bool rook_tied_to_corner(const RookEnding& e) {
    constexpr Square A7 = square_at(FILE_A, RANK_7), G7 = square_at(FILE_G, RANK_7),
                     H7 = square_at(FILE_H, RANK_7);
    if (e.pawn != A7 || e.rook != A8 || (e.lone != G7 && e.lone != H7) || file_of(e.guard) != FILE_A)
        return false;
    return rank_of(e.guard) <= RANK_3 || file_of(e.king) > FILE_C || rank_of(e.king) <= RANK_5;
}

// What the weak king ahead of the pawn costs, by how many files the pawn is to its right.
int lone_king_ahead(const RookEnding& e) {
    const int file = file_of(e.pawn), guard_files = file_of(e.guard) - file;
    switch (file - file_of(e.lone)) {
    case -2:
        return 0;
    case -1:
        return -24;
    case 0:
        return -64;
    case 1:
        return -48;
    case 2:
        return guard_files > 3 ? -40 : -4 * std::abs(guard_files);
    default:
        return 12 * std::abs(file - file_of(e.lone));
    }
}

// No rule applies: an estimate from the places of the men. Past a pawn it counts sevenfold, since such a
// position is then taken to be won.
int general_value(const RookEnding& e) {
    const int file = file_of(e.pawn), rank = rank_of(e.pawn);
    int value = 2 * (rank + 4) + (file == FILE_A ? 88 : 118);
    value -= 3 * std::abs(file_of(e.guard) - file) + 2 * steps_between(e.pawn, e.guard);
    value += e.lone > e.pawn ? lone_king_ahead(e) : 6 * (rank - rank_of(e.lone));
    if (rank_of(e.king) < rank)
        value -= 6 * (rank - rank_of(e.king));
    if (file_of(e.guard) == file && rank_of(e.guard) < rank)
        value -= 24;
    return value > 128 ? 7 * value - 768 : value;
}

int krpkr_value(const RookEnding& e) {
    if (held_from_behind_or_sixth(e) || rook_tied_to_corner(e))
        return DRAW;
    if (rank_of(e.pawn) == RANK_7 && file_of(e.rook) == file_of(e.pawn) && e.rook != e.pawn + 16) {
        const int king_steps = steps_between(e.king, e.goal);
        if (king_steps < steps_between(e.lone, e.goal) + e.turn - 2 &&
            king_steps < steps_between(e.lone, e.rook) + e.turn)
            return ROOK_VALUE + e.turn - king_steps;
    }
    return general_value(e);
}

}  // namespace

int eval_krpkr() {
    Ending ending;
    ending.turn_board();
    ending.turn_pawn_to_queen_side();
    const Square pawn = ending.strong_man(PAWN);
    return ending.for_side_to_move(
        krpkr_value({ending.strong_man(KING), ending.strong_man(ROOK), pawn, ending.weak_man(KING),
                     ending.weak_man(ROOK), goal_of(pawn), ending.turn}));
}

}  // namespace quelmar
