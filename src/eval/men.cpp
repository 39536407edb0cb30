// The one walk over the men: both attack maps, mobility, counts and what a man sees on its way.
//
// A slider looks through men that move the same way: through its own kind with full force, and a bishop or
// rook through its own queen as an x-ray, which counts as an attacker of no kind and adds no mobility. A
// bishop or queen also bears on the square beyond an own pawn that it stands diagonally behind.
//
// Attacks are recorded off the board too, where nobody reads them.
#include "board/attacks.h"
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

// The walk over one side's men. What it counts stays in local variables, away from the byte stores into the
// maps, which the compiler must assume to alias everything else.
template <Side Us> class Walk {
    using Face = Facing<Us>;

public:
    Walk(const EvalContext& evaluation, const SideTerms& start)
        : terms(start), pawns(evaluation.pawns.of(Us)),
          centre_closed(evaluation.pawns.structure_type == CENTRE_CLOSED),
          enemy_king_file(file_of(evaluation.of(Face::THEM).king)) {}

    SideTerms run() {
        for (Square square = terms.king; square != LIST_END; square = position.next_man(square))
            visit(square);
        return terms;
    }

private:
    // The king is the first man of a list and the rarest kind, so it is what remains.
    void visit(Square square) {
        switch (position.at(square)) {
        case Face::OUR_PAWN:
            record(square + Face::FORWARD - 1, ATTACK_PAWN);
            record(square + Face::FORWARD + 1, ATTACK_PAWN);
            break;
        case Face::OUR_KNIGHT:
            visit_knight(square);
            break;
        case Face::OUR_BISHOP:
            visit_bishop(square);
            break;
        case Face::OUR_ROOK:
            visit_rook(square);
            break;
        case Face::OUR_QUEEN:
            visit_queen(square);
            break;
        default:
            for (const int offset : king_offsets)
                record(square + offset, ATTACK_KING);
        }
    }

    void visit_knight(Square from) {
        ++terms.knights;
        int reach = 0;
        for (const int offset : knight_offsets) {
            const Square target = from + offset;
            const Piece man = position.at(target);
            record(target, ATTACK_MINOR);
            reach += man != OFF_BOARD && !stuck_pawn(man, target);
        }
        terms.mobility += KNIGHT_MOBILITY[reach];
    }

    // Behind a closed centre a bishop suffers from own pawns on its colour, the less the more squares it
    // sees.
    void visit_bishop(Square from) {
        ++terms.bishops;
        const bool dark = is_dark(from);
        terms.bishop_colours |= dark ? DARK_BISHOP : LIGHT_BISHOP;
        const int reach =
            ray<BISHOP, 15>(from) + ray<BISHOP, -15>(from) + ray<BISHOP, 17>(from) + ray<BISHOP, -17>(from);
        terms.mobility += BISHOP_MOBILITY[reach];
        if (!centre_closed)
            return;
        const int in_its_way = dark ? pawns.dark_pawns + CENTRAL_PAWN_FACTOR * pawns.central_dark
                                    : pawns.light_pawns + CENTRAL_PAWN_FACTOR * pawns.central_light;
        if (in_its_way > MANY_PAWNS_OF_COLOUR)
            terms.bad_bishops += std::max(0, BAD_BISHOP - BAD_BISHOP_PER_SQUARE * reach);
    }

    void visit_rook(Square from) {
        ++terms.rooks;
        if (Face::rank(from) >= RANK_7)
            terms.seventh += ROOK_ON_SEVENTH;
        if ((pawns.pawn_files & file_mask(file_of(from))) == 0) {
            terms.mobility += OPEN_FILE_MOBILITY;
            const int files = file_of(from) - enemy_king_file;
            if (files >= -1 && files <= 1)
                terms.rook_aim += OPEN_FILE_AT_KING;
        }
        const int reach =
            ray<ROOK, 1>(from) + ray<ROOK, -1>(from) + ray<ROOK, 16>(from) + ray<ROOK, -16>(from);
        terms.mobility += ROOK_MOBILITY[reach];
    }

    void visit_queen(Square from) {
        ++terms.queens;
        if (Face::rank(from) >= RANK_7)
            terms.seventh += QUEEN_ON_SEVENTH;
        queen_ray<1>(from);
        queen_ray<-1>(from);
        queen_ray<16>(from);
        queen_ray<-16>(from);
        queen_ray<15>(from);
        queen_ray<-15>(from);
        queen_ray<17>(from);
        queen_ray<-17>(from);
    }

    // Walks one line of a bishop or rook and returns how many squares count for mobility.
    template <Piece Kind, int Direction> int ray(Square from) {
        constexpr int KIND_BIT = Kind == BISHOP ? ATTACK_MINOR : ATTACK_ROOK;
        int reach = 0;
        for (Square target = from + Direction;; target += Direction) {
            const Piece man = position.at(target);
            if (man == OFF_BOARD)
                return reach;
            record(target, KIND_BIT);
            if (man == EMPTY || man == man_of(Us, Kind)) {
                ++reach;
                continue;
            }
            reach += !stuck_pawn(man, target);
            if (man == Face::OUR_QUEEN)
                xray<Kind, Direction>(target + Direction);
            else if (is_forward_diagonal(Direction) && man == Face::OUR_PAWN)
                record(target + Direction, KIND_BIT);
            return reach;
        }
    }

    // The rest of the line behind an own queen.
    template <Piece Kind, int Direction> void xray(Square target) {
        for (;; target += Direction) {
            const Piece man = position.at(target);
            if (man == OFF_BOARD)
                return;
            record(target, ATTACK_XRAY);
            if (man == EMPTY || man == man_of(Us, Kind) || man == Face::OUR_QUEEN)
                continue;
            if (is_forward_diagonal(Direction) && man == Face::OUR_PAWN)
                record(target + Direction, ATTACK_XRAY);
            return;
        }
    }

    // A queen adds no mobility.
    template <int Direction> void queen_ray(Square from) {
        constexpr Piece ALLY = is_diagonal(Direction) ? Face::OUR_BISHOP : Face::OUR_ROOK;
        for (Square target = from + Direction;; target += Direction) {
            const Piece man = position.at(target);
            if (man == OFF_BOARD)
                return;
            record(target, ATTACK_QUEEN);
            if (man == EMPTY || man == Face::OUR_QUEEN || man == ALLY)
                continue;
            if (is_forward_diagonal(Direction) && man == Face::OUR_PAWN)
                record(target + Direction, ATTACK_QUEEN);
            return;
        }
    }

    static constexpr bool is_forward_diagonal(int direction) {
        return direction == Face::FORWARD - 1 || direction == Face::FORWARD + 1;
    }

    // An own pawn that cannot step forward keeps its square from the man behind it.
    static bool stuck_pawn(Piece man, Square square) {
        return man == Face::OUR_PAWN && position.at(square + Face::FORWARD) != EMPTY;
    }

    static void record(Square square, int kind_bit) {
        u8& byte = attack_map[Us][square];
        byte = static_cast<u8>((byte + 1) | kind_bit);
    }

    SideTerms terms;
    const SidePawns& pawns;
    const bool centre_closed;
    const int enemy_king_file;
};

void clear_map(AttackMap& map) {
    std::fill(map.begin() + FIRST_SQUARE, map.begin() + FIRST_SQUARE + 128, u8{0});
}

}  // namespace

void walk_men(EvalContext& context) {
    clear_map(attack_map[WHITE]);
    clear_map(attack_map[BLACK]);
    context.of(WHITE) = Walk<WHITE>(context, context.of(WHITE)).run();
    context.of(BLACK) = Walk<BLACK>(context, context.of(BLACK)).run();
}

}  // namespace quelmar
