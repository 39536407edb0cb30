// The one pass over the men: both attack maps, mobility, counts and what a man sees on its way.
//
// A slider looks through men that move the same way: through its own kind with full force, and a bishop or
// rook through its own queen as an x-ray, which counts as an attacker of no kind and adds no mobility. A
// bishop or queen also bears on the square beyond an own pawn that it stands diagonally behind.
//
// The men are visited kind by kind, since the order matters to one thing only: where an eighth attacker
// carries into the kinds, the byte depends on who came after it. Such squares are counted again, man by man
// in the order of the piece list.
#include "board/attacks.h"
#include "board/reach.h"
#include "board/square_tables.h"
#include "eval/eval_context.h"

#include <algorithm>

namespace quelmar {

namespace {

// Value of the number of squares a man can go to.
constexpr Table<u8, 9> KNIGHT_MOBILITY = {0, 0, 0, 1, 2, 3, 4, 4, 4};
constexpr Table<u8, 15> BISHOP_MOBILITY = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7};
constexpr Table<u8, 15> ROOK_MOBILITY = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3};

constexpr int OPEN_FILE_MOBILITY = 2;
constexpr int OPEN_FILE_AT_KING = 20;  // mg
constexpr int MANY_PAWNS_OF_COLOUR = 14, CENTRAL_PAWN_FACTOR = 4;
constexpr int BAD_BISHOP = 40, BAD_BISHOP_PER_SQUARE = 2;
constexpr int ROOK_ON_SEVENTH = 2, QUEEN_ON_SEVENTH = 1;

constexpr SquareSet LIGHT_SQUARES = 0x55AA55AA55AA55AA;

// What one slider bears on.
struct Sight {
    SquareSet full = 0, xray = 0;
    SquareSet mobile = 0;  // of `full`, what counts for mobility unless a stuck pawn stands there
};

// Who sees what, for one side on the present board.
template <Side Us, class Reach> class Sights {
    using Face = Facing<Us>;

public:
    Sights() {
        const PieceSets& sets = position.sets;
        const SquareSet occupied = sets.occupied();
        const SquareSet bishops = sets.of_man(Face::OUR_BISHOP), rooks = sets.of_man(Face::OUR_ROOK);
        pawns_ = sets.of_man(Face::OUR_PAWN);
        queens_ = sets.of_man(Face::OUR_QUEEN);
        stop_bishops_ = occupied ^ bishops;
        stop_rooks_ = occupied ^ rooks;
        // An own pawn that cannot step forward keeps its square from the man behind it.
        stuck_pawns_ = pawns_ & forward<Face::THEM>(occupied);
    }

    SquareSet pawns_to_west() const { return to_west(forward<Us>(pawns_)); }
    SquareSet pawns_to_east() const { return to_east(forward<Us>(pawns_)); }
    SquareSet stuck_pawns() const { return stuck_pawns_; }

    Sight bishop(int index) const {
        const SquareSet seen = Reach::bishop(index, stop_bishops_);
        Sight sight{seen | beyond_pawns(index, seen), NO_SQUARES, seen};
        if ((seen & queens_) != 0) {
            const SquareSet through = Reach::bishop(index, stop_bishops_ & ~queens_);
            sight.xray = (through | beyond_pawns(index, through)) & ~sight.full;
        }
        return sight;
    }

    Sight rook(int index) const {
        const SquareSet seen = Reach::rook(index, stop_rooks_);
        Sight sight{seen, NO_SQUARES, seen};
        if ((seen & queens_) != 0)
            sight.xray = Reach::rook(index, stop_rooks_ & ~queens_) & ~seen;
        return sight;
    }

    SquareSet queen(int index) const {
        const SquareSet diagonally = Reach::bishop(index, stop_bishops_ & ~queens_);
        return diagonally | beyond_pawns(index, diagonally) | Reach::rook(index, stop_rooks_ & ~queens_);
    }

private:
    // The squares diagonally behind own pawns on which a slider bears. Behind a pawn on the way back lies a
    // square that it sees anyway, and a step that leaves one of its lines, also over the edge, never meets
    // one of them again.
    SquareSet beyond_pawns(int index, SquareSet seen) const {
        const SquareSet pawns = seen & pawns_;
        const SquareSet behind = Us == WHITE ? pawns << 9 | pawns << 7 : pawns >> 9 | pawns >> 7;
        return behind & lines_of(index).diagonals;
    }

    SquareSet pawns_, queens_, stuck_pawns_;
    SquareSet stop_bishops_, stop_rooks_;  // what ends the line of a bishop or rook
};

