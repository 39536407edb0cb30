// The number of a position is a mixed-radix number, and what its digits are depends only on the material and
// on the side to move:
//
// 1. The board is mirrored until the reference king, the one of the side to move, stands in the triangle
//    a1-d1-d4, or on the files a-d when there are pawns. With Black to move, pawn endings also change the
//    ranks, so that the pawns of the side to move always go up the board.
// 2. The leading part counts the placements of the side to move beside the pair of kings, those only in
//    which none of its men touches the other king (the other side cannot be in check). Equal men are
//    numbered as combinations. A side to move that has nothing but its king leaves this part to the pawns of
//    the other side, which may give check; without any it is the king pair alone.
// 3. The other side's men follow, pawns first: each counts the squares that nobody placed before it stands
//    on. A pawn counts the 48 squares of pawns, and only pawns take them from it.
// 4. Positions in which a pawn can capture en passant stand behind all others: the squares of the two pawns
//    are then one of 14 pairs, and the square passed over and the one left are not free for other men.
#include "tablebase/index.h"

#include "tablebase/catalogue.h"
#include "tablebase/index_tables.h"

#include <algorithm>
#include <bit>

namespace quelmar {
namespace {

constexpr int EN_PASSANT_PAIRS = 14;  // 7 that capture towards the file a, 7 towards the file h
constexpr u64 PAWN_SQUARES = 0x00FFFFFFFFFFFF00;
constexpr int FILE_FLIP = 7, RANK_FLIP = 56;

constexpr int transpose(int square) {
    return file_of_index(square) * 8 + rank_of_index(square);
}
constexpr u64 bit(int square) {
    return u64{1} << square;
}

// Equal men of one side, numbered together.
struct Group {
    u8 kind = 0;
    u8 count = 0;
};

// How the positions of one table are numbered.
struct Layout {
    Scheme scheme = Scheme::PAWNLESS;
    // The men of the leading part: those of the side to move or, with FREE_PAWN, the other side's pawns.
    Table<Group, 3> leading{};
    const BaseTable* base = nullptr;     // of these men; none: the king pair alone
    Table<Group, 3> following{};         // the other side's men, most significant first
    const BaseTable* ep_base = nullptr;  // of the side to move without its pawns; none: the king pair alone
    u64 ordinary = 0;                    // positions without an en-passant capture
    u64 range = 0;                       // all positions
};

Table<Table<Layout, 2>, ENDING_COUNT> layouts;

Layout& layout_of(int ending, Side side) {
    return layouts[ending - 1][side];
}

// A position turned so that its reference king stands where the tables want it.
struct View {
    SideSquares mover, waiting;
    int ep_square = NO_EP_SQUARE;

    template <typename Map> void map_squares(Map map) {
        for (SideSquares* men : {&mover, &waiting}) {
            men->king = static_cast<u8>(map(men->king));
            for (int row = 0; row < men->men.size(); ++row)
                for (int i = 0; i < men->count[row]; ++i)
                    men->men[row][i] = static_cast<u8>(map(men->men[row][i]));
        }
        if (ep_square != NO_EP_SQUARE)
            ep_square = map(ep_square);
    }
};

bool in_triangle(int king) {
    return file_of_index(king) < 4 && rank_of_index(king) <= file_of_index(king);
}

void normalise(View& view, Scheme scheme, Side side, int mirror) {
    int flip = file_of_index(view.mover.king) >= 4 ? FILE_FLIP : 0;
    if (scheme == Scheme::PAWNS)
        flip ^= (side == BLACK ? RANK_FLIP : 0) ^ (mirror != 0 ? RANK_FLIP : 0);
    else
        flip ^= rank_of_index(view.mover.king) >= 4 ? RANK_FLIP : 0;
    view.map_squares([flip](int square) { return square ^ flip; });
    if (scheme == Scheme::PAWNS)
        return;
    const int reference = view.mover.king, other = view.waiting.king;
    const bool off_diagonal = file_of_index(reference) != rank_of_index(reference);
    if (!(in_triangle(reference) && (file_of_index(other) >= rank_of_index(other) || off_diagonal)))
        view.map_squares(transpose);
}

// A number under construction, with the squares of the men it already holds.
class Numbering {
public:
    // The kings come first. A pair outside the tables makes the position one without a number.
    Numbering(const View& view, Scheme scheme)
        : own_king_(view.mover.king), faced_king_(view.waiting.king),
          taken_(bit(own_king_) | bit(faced_king_)) {
        pair_ = index_tables().king_pairs[static_cast<int>(scheme)][view.mover.king][view.waiting.king];
        exists_ = pair_ != INVALID_KING_PAIR;
        number_ = exists_ ? pair_ : 0;
    }

