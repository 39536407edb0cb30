#include "board/position.h"

#include <algorithm>
#include <cstdio>

namespace quelmar {

Position position;

namespace {

// A stack that is fuller than this is relieved before the next game move.
constexpr int GAME_PLY_LIMIT = POSITION_STACK_SIZE - SEARCH_HEADROOM - 1;
// Leaves more entries than halfmove_clock, and with it any look-back, can count.
constexpr int PLIES_TO_DROP = 512;
static_assert(GAME_PLY_LIMIT - PLIES_TO_DROP > 255);

constexpr int FIRST_CASTLE_KIND = 1, LAST_CASTLE_KIND = 4, EN_PASSANT_KIND = 5;

u32 kind_of_flags(int flags) {
    switch (flags) {
    case CASTLE_WHITE_SHORT:
        return 1;
    case CASTLE_WHITE_LONG:
        return 2;
    case CASTLE_BLACK_SHORT:
        return 3;
    case CASTLE_BLACK_LONG:
        return 4;
    case EN_PASSANT:
        return EN_PASSANT_KIND;
    default:
        return 0;
    }
}

int flags_of_kind(u32 kind) {
    if (kind >= FIRST_CASTLE_KIND && kind <= LAST_CASTLE_KIND)
        return 1 << (kind - FIRST_CASTLE_KIND);
    return kind == EN_PASSANT_KIND ? EN_PASSANT : 0;
}

}  // namespace

// One pass: the men are threaded from the heads on, then the kings are put in front.
void rebuild_piece_lists() {
    Table<u8, 2> king = {link_of(WHITE_LIST).next, link_of(BLACK_LIST).next};
    Table<u8, 2> tail = {WHITE_LIST, BLACK_LIST};
    for (u8 square : square_of_index) {
        const Piece piece = position.at(square);
        if (piece == EMPTY)
            continue;
        const Side side = side_of(piece);
        if (kind_of(piece) == KING) {
            king[side] = square;
            continue;
        }
        link_of(tail[side]).next = square;
        link_of(square).prev = tail[side];
        tail[side] = square;
    }
    for (u8 head : Table<u8, 2>{WHITE_LIST, BLACK_LIST}) {
        link_of(tail[head]).next = LIST_END;
        const u8 first = link_of(head).next;
        link_of(king[head]) = {head, first};
        link_of(first).prev = king[head];
        link_of(head).next = king[head];
    }
}

PieceSets piece_sets_of_board() {
    PieceSets sets;
    for (const u8 square : square_of_index) {
        if (is_man(position.at(square)))
            sets.toggle(position.at(square), set_of(square));
    }
    return sets;
}

PackedMove pack_move(const Move& move) {
    return static_cast<PackedMove>(move.from) | static_cast<PackedMove>(move.to) << 8 |
           static_cast<PackedMove>(move.piece) << 16 | static_cast<PackedMove>(move.captured) << 20 |
           static_cast<PackedMove>(move.promotion) << 24 | kind_of_flags(move.flags) << 28 |
           static_cast<PackedMove>(move.gives_check) << 31;
}

Move unpack_move(PackedMove packed) {
    Move move;
    move.from = static_cast<u8>(packed);
    move.to = static_cast<u8>(packed >> 8);
    move.piece = packed >> 16 & 15;
    move.captured = packed >> 20 & 15;
    move.promotion = packed >> 24 & 15;
    move.flags = narrow<u8>(flags_of_kind(packed >> 28 & 7));
    return move;
}

Side root_side() {
    return position.search_ply % 2 == 0 ? position.side_to_move : other_side(position.side_to_move);
}

void make_room_on_stack() {
    if (position.game_ply < GAME_PLY_LIMIT)
        return;
    auto& stack = position.position_stack;
    std::copy(stack.begin() + PLIES_TO_DROP, stack.begin() + position.game_ply + 1, stack.begin());
    position.game_ply -= PLIES_TO_DROP;
    position.dropped_plies += PLIES_TO_DROP;
}

namespace {

constexpr Table<const char*, 13> diagram_cells = {"|   ", "| P ", "| N ", "| B ", "| R ", "| Q ", "| K ",
                                                  "|=P=", "|=N=", "|=B=", "|=R=", "|=Q=", "|=K="};
constexpr char DIAGRAM_LINE[] = "+---+---+---+---+---+---+---+---+\n";

}  // namespace

std::string board_diagram() {
    std::string text = DIAGRAM_LINE;
    for (int rank = 7; rank >= 0; --rank) {
        for (int file = 0; file < 8; ++file) {
            const Piece piece = position.at(square_at(file, rank));
            const bool dark = (file + rank) % 2 == 0;
            text += piece == EMPTY && dark ? "| . " : diagram_cells[piece];
        }
        text.append("|\n").append(DIAGRAM_LINE);
    }
    return text;
}

void print_board() {
    std::printf("%s", board_diagram().c_str());
}

}  // namespace quelmar
