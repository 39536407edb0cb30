// Classifies pawns, once per pawn structure.
//
// A pawn can stand in several lists. Passed: no enemy pawn on the squares before it or beside them, up to the
// seventh rank. Doubled: an own pawn behind it. Isolated: no own pawn on a neighbouring file; the foremost of
// a file goes to `isolated`, those behind it to `isolated_rear`. Backward: not isolated, but held by an enemy
// pawn on one of the next two squares where no own pawn can support it any more.
//
// The lists are short. A pawn that finds its list full is left out, but counted, and since the men are walked
// in the order of the piece list, that order decides which one it is; a table entry keeps the choice for as
// long as it lives.
#include "eval/pawns.h"

#include "board/position.h"
#include "board/square_tables.h"

#include <algorithm>
#include <bit>

namespace quelmar {

namespace {

constexpr u32 PAWN_TABLE_SIZE = 16384;
Table<PawnEntry, PAWN_TABLE_SIZE> pawn_table;

// How threatening a pawn is on its way to a king on that wing; White's view.
// clang-format off
constexpr SquareValues STORM_KING_SIDE = on_board({{
    //a   b   c   d   e   f   g   h
    { 0,  0,  0,  0,  0,  0,  0,  0 },  // 8
    { 0,  0,  0,  0,  0,  7,  9,  7 },
    { 0,  0,  0,  0,  2,  6,  9,  8 },
    { 0,  0,  0,  0,  2,  4,  6,  6 },
    { 0,  0,  0,  0,  2,  2,  2,  2 },
    { 0,  0,  0, -1, -2, -3, -4, -4 },
    { 0,  0,  0, -1, -3, -5, -6, -6 },
    { 0,  0,  0,  0,  0,  0,  0,  0 },
}});

constexpr SquareValues STORM_QUEEN_SIDE = on_board({{
    { 0,  0,  0,  0,  0,  0,  0,  0 },  // 8
    { 7,  9,  9,  7,  0,  0,  0,  0 },
    { 7,  9,  9,  7,  0,  0,  0,  0 },
    { 5,  7,  7,  5,  0,  0,  0,  0 },
    { 2,  4,  5,  4,  2,  0,  0,  0 },
    {-1, -2, -2, -2, -1,  0,  0,  0 },
    {-5, -5, -5, -3, -1,  0,  0,  0 },
    { 0,  0,  0,  0,  0,  0,  0,  0 },
}});
// clang-format on

// Penalty by the number of passed and weak pawns of a side; the last entry stands for all higher counts.
constexpr Table<u8, 7> WEAK_COUNT = {0, 0, 2, 5, 10, 18, 30};

constexpr Table<u8, 8> DOUBLED = {8, 14, 20, 30, 30, 20, 14, 8};  // penalty by file

// A side's passed and weak pawns, those that a full list leaves out included.
struct ListCounts {
    int isolated = 0, doubled = 0, isolated_rear = 0, backward = 0, passed = 0;
};

template <int SIZE> SquareSet set_of_list(const Table<u8, SIZE>& list) {
    SquareSet set = NO_SQUARES;
    for (const Square square : list)
        set |= set_of(square);
    return set;
}

template <int SIZE> void put(Table<u8, SIZE>& list, int& count, Square square) {
    if (count < SIZE)
        list[count] = static_cast<u8>(square);
    ++count;
}

template <Side Us> bool beside_own_pawn(Square square) {
    return own_pawn_on<Us>(square - 1) || own_pawn_on<Us>(square + 1);
}

// The pawns of one side by what their lists ask.
template <Side Us> struct PawnClasses {
    static constexpr Side THEM = Facing<Us>::THEM;
    SquareSet own = position.sets.of_man(Facing<Us>::OUR_PAWN);
    SquareSet passed, isolated, backward;
    SquareSet before_own, behind_own;  // with an own pawn behind, or in front, on their file

    PawnClasses() {
        const SquareSet enemies = position.sets.of_man(Facing<Us>::THEIR_PAWN);
        const SquareSet in_the_way = enemies & ~first_rank<THEM>();
        passed = own & ~all_before<THEM>(in_the_way | beside(in_the_way));
        before_own = own & all_before<Us>(own);
        behind_own = own & all_before<THEM>(own);
        const SquareSet neighbours = own & ~first_rank<WHITE>() & ~first_rank<BLACK>();
        isolated = own & ~beside(neighbours | all_before<WHITE>(neighbours) | all_before<BLACK>(neighbours));
        backward = backward_pawns(beside(forward<THEM>(enemies)));
    }

private:
    static constexpr SquareSet beside(SquareSet squares) { return to_west(squares) | to_east(squares); }

    // A pawn that cannot advance past the pawns that attack `held` and that no other pawn can come to help.
    SquareSet backward_pawns(SquareSet held) const {
        constexpr SquareSet SECOND = forward<Us>(first_rank<Us>()), THIRD = forward<Us>(SECOND);
        constexpr SquareSet TO_FOURTH = SECOND | THIRD | forward<Us>(THIRD);
        const SquareSet supported = beside(own) | all_before<Us>(beside(own));
        const SquareSet held_now = forward<THEM>(held);
        const SquareSet held_next = forward<THEM>(forward<THEM>(held) & ~supported) & TO_FOURTH;
        return own & ((held_now & ~supported) | (held_next & ~held_now));
    }
};

template <Side Us> int chain_bonus(Square pawn) {
    const bool back = Facing<Us>::rank(pawn) <= RANK_3;
    if (own_pawn_on<Us>(pawn + 1))
        return back ? 4 : 10;
    if (beside_own_pawn<Us>(pawn - Facing<Us>::FORWARD))
        return back ? 3 : 7;
    return 0;
}

template <Side Us> int storm_value(const SquareValues& table, Square pawn) {
    const int value{table[Facing<Us>::mirror(pawn)]};
    return beside_own_pawn<Us>(pawn) ? value + (value >> 1) : value;
}

template <Side Us> void count_pawn(SidePawns& pawns, Square pawn) {
    const int file = file_of(pawn);
    const bool central = file >= FILE_C && file <= FILE_F;
    if (is_dark(pawn)) {
        ++pawns.dark_pawns;
        pawns.central_dark = static_cast<u8>(pawns.central_dark + central);
    } else {
        ++pawns.light_pawns;
        pawns.central_light = static_cast<u8>(pawns.central_light + central);
    }
    pawns.pawn_files = static_cast<u8>(pawns.pawn_files | file_mask(file));
    pawns.lowest_file = static_cast<i8>(std::min<int>(pawns.lowest_file, file));
    pawns.highest_file = static_cast<i8>(std::max<int>(pawns.highest_file, file));
    pawns.structure_bonus = static_cast<i8>(pawns.structure_bonus + chain_bonus<Us>(pawn));
    pawns.storm_king_side = static_cast<i8>(pawns.storm_king_side + storm_value<Us>(STORM_KING_SIDE, pawn));
    pawns.storm_queen_side =
        static_cast<i8>(pawns.storm_queen_side + storm_value<Us>(STORM_QUEEN_SIDE, pawn));
}

template <Side Us>
void list_pawn(SidePawns& pawns, ListCounts& counts, const PawnClasses<Us>& classes, Square pawn) {
    if (contains(classes.passed, pawn))
        put(pawns.passed, counts.passed, pawn);
    if (contains(classes.before_own, pawn))
        put(pawns.doubled, counts.doubled, pawn);
    if (contains(classes.isolated & classes.behind_own, pawn))
        put(pawns.isolated_rear, counts.isolated_rear, pawn);
    else if (contains(classes.isolated, pawn))
        put(pawns.isolated, counts.isolated, pawn);
    else if (contains(classes.backward, pawn))
        put(pawns.backward, counts.backward, pawn);
}

// An isolated pawn behind another one costs half as much as a doubled one.
int structure_of_pawns(const SidePawns& pawns) {
    int penalty = pawns.weak_count_penalty;
    for (const Square pawn : pawns.doubled)
        penalty += pawn != 0 ? DOUBLED[file_of(pawn)] : 0;
    for (const Square pawn : pawns.isolated_rear)
        penalty += pawn != 0 ? DOUBLED[file_of(pawn)] / 2 : 0;
    return pawns.structure_bonus - penalty;
}

template <Side Us> void classify_side(SidePawns& pawns) {
    pawns = SidePawns{};
    pawns.lowest_file = FILE_H + 1;
    pawns.highest_file = FILE_A - 1;
    ListCounts counts;
    const PawnClasses<Us> classes;
    visit_in_list_order(Us, classes.own, [&](Square square) {
        count_pawn<Us>(pawns, square);
        list_pawn<Us>(pawns, counts, classes, square);
    });
    const int weak = counts.passed + counts.doubled + counts.backward + counts.isolated;
    pawns.weak_count_penalty = WEAK_COUNT[std::min(weak, WEAK_COUNT.size() - 1)];
    pawns.structure = narrow<i16>(structure_of_pawns(pawns));
    pawns.isolated_set = set_of_list(pawns.isolated);
    pawns.backward_set = set_of_list(pawns.backward);
    pawns.passed_set = set_of_list(pawns.passed);
}

// The ranks on which a white pawn can stand before a black one.
template <typename Test> bool on_any_rank(Test test) {
    for (int rank = RANK_2; rank <= RANK_6; ++rank) {
        if (test(rank))
            return true;
    }
    return false;
}

bool black_pawn_before(int white_file, int black_file, int rank) {
    return position.at(square_at(white_file, rank)) == WHITE_PAWN &&
           position.at(square_at(black_file, rank + 1)) == BLACK_PAWN;
}

bool file_blocked(int file) {
    return on_any_rank([file](int rank) { return black_pawn_before(file, file, rank); });
}

// Only the rearmost white pawn is asked, not each: this rule is not symmetric.
bool lowest_white_pawn_blocked(int file) {
    for (int rank = RANK_2; rank <= RANK_7; ++rank) {
        const Square square = square_at(file, rank);
        if (position.at(square) == WHITE_PAWN)
            return position.at(square + 16) == BLACK_PAWN;
    }
    return false;
}

CentreType centre_type(const PawnEntry& entry) {
    const int centre = file_mask(FILE_D) | file_mask(FILE_E);
    const int occupied = std::popcount(static_cast<unsigned>(entry.of(WHITE).pawn_files & centre)) +
                         std::popcount(static_cast<unsigned>(entry.of(BLACK).pawn_files & centre));
    if (occupied <= 1)
        return CENTRE_OPEN;
    if (on_any_rank([](int rank) {
            return black_pawn_before(FILE_D, FILE_E, rank) || black_pawn_before(FILE_E, FILE_D, rank);
        }))
        return CENTRE_LEVER;
    if (occupied == 4) {
        const int blocked = file_blocked(FILE_D) + file_blocked(FILE_E);
        return blocked == 2 ? CENTRE_CLOSED : blocked == 1 ? CENTRE_BLOCKED : CENTRE_FULL;
    }
    return lowest_white_pawn_blocked(FILE_D) || lowest_white_pawn_blocked(FILE_E) ? CENTRE_BLOCKED
                                                                                  : CENTRE_HALF_OPEN;
}

[[gnu::noinline]] void classify(PawnEntry& entry, u32 key) {
    classify_side<WHITE>(entry.of(WHITE));
    classify_side<BLACK>(entry.of(BLACK));
    entry.structure_type = centre_type(entry);
    entry.key = key;
}

}  // namespace

void forget_pawn_structures() {
    pawn_table.fill(PawnEntry{});
}

const PawnEntry& pawn_entry() {
    const u32 key = position.current().pawn_key;
    PawnEntry& entry = pawn_table[key % PAWN_TABLE_SIZE];
    // A board without pawns has key 0 and hits the empty table. Its entry then differs from a classified one
    // only in the extreme files, which nobody asks without pawns.
    if (entry.key != key)
        classify(entry, key);
    return entry;
}

}  // namespace quelmar