    void start_from(const BaseTable& base) { number_ = exists_ ? base.before[pair_] : 0; }

    // Places the men of the leading part, groups in order; their number counts from the base table's.
    void place_leading(const Table<Group, 3>& groups, const SideSquares& men) {
        u64 placement = 0;
        for (const Group& group : groups)
            if (group.count > 0)
                placement = placement * choose(room(group.kind), group.count) + leading_group(group, men);
        number_ += placement;
    }

    void add_digit(u64 digit, u64 radix) { number_ = number_ * radix + digit; }

    void take(int square, bool pawn) {
        taken_ |= bit(square);
        taken_by_pawns_ |= pawn ? bit(square) : 0;
    }

    // Appends equal men that may stand on every free square.
    void append(int kind, const Table<u8, 3>& squares, int count) {
        const u64 blocked = kind == PAWN ? ~PAWN_SQUARES | taken_by_pawns_ : taken_;
        const auto digit_of = [&](int square) {
            exists_ &= (kind != PAWN) || (bit(square) & PAWN_SQUARES) != 0;
            return static_cast<u64>(square - std::popcount(blocked & (bit(square) - 1)));
        };
        const u64 digit = combination(squares, count, digit_of);
        add_digit(digit, choose(static_cast<u64>(64 - std::popcount(blocked)), count));
        for (int i = 0; i < count; ++i)
            take(squares[i], kind == PAWN);
    }

    // Men that share a square may have led beyond `range`.
    u32 result(u64 offset, u64 range) const {
        return exists_ && number_ + offset < range ? static_cast<u32>(number_ + offset) : NO_INDEX;
    }

private:
    // Numbers a set of equal men: lower square first, so that their order does not matter.
    template <typename DigitOf> static u64 combination(Table<u8, 3> squares, int count, DigitOf digit_of) {
        const int size = count;
        for (int i = 1; i < size; ++i)
            for (int j = i; j > 0 && squares[j] < squares[j - 1]; --j)
                std::swap(squares[j], squares[j - 1]);
        u64 sum = 0;
        for (int i = 0; i < size; ++i)
            sum += choose(digit_of(squares[i]), static_cast<int>(i) + 1);
        return sum;
    }

    u64 room(int kind) const { return static_cast<u64>(index_tables().room(kind, faced_king_, own_king_)); }

    u64 leading_group(const Group& group, const SideSquares& men) {
        const int row = std::max<int>(group.kind, PAWN) - PAWN;
        const auto& numbers = index_tables().placement[group.kind][faced_king_];
        const bool king_counts = numbers[own_king_] != NOT_PLACEABLE;
        const auto digit_of = [&](int square) {
            const u8 number = numbers[square];
            exists_ &= number != NOT_PLACEABLE;
            return static_cast<u64>(number) - (king_counts && own_king_ < square ? 1u : 0u);
        };
        for (int i = 0; i < group.count; ++i)
            take(men.men[row][i], group.kind <= PAWN);
        return combination(men.men[row], group.count, digit_of);
    }

