#include "board/setup.h"

#include "board/fen_fields.h"
#include "board/generate.h"
#include "board/hash_keys.h"
#include "board/position.h"
#include "eval/square_tables.h"
#include "protocol/clocks.h"
#include "protocol/dialect.h"
#include "protocol/protocol_state.h"
#include "search/search_state.h"

#include <algorithm>
#include <string_view>

namespace quelmar {

std::array<Move, MAX_MOVES_IN_POSITION + 1> root_moves;

namespace {

constexpr std::string_view PIECE_CODES = " PNBRQKpnbrqk";  // in the order of the piece codes

bool is_separator(char c) {
    return c == ' ' || c == '/' || c == ';';
}

void clear_board() {
    position.board.fill(OFF_BOARD);
    for (u8 square : square_of_index)
        position.board[square] = EMPTY;
}

int fail(int line) {
    dialect.report_bad_fen(line);
    return 1;
}

bool one_king_each() {
    const auto count = [](Piece piece) {
        return std::count(position.board.begin(), position.board.end(), static_cast<u8>(piece));
    };
    return count(WHITE_KING) == 1 && count(BLACK_KING) == 1;
}

// Reads the placement and moves `text` behind the separator that ends rank 1. Returns 0 or the number of the
// error.
int parse_placement(const char*& text) {
    for (Square square = A8; square >= FIRST_SQUARE; ++text) {
        const char c = *text;
        if (c == '\0')
            return 1;
        if (is_separator(c)) {
            square = (square & ~15) - 16;
        } else if (c >= '0' && c <= '9') {
            if (file_of(square) + (c - '0') > 8)
                return 2;
            square += c - '0';
        } else {
            const std::size_t code = PIECE_CODES.find(c);
            if (code == std::string_view::npos || !is_playing_square(square))
                return 2;
            position.board[static_cast<std::size_t>(square)] = static_cast<u8>(code);
            if (!is_separator(text[1]))
                ++square;
        }
    }
    return one_king_each() ? 0 : 2;
}

// Entry 0 of the stack and the piece lists, from board and side to move; castle_lost is left to the caller.
void init_position_state() {
    position.search_ply = 0;
    position.game_ply = 0;
    position.dropped_plies = 0;
    move_list.start_of(0) = move_list.move_stack.data();
    UndoRecord& here = position.current();
    here = UndoRecord{};
    here.clock = {time_control.fresh_clock(), time_control.fresh_clock()};
    here.men_us = here.men_them = 1;
    for (u8 square : square_of_index) {
        const Piece piece = position.at(square);
        if (!is_man(piece))
            continue;
        const bool ours = side_of(piece) == position.side_to_move;
        (ours ? here.pst_us : here.pst_them) += placement_of(piece, square);
        if (kind_of(piece) == KING)
            continue;
        ++(ours ? here.men_us : here.men_them);
        if (is_pawn(piece))
            ++(ours ? here.pawns_us : here.pawns_them);
        (ours ? here.material_us : here.material_them) += value_of(piece);
    }
    rebuild_piece_lists();
    here.key = compute_key();
    here.pawn_key = compute_pawn_key();
}

// Notes where king and rook of every allowed castling stand.
void set_castling(const CastlingRooks& rooks) {
    position.castle_bits_of.fill(0);
    u8& lost = position.current().castle_lost;
    lost = CASTLE_ANY;
    for (std::size_t i = 0; i < rooks.size(); ++i) {
        if (rooks[i] == 0)
            continue;
        const auto bit = static_cast<u8>(1 << i);
        const Side side = i < 2 ? WHITE : BLACK;
        const Square king = position.king_square(side);
        lost = static_cast<u8>(lost & ~bit);
        position.king_home[static_cast<std::size_t>(side)] = king;
        position.castle_rook_square[i] = rooks[i];
        position.castle_bits_of[static_cast<std::size_t>(king)] |= bit;
        position.castle_bits_of[static_cast<std::size_t>(rooks[i])] |= bit;
    }
}

// What stands behind the side to move, as far as the dialect reads it.
void read_fields(const FenFields& fields) {
    if (!dialect.reads_whole_fen) {
        set_castling(castling_rooks(fields.castling, RookMeant::NEAREST));
        return;
    }
    set_castling(castling_rooks(fields.castling, RookMeant::OUTERMOST));
    position.current().ep_square = narrow<u8>(possible_en_passant(fields.en_passant));
    position.current().halfmove_clock = read_halfmove_clock(fields.halfmove_clock);
}

}  // namespace

int parse_fen(const char* text) {
    position.usable = false;
    clear_board();
    const int error = parse_placement(text);
    if (error != 0)
        return fail(error);
    if (*text != 'w' && *text != 'W' && *text != 'b' && *text != 'B')
        return fail(3);
    position.side_to_move = *text == 'w' || *text == 'W' ? WHITE : BLACK;
    init_position_state();
    read_fields(split_fen_fields(text));
    position.usable = true;
    protocol_state.game_over = false;
    reset_search();
    assert(position_is_consistent());
    return 0;
}

void build_root_moves() {
    reset_search();
    root_moves[0].from = 0;
    if (!position.usable)
        return;
    generate_legal_moves();
    // A set-up position may let the side to move take the king; no game goes on after that.
    const auto end = std::copy_if(move_list.current().begin(), move_list.current().end(), root_moves.begin(),
                                  [](const Move& move) { return kind_of(move.captured) != KING; });
    end->from = 0;
}

}  // namespace quelmar
