// The one game state: a mailbox board, two piece lists threaded through its squares, and a stack of records
// that hold what changes from ply to ply. Beside it the stack of the moves that the generators write, and the
// diagram of the board.
//
// Every record sees the position from its own side to move, so each us/them pair swaps when a move is made.
// No undo information exists beside the stack: taking a move back is a step down plus a repair of the board
// and the lists from the move itself.
//
// The order of the piece lists is behaviour, since the generators walk them: the king first; after a rebuild
// the others in ascending square order; a man keeps its place when it moves; a man that unmake puts back
// stands directly after its king.
#pragma once

#include "board/square_set.h"
#include "board/types.h"
#include "search/score.h"

#include <span>
#include <string>

namespace quelmar {

// How a side's time is counted. Clocks are written by the front ends and read by time management.
enum class ClockKind : i32 {
    WHOLE_GAME,     // time_left_ms for the rest of the game, plus increment
    PER_MOVE,       // time_left_ms for each move, never charged
    FIXED_DEPTH,    // depth_limit iterations, time does not count
    UNLIMITED,      // "go infinite"; has no budget of its own
    MOVES_IN_TIME,  // moves_per_control moves in time_left_ms
};

// One side's clock, kept in every entry of the position stack.
struct SideClock {
    ClockKind kind = ClockKind::WHOLE_GAME;
    i32 moves_per_control = 0;
    i32 time_left_ms = 0;  // may become negative
    i32 depth_limit = 0;   // iterations, for FIXED_DEPTH
    i32 increment_ms = 0;
};

struct PieceLink {
    u8 prev = 0;
    u8 next = 0;
};

// One entry of the position stack.
struct UndoRecord {
    HashKey key = 0;
    u32 pawn_key = 0;
    Move move;              // made from this position, written when it is made; from = 0 for a null move
    u8 halfmove_clock = 0;  // plies since the last capture, pawn move or castling; stays at 255
    u8 castle_lost = 0;     // CASTLE_ bits that are no longer allowed
    u8 ep_square = 0;       // square a pawn skipped on the move that led here, 0 otherwise
    // Men in most danger, worst first; an entry exists only where its value is not 0. Written by
    // find_threats.
    Table<u8, 3> threat_square_them{};
    Table<u8, 3> threat_value_them{};  // in pawns
    Table<u8, 3> threat_square_us{};
    Table<u8, 3> threat_value_us{};
    u8 spare = 0;
    i32 material_us = 0;  // 128ths of a pawn, pawns included, king excluded
    i32 material_them = 0;
    u8 pawns_us = 0;
    u8 pawns_them = 0;
    u8 men_us = 0;  // king and pawns included
    u8 men_them = 0;
    i32 pst_us = 0;  // sums of piece_square, king included
    i32 pst_them = 0;
    Table<SideClock, 2> clock;  // White's, Black's; copied forward by game moves only
};

inline constexpr int POSITION_STACK_SIZE = 1024;
// Entries a search and the printing of its lines may need above the game's last position.
inline constexpr int SEARCH_HEADROOM = 2 * MAX_PLY;

struct Position {
    Table<u8, BOARD_SIZE> board{};               // OFF_BOARD outside the 64 squares, at all times
    Table<PieceLink, BOARD_SIZE> piece_links{};  // heads WHITE_LIST and BLACK_LIST, end LIST_END
    PieceSets sets;                              // the same men as on the board
    Side side_to_move = WHITE;
    Table<Square, 2> king_home{};           // meaningful only with a castling right of that side
    Table<Square, 4> castle_rook_square{};  // White short, long, Black short, long
    // Rights that a man leaving this square loses; follows from the two fields above, made by set-up.
    Table<u8, BOARD_SIZE> castle_bits_of{};
    Table<UndoRecord, POSITION_STACK_SIZE> position_stack;
    int game_ply = 0;       // index of the current entry
    int search_ply = 0;     // moves since the search root, null moves included
    int dropped_plies = 0;  // entries a very long game has lost from the bottom of the stack
    bool usable = false;    // false after a failed set-up: nothing may then look at the position

