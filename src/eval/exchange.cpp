// Two answers to "what is lost on this square?": one plays an exchange out on the board, the other looks it
// up by what the attack maps know about the square.
//
// The table is filled by recursion instead of by half a million exchanges. Let S(v, A, D) be what the owner
// of a man of value v loses when byte A attacks and byte D defends. With no attacker left it is 0; otherwise
// the cheapest attacker, worth c, may capture and then stands there itself: S(v, A, D) = max(0, v - S(c, D,
// A')), A' being the byte that remains of A. Since A' is smaller than A, the pairs follow from each other in
// the order of their sums.
#include "eval/exchange.h"

#include "board/attacks.h"
#include "board/position.h"
#include "board/processor.h"
#include "board/square_tables.h"
#include "eval/outputs.h"

#include <algorithm>
#include <bit>

namespace quelmar {

Table<Table<u8, ATTACK_PAIRS>, WORTHS> exchange_table;
Table<SquareSet, 2> endangered_men;

namespace {

constexpr Table<u8, WORTHS> TABLE_VALUE = {0, 1, 3, 5, 10, 100};  // pawns, by worth

constexpr int XRAY_ONLY_VALUE = 10;  // an attacker whose kind is not known counts as a queen

constexpr auto cheapest_attacker = [] {
    constexpr Table<u8, 5> VALUE_OF_KIND_BIT = {1, 3, 5, 10, 100};
    Table<u8, 32> table{};
    table[0] = XRAY_ONLY_VALUE;
    for (int kinds = 1; kinds < 32; ++kinds)
        table[kinds] = VALUE_OF_KIND_BIT[std::countr_zero(static_cast<unsigned>(kinds))];
    return table;
}();

// What remains of an attack byte after its cheapest attacker. A kind is taken to be used up when the
// remaining count can no longer cover every kind bit.
constexpr auto next_attack_byte = [] {
    Table<u8, 256> table{};
    for (int byte = 1; byte < 255; ++byte) {  // 255, where every bit is set, counts as exhausted
        const int count = byte & ATTACK_COUNT;
        const auto kinds = static_cast<unsigned>(byte) >> ATTACK_KIND_SHIFT;
        int next = byte - 1;
        if (std::popcount(kinds) > count - 1)
            next -= static_cast<int>(kinds & -kinds) << ATTACK_KIND_SHIFT;
        table[byte] = static_cast<u8>(std::max(next, 0));
    }
    return table;
}();
static_assert(next_attack_byte[26] == 17 && next_attack_byte[19] == 18);

int cheapest_of(int byte) {
    return cheapest_attacker[byte >> ATTACK_KIND_SHIFT];
}

int remaining_of(int byte) {
    return next_attack_byte[byte];
}

// The worth whose value is that of an attacker.
constexpr int worth_of_value(int value) {
    return value == 1 ? 1 : value == 3 ? 2 : value == 5 ? 3 : value == 10 ? 4 : 5;
}

// What men of every worth lose between two bytes, after all pairs with a smaller sum.
void fill_pair(int attackers, int defenders) {
    if ((attackers & ATTACK_COUNT) == 0)
        return;
    const int answered = attack_pair(defenders, remaining_of(attackers));
    const int counter_loss = exchange_table[worth_of_value(cheapest_of(attackers))][answered];
    const int pair = attack_pair(attackers, defenders);
    for (int worth = 1; worth < WORTHS; ++worth)
        exchange_table[worth][pair] = static_cast<u8>(std::max(TABLE_VALUE[worth] - counter_loss, 0));
}

}  // namespace

int attack_byte_exchange(Piece piece, int white_byte, int black_byte) {
    if (piece == EMPTY)
        return 0;
    Table<int, 2> bytes = {white_byte, black_byte};
    const auto byte_of = [&bytes](Side side) -> int& { return bytes[side]; };
    const Side attacker = other_side(side_of(piece));
    Table<int, 16> gain{};  // a byte counts at most seven captures
    gain[0] = TABLE_VALUE[worth_of_piece[piece]];
    if ((byte_of(attacker) & ATTACK_COUNT) == 0)
        return 0;

    int standing = cheapest_of(byte_of(attacker));
    byte_of(attacker) = remaining_of(byte_of(attacker));
    int depth = 0;
    for (Side next = other_side(attacker); (byte_of(next) & ATTACK_COUNT) != 0; next = other_side(next)) {
        ++depth;
        gain[depth] = standing - gain[depth - 1];
        standing = cheapest_of(byte_of(next));
        byte_of(next) = remaining_of(byte_of(next));
    }
    for (; depth > 0; --depth)
        gain[depth - 1] = std::min(gain[depth - 1], -gain[depth]);
    return std::max(gain[0], 0);
}

void build_exchange_table() {
    constexpr int HIGHEST = 255;
    for (int sum = 0; sum <= 2 * HIGHEST; ++sum) {
        for (int attackers = std::max(0, sum - HIGHEST); attackers <= std::min(sum, HIGHEST); ++attackers)
            fill_pair(attackers, sum - attackers);
    }
}

namespace {

constexpr int KING_CAPTURES = 30000;  // more than any exchange can win back

// The men of one colour that stand on the square in turn, the first one fixed, the others cheapest first.
struct Capturers {
    Table<int, 80> value{};  // 8 lines of at most 7 men, 8 knights, 2 pawns and the first
    int count = 0;