// An attack map in the making. `crowded` collects the squares that an eighth attacker reached.
struct Tally {
    SquareSet ones = 0, twos = 0, fours = 0, crowded = 0;
    SquareSet pawn = 0, minor = 0, rook = 0, queen = 0, king = 0;

    // Counts the first three men.
    void start_with(SquareSet first, SquareSet second, SquareSet third) {
        const SquareSet differ = first ^ second;
        ones = differ ^ third;
        twos = (first & second) | (differ & third);
    }
    void count(SquareSet squares) {
        const SquareSet carry = ones & squares;
        ones ^= squares;
        const SquareSet second_carry = twos & carry;
        twos ^= carry;
        crowded |= fours & second_carry;
        fours ^= second_carry;
    }
    void write_to(AttackMap& map) const {
        map.bits = {ones, twos, fours, pawn, minor, rook, queen, king};
        map.attacked = ones | twos | fours | crowded;  // whoever bears on a square counts there
    }
};

// What a man bears on, and the bit of its kind.
struct Attack {
    Sight sight;
    int kind_bit;
};

template <Side Us> Attack attack_from(Square square, const Sights<Us, PlainReach>& sights) {
    using Face = Facing<Us>;
    const int index = index_of(square);
    switch (position.at(square)) {
    case Face::OUR_PAWN: {
        const SquareSet before = forward<Us>(set_of(square));
        return {{to_west(before) | to_east(before)}, ATTACK_PAWN};
    }
    case Face::OUR_KNIGHT:
        return {{knight_reach_of(index)}, ATTACK_MINOR};
    case Face::OUR_BISHOP:
        return {sights.bishop(index), ATTACK_MINOR};
    case Face::OUR_ROOK:
        return {sights.rook(index), ATTACK_ROOK};
    case Face::OUR_QUEEN:
        return {{sights.queen(index)}, ATTACK_QUEEN};
    default:
        return {{king_reach_of(index)}, ATTACK_KING};
    }
}

// Counts the attacks on some squares of the map again, man by man. Eight attackers hardly ever meet, so this
// need not be fast, and it stays a call so that the pass below keeps its counts in registers.
template <Side Us> [[gnu::noinline]] void recount(SquareSet crowded) {
    const Sights<Us, PlainReach> sights;
    Table<u8, 64> bytes{};
    for (Square man = position.first_of(Us); man != LIST_END; man = position.next_man(man)) {
        const Attack attack = attack_from<Us>(man, sights);
        for (const int index : indices_of((attack.sight.full | attack.sight.xray) & crowded)) {
            u8& byte = bytes[index];
            const int kind_bit = bit_at(attack.sight.full, index) != 0 ? attack.kind_bit : ATTACK_XRAY;
            byte = static_cast<u8>((byte + 1) | kind_bit);
        }
    }
    for (const int index : indices_of(crowded))
        attack_map[Us].set_byte(square_of(index), bytes[index]);
}