    UndoRecord& current() { return position_stack[game_ply]; }
    // The record before the current one: its `move` led here. Needs game_ply > 0.
    UndoRecord& previous() { return position_stack[game_ply - 1]; }
    // The record `plies` before the current one. Needs game_ply >= plies.
    UndoRecord& back(int plies) { return position_stack[game_ply - plies]; }
    Piece at(Square square) const { return board[square]; }
    Square first_of(Side side) const { return piece_links[side].next; }
    Square next_man(Square square) const { return piece_links[square].next; }
    Square king_square(Side side) const { return first_of(side); }
};

// Written by set-up, make and unmake; the threat fields by find_threats, the clocks by the front ends and
// time management; read by everyone.
extern Position position;

// Rebuilds both piece lists from the board, in ascending square order after the kings. A colour without a
// king (never produced by set-up) keeps the head entry it had.
void rebuild_piece_lists();

// The sets of the men as they stand on the board now.
PieceSets piece_sets_of_board();

PackedMove pack_move(const Move& move);

// Whether both are the same move, whatever they say about check.
constexpr bool same_packed_move(PackedMove a, PackedMove b) {
    constexpr PackedMove WITHOUT_CHECK_FLAG = 0x7FFFFFFF;
    return ((a ^ b) & WITHOUT_CHECK_FLAG) == 0;
}

// Restores the first six fields; gives_check is 0. Kinds 6 and 7 do not occur and unpack as 0.
Move unpack_move(PackedMove packed);

// The side that was to move when the current search started.
Side root_side();

// Drops entries that no look-back and no clock can reach from the bottom of a nearly full stack. Called by
// the front ends before they play a game move, so that games may be longer than the stack.
void make_room_on_stack();

// Calls `visit` with the squares of `men`, which are all men of `side`, in the order of its piece list.
template <typename Visit> void visit_in_list_order(Side side, SquareSet men, Visit visit) {
    Square square = is_single(men) ? square_of(std::countr_zero(men)) : position.first_of(side);
    for (; men != NO_SQUARES; square = position.next_man(square)) {
        if (!contains(men, square))
            continue;
        men ^= set_of(square);
        visit(square);
    }
}

// List primitives of make and unmake.
inline PieceLink& link_of(Square square) {
    return position.piece_links[square];
}

// The man on `from` keeps its place in the list and is found on `to` from now on.
inline void move_link(Square from, Square to) {
    const PieceLink link = link_of(from);
    link_of(to) = link;
    link_of(link.prev).next = static_cast<u8>(to);
    link_of(link.next).prev = static_cast<u8>(to);
}

inline void unlink_square(Square square) {
    const PieceLink link = link_of(square);
    link_of(link.prev).next = link.next;
    link_of(link.next).prev = link.prev;
}

inline void insert_after_king(Square square, Square king) {
    const u8 successor = link_of(king).next;
    link_of(square) = {static_cast<u8>(king), successor};
    link_of(successor).prev = static_cast<u8>(square);
    link_of(king).next = static_cast<u8>(square);
}

std::string board_diagram();  // the board as text, rank 8 first, 17 lines
void print_board();           // a diagram on standard output

// The move stack shared by all generators. The moves of search ply p are the records from ply_list_start[p]
// up to, not including, ply_list_start[p + 1].
//
// No position that fits on 64 squares has more moves: a square can be entered along 8 lines and from 8
// knight squares, a last rank besides by 3 pawns in 4 promotions each.
inline constexpr int MAX_MOVES_IN_POSITION = 1200;
inline constexpr int MOVE_LIST_PLIES = PLY_RECORDS;

struct MoveList {
    // Room for the longest list at every ply, so that no position can overflow it; pages that no real game
    // touches cost nothing.
    Table<Move, MAX_MOVES_IN_POSITION * MOVE_LIST_PLIES> move_stack;
    Table<Move*, MOVE_LIST_PLIES> ply_list_start{};

    Move*& start_of(int ply) { return ply_list_start[ply]; }
    // The moves of the current search ply.
    std::span<Move> current() { return {start_of(position.search_ply), start_of(position.search_ply + 1)}; }
};

inline MoveList move_list;  // written by the generators and the null move

}  // namespace quelmar