    void append(int man_value) { value[count++] = man_value; }
    void insert(int man_value) {
        int place = count++;
        for (; place > 1 && at(place - 1) > man_value; --place)
            value[place] = at(place - 1);
        value[place] = man_value;
    }
    int at(int index) const { return value[index]; }
};

using BothCapturers = Table<Capturers, 2>;

Capturers& of_side(BothCapturers& capturers, Side side) {
    return capturers[side];
}

template <Side Us> void add_contact_men(BothCapturers& capturers, Square to) {
    using Face = Facing<Us>;
    for (const int side_step : {1, -1}) {
        if (position.at(to - Face::FORWARD + side_step) == Face::OUR_PAWN)
            of_side(capturers, Us).append(PAWN_VALUE);
    }
    for (const int offset : knight_offsets) {
        if (position.at(to + offset) == Face::OUR_KNIGHT)
            of_side(capturers, Us).append(MINOR_VALUE);
    }
}

// Whether a pawn on `square` attacks the square one `direction` back.
bool pawn_captures(Piece pawn, int direction) {
    return side_of(pawn) == WHITE ? direction == -15 || direction == -17 : direction == 15 || direction == 17;
}

// Sliders join the line behind whatever lets them through: other sliders of the line and a capturing pawn.
void add_line(BothCapturers& capturers, Square to, int direction) {
    const bool diagonal = is_diagonal(direction);
    for (Square square = to + direction;; square += direction) {
        const Piece man = position.at(square);
        if (man == EMPTY)
            continue;
        if (man == OFF_BOARD)
            return;
        const bool next_to_it = square == to + direction;
        switch (kind_of(man)) {
        case PAWN:
            if (!next_to_it || !pawn_captures(man, direction))
                return;
            break;
        case KING:
            if (next_to_it)
                of_side(capturers, side_of(man)).append(KING_CAPTURES);
            return;
        case QUEEN:
            of_side(capturers, side_of(man)).insert(QUEEN_VALUE);
            break;
        default:
            if (kind_of(man) != (diagonal ? BISHOP : ROOK))
                return;
            of_side(capturers, side_of(man)).insert(value_of(man));
        }
    }
}

// White's gain when both sides capture in turn and may stop whenever that is better. `alpha` is what White is
// sure of, `beta` what Black can hold it to.
int resolve(const BothCapturers& capturers, Side mover) {
    const Capturers& white = capturers[WHITE];
    const Capturers& black = capturers[BLACK];
    int next_white = 0, next_black = 0, balance = 0, alpha = -KING_CAPTURES, beta = KING_CAPTURES;
    if (mover == BLACK) {
        next_white = 1;
        balance = alpha = -white.at(0);
    }
    for (;;) {
        if (next_white == white.count)
            return alpha;
        balance += black.at(next_black++);
        if (balance < alpha)
            return alpha;
        beta = std::min(beta, balance);
        if (next_black == black.count)
            return beta;
        balance -= white.at(next_white++);
        if (balance > beta)
            return beta;
        alpha = std::max(alpha, balance);
    }
}

}  // namespace

// The board is scanned without the man that moves, so that a line behind it is open.
int static_exchange(Square from, Square to) {
    u8& origin = position.board[from];
    const u8 mover = origin;
    const Side side = side_of(mover);
    BothCapturers capturers;
    of_side(capturers, side).append(value_of(mover));
    of_side(capturers, other_side(side)).append(value_of(position.at(to)));

    origin = EMPTY;
    add_contact_men<WHITE>(capturers, to);
    add_contact_men<BLACK>(capturers, to);
    for (const int direction : king_offsets)
        add_line(capturers, to, direction);
    origin = mover;

    const int white_gain = resolve(capturers, side);
    return side == WHITE ? white_gain : -white_gain;
}

namespace {

// The men of `Us` that an exchange cannot win: one man attacks, it is worth no less and would be taken back.
template <Side Us> SquareSet held_men() {
    using Face = Facing<Us>;
    const AttackMap& enemy = attacks_of(Face::THEM);
    const SquareSet not_by_pawn = ~enemy.pawn(), not_by_minor = not_by_pawn & ~enemy.minor(),
                    not_by_rook = not_by_minor & ~enemy.rook();
    const PieceSets& sets = position.sets;
    const SquareSet worth_no_less =
        sets.of_man(Face::OUR_PAWN) |
        ((sets.of_man(Face::OUR_KNIGHT) | sets.of_man(Face::OUR_BISHOP)) & not_by_pawn) |
        (sets.of_man(Face::OUR_ROOK) & not_by_minor) | (sets.of_man(Face::OUR_QUEEN) & not_by_rook);
    return worth_no_less & enemy.counted_once() & attacks_of(Us).counted();
}

// What the men of `Us` would lose, by index of the square; written for the men of the set only.
template <Side Us> struct Losses {
    SquareSet men = NO_SQUARES;
    Table<u8, 64> of;

    Losses() {
        const SquareSet attacked = position.sets.of_side(Us) & attacks_of(Facing<Us>::THEM).attacked &
                                   ~position.sets.of_man(Facing<Us>::OUR_KING);
        for (const int index : indices_of(attacked & ~held_men<Us>())) {
            const Square square = square_of(index);
            const int loss = exchange_loss(position.at(square), attack_pair_on<Facing<Us>::THEM>(square));
            of[index] = static_cast<u8>(loss);
            men |= SquareSet{loss != 0} << index;
        }
    }
    int on(Square square) const { return of[index_of(square)]; }
};

using Worst = Table<u8, 3>;

void insert(Square square, int loss, Worst& squares, Worst& values) {
    if (loss <= values[2])
        return;
    int place = 2;
    for (; place > 0 && loss > values[place - 1]; --place) {
        values[place] = values[place - 1];
        squares[place] = squares[place - 1];
    }
    values[place] = static_cast<u8>(loss);
    squares[place] = static_cast<u8>(square);
}

// The three men of `Us` that would lose most, worst first; of equals the earlier one in the piece list.
template <Side Us> void list_endangered(Worst& squares, Worst& values) {
    const Losses<Us> losses;
    endangered_men[Us] = losses.men;
    values = {};
    visit_in_list_order(Us, losses.men,
                        [&](Square square) { insert(square, losses.on(square), squares, values); });
}

}  // namespace

// What find_threats() does.
static void list_all_endangered() {
    UndoRecord& here = position.current();
    if (position.side_to_move == WHITE) {
        list_endangered<BLACK>(here.threat_square_them, here.threat_value_them);
        list_endangered<WHITE>(here.threat_square_us, here.threat_value_us);
    } else {
        list_endangered<WHITE>(here.threat_square_them, here.threat_value_them);
        list_endangered<BLACK>(here.threat_square_us, here.threat_value_us);
    }
}

QUELMAR_MODERN_COPY static void list_on_modern_processor() {
    list_all_endangered();
}

void find_threats() {
    if (modern_processor)
        list_on_modern_processor();
    else
        list_all_endangered();
}

}  // namespace quelmar