// The pass over one side's men.
template <Side Us, class Reach> class Walk {
    using Face = Facing<Us>;

public:
    explicit Walk(EvalContext& evaluation)
        : terms(evaluation.of(Us)), pawns(evaluation.pawns.of(Us)),
          centre_closed(evaluation.pawns.structure_type == CENTRE_CLOSED),
          enemy_king(evaluation.of(Face::THEM).king) {}

    void run() {
        count_men();
        place_rooks();
        count_pawns_and_king();
        for (const int index : indices_of(knights))
            visit_knight(index);
        for (const int index : indices_of(bishops))
            visit_bishop(index);
        for (const int index : indices_of(rooks))
            visit_rook(index);
        for (const int index : indices_of(queens))
            visit_queen(index);
        tally.write_to(attack_map[Us]);
        if (tally.crowded != 0)
            recount<Us>(tally.crowded);
        terms.mobility = mobility;
    }

private:
    void count_men() {
        terms.knights = size_of(knights);
        terms.bishops = size_of(bishops);
        terms.rooks = size_of(rooks);
        terms.queens = size_of(queens);
        terms.bishop_colours = ((bishops & LIGHT_SQUARES) != 0 ? LIGHT_BISHOP : 0) |
                               ((bishops & ~LIGHT_SQUARES) != 0 ? DARK_BISHOP : 0);
    }

    // What rooks, and on the seventh rank queens, gain from where they stand alone.
    void place_rooks() {
        constexpr SquareSet LAST_RANKS =
            first_rank<Face::THEM>() | forward<Face::THEM>(first_rank<Face::THEM>());
        const SquareSet open = rooks & ~on_files(pawns.pawn_files);
        const SquareSet enemy_king_file = on_files(file_mask(file_of(enemy_king)));
        const SquareSet at_king = enemy_king_file | to_west(enemy_king_file) | to_east(enemy_king_file);
        terms.seventh =
            ROOK_ON_SEVENTH * size_of(rooks & LAST_RANKS) + QUEEN_ON_SEVENTH * size_of(queens & LAST_RANKS);
        mobility = OPEN_FILE_MOBILITY * size_of(open);
        terms.rook_aim = OPEN_FILE_AT_KING * size_of(open & at_king);
    }

    void count_pawns_and_king() {
        const SquareSet west = sights.pawns_to_west(), east = sights.pawns_to_east();
        tally.pawn = west | east;
        tally.king = king_reach_of(index_of(terms.king));
        tally.start_with(west, east, tally.king);
    }

    void visit_knight(int index) {
        const SquareSet reach = knight_reach_of(index);
        tally.count(reach);
        tally.minor |= reach;
        mobility += KNIGHT_MOBILITY[size_of(reach & ~sights.stuck_pawns())];
    }

    void visit_bishop(int index) {
        const Sight sight = sights.bishop(index);
        tally.count(sight.full | sight.xray);
        tally.minor |= sight.full;
        const int reach = size_of(sight.mobile & ~sights.stuck_pawns());
        mobility += BISHOP_MOBILITY[reach];
        if (centre_closed)
            terms.bad_bishops += bad_bishop(index, reach);
    }

    void visit_rook(int index) {
        const Sight sight = sights.rook(index);
        tally.count(sight.full | sight.xray);
        tally.rook |= sight.full;
        mobility += ROOK_MOBILITY[size_of(sight.mobile & ~sights.stuck_pawns())];
    }

    // A queen adds no mobility.
    void visit_queen(int index) {
        const SquareSet reach = sights.queen(index);
        tally.count(reach);
        tally.queen |= reach;
    }

    // Behind a closed centre a bishop suffers from own pawns on its colour, the less the more squares it
    // sees.
    int bad_bishop(int index, int reach) const {
        const bool dark = bit_at(LIGHT_SQUARES, index) == 0;
        const int in_its_way = dark ? pawns.dark_pawns + CENTRAL_PAWN_FACTOR * pawns.central_dark
                                    : pawns.light_pawns + CENTRAL_PAWN_FACTOR * pawns.central_light;
        return in_its_way > MANY_PAWNS_OF_COLOUR ? std::max(0, BAD_BISHOP - BAD_BISHOP_PER_SQUARE * reach)
                                                 : 0;
    }

    SideTerms& terms;
    int mobility = 0;
    Tally tally;
    const Sights<Us, Reach> sights;
    const SidePawns& pawns;
    const bool centre_closed;
    const Square enemy_king;
    const SquareSet knights = position.sets.of_man(Face::OUR_KNIGHT);
    const SquareSet bishops = position.sets.of_man(Face::OUR_BISHOP);
    const SquareSet rooks = position.sets.of_man(Face::OUR_ROOK);
    const SquareSet queens = position.sets.of_man(Face::OUR_QUEEN);
};

}  // namespace

template <class Reach> void walk_men(EvalContext& context) {
    Walk<WHITE, Reach>(context).run();
    Walk<BLACK, Reach>(context).run();
}
template void walk_men<PlainReach>(EvalContext& context);
template void walk_men<ModernReach>(EvalContext& context);

}  // namespace quelmar