    int own_king_, faced_king_;
    u64 taken_, taken_by_pawns_ = 0;
    u64 number_ = 0;
    u16 pair_ = 0;
    bool exists_ = true;
};

// Takes the man on `square` out of a list of equal men.
void remove_man(SideSquares& men, int kind, int square) {
    const int row = kind - PAWN;
    auto& list = men.men[row];
    const auto last = list.begin() + men.count[row];
    const auto found = std::find(list.begin(), last, static_cast<u8>(square));
    if (found != last) {
        *found = *(last - 1);
        --men.count[row];
    }
}

bool stands_on(const SideSquares& men, int kind, int square) {
    const int row = kind - PAWN;
    const auto last = men.men[row].begin() + men.count[row];
    return std::find(men.men[row].begin(), last, static_cast<u8>(square)) != last;
}

struct EnPassant {
    int from = -1;  // square of the capturing pawn; -1 when none can
    int pair = 0;   // 0..13, for the two pawns
};

// The capture that is possible in a view. When two pawns can capture, the one towards the file a counts.
EnPassant find_en_passant(const View& view) {
    const int target = view.ep_square;
    if (target == NO_EP_SQUARE || rank_of_index(target) != 5 || !stands_on(view.waiting, PAWN, target - 8))
        return {};
    if (file_of_index(target) < 7 && stands_on(view.mover, PAWN, target - 7))
        return {target - 7, file_of_index(target)};
    if (file_of_index(target) > 0 && stands_on(view.mover, PAWN, target - 9))
        return {target - 9, file_of_index(target) + 6};
    return {};
}

u32 en_passant_index(const Layout& layout, View view, const EnPassant& capture) {
    Numbering numbering(view, layout.scheme);
    remove_man(view.mover, PAWN, capture.from);
    remove_man(view.waiting, PAWN, view.ep_square - 8);
    if (layout.ep_base != nullptr) {
        Table<Group, 3> pieces = layout.leading;
        for (Group& group : pieces)
            group.count = group.kind == PAWN ? u8{0} : group.count;
        numbering.start_from(*layout.ep_base);
        numbering.place_leading(pieces, view.mover);
    }
    numbering.add_digit(static_cast<u64>(capture.pair), EN_PASSANT_PAIRS);
    for (const int square : {capture.from, view.ep_square - 8, view.ep_square, view.ep_square + 8})
        numbering.take(square, true);
    if (view.mover.count[0] > 0)
        numbering.append(PAWN, view.mover.men[0], view.mover.count[0]);
    for (const int kind : {PAWN, QUEEN, ROOK, BISHOP, KNIGHT}) {
        const int row = kind - PAWN;
        if (view.waiting.count[row] > 0)
            numbering.append(kind, view.waiting.men[row], view.waiting.count[row]);
    }
    return numbering.result(layout.ordinary, layout.range);
}

u32 ordinary_index(const Layout& layout, const View& view) {
    Numbering numbering(view, layout.scheme);
    if (layout.base != nullptr) {
        const bool free_pawns = layout.leading[0].kind == FREE_PAWN;
        numbering.start_from(*layout.base);
        numbering.place_leading(layout.leading, free_pawns ? view.waiting : view.mover);
    }
    for (const Group& group : layout.following)
        if (group.count > 0)
            numbering.append(group.kind, view.waiting.men[group.kind - 1u], group.count);
    return numbering.result(0, layout.ordinary);
}

using KindCounts = Table<u8, 6>;

PlacedKinds placed_kinds(const KindCounts& men, int lowest) {
    PlacedKinds kinds;
    for (int kind = QUEEN; kind >= lowest; --kind)
        for (int i = 0; i < men[kind]; ++i)
            kinds.kind[kinds.count++] = static_cast<u8>(kind);
    return kinds;
}

// Groups from the highest kind down.
Table<Group, 3> groups_of(const KindCounts& men) {
    Table<Group, 3> groups{};
    int size = 0;
    for (u8 kind = QUEEN; kind >= PAWN; --kind)
        if (men[kind] > 0)
            groups[size++] = {kind, men[kind]};
    return groups;
}

const BaseTable* find_base(const PlacedKinds& kinds, Scheme scheme) {
    return kinds.count == 0 ? nullptr : &base_table(kinds, scheme);
}

u64 pairs_in(const BaseTable* base, Scheme scheme) {
    if (base != nullptr)
        return base->total;
    return scheme == Scheme::PAWNS ? PAWN_KING_PAIRS : PAWNLESS_KING_PAIRS;
}

// Positions of the men that follow the leading part, in which `pawns` pawns and `men` men are placed.
u64 following_range(const Table<Group, 3>& groups, int pawns, int men) {
    u64 range = 1;
    for (const Group& group : groups) {
        const int room = group.kind == PAWN ? 48 - pawns : 64 - men;
        range *= choose(static_cast<u64>(room), group.count);
        men += group.count;
    }
    return range;
}

void count_en_passant(Layout& layout, const KindCounts& mover, const KindCounts& waiting) {
    layout.range = layout.ordinary;
    if (mover[PAWN] == 0 || waiting[PAWN] == 0)
        return;
    layout.ep_base = find_base(placed_kinds(mover, KNIGHT), layout.scheme);
    u64 range = pairs_in(layout.ep_base, layout.scheme) * EN_PASSANT_PAIRS;
    // Two pawns, the square passed over and the one left; the kings block pieces only.
    if (mover[PAWN] + waiting[PAWN] > 2)
        range *= 48 - 4;
    for (int kind = KNIGHT; kind <= QUEEN; ++kind)
        range *= choose(64 - 6, waiting[kind]);
    layout.range += range;
}

Layout make_layout(const Ending& ending, Side side) {
    const int first = side;
    const KindCounts &mover = ending.men[first], &waiting = ending.men[1 - first];
    Layout layout;
    layout.scheme = ending.has_pawns() ? Scheme::PAWNS : Scheme::PAWNLESS;
    PlacedKinds leading = placed_kinds(mover, PAWN);
    KindCounts rest = waiting;
    layout.leading = groups_of(mover);
    if (leading.count == 0 && waiting[PAWN] > 0) {
        leading.count = waiting[PAWN];  // all of them FREE_PAWN
        layout.leading[0] = {FREE_PAWN, waiting[PAWN]};
        rest[PAWN] = 0;
    }
    // Two equal men are numbered before a third of a lower kind and of a higher one alike.
    if (layout.leading[0].count == 1 && layout.leading[1].count == 2)
        std::swap(layout.leading[0], layout.leading[1]);
    layout.following = groups_of(rest);
    const auto pawns = std::find_if(layout.following.begin(), layout.following.end(),
                                    [](const Group& group) { return group.kind == PAWN; });
    if (pawns != layout.following.end())
        std::rotate(layout.following.begin(), pawns, pawns + 1);
    layout.base = find_base(leading, layout.scheme);
    const int leading_pawns = layout.leading[0].kind == FREE_PAWN ? waiting[PAWN] : mover[PAWN];
    layout.ordinary = pairs_in(layout.base, layout.scheme) *
                      following_range(layout.following, leading_pawns, 2 + leading.count);
    count_en_passant(layout, mover, waiting);
    return layout;
}

}  // namespace

void build_index_tables() {
    static bool built = false;
    if (built)
        return;
    built = true;
    build_placement_tables();
    for (int number = 1; number <= ENDING_COUNT; ++number)
        for (const Side side : {WHITE, BLACK})
            layout_of(number, side) = make_layout(ending(number), side);
}

u32 table_index(int ending, Side side, const SideSquares& first, const SideSquares& second, int ep_square,
                int mirror) {
    const Layout& layout = layout_of(ending, side);
    View view{side == WHITE ? first : second, side == WHITE ? second : first, ep_square};
    normalise(view, layout.scheme, side, mirror);
    const EnPassant capture = find_en_passant(view);
    return capture.from >= 0 ? en_passant_index(layout, view, capture) : ordinary_index(layout, view);
}

u64 index_range(int ending, Side side) {
    return layout_of(ending, side).range;
}

}  // namespace quelmar
