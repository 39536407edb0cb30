#include "board/setup.h"

#include "board/attacks.h"
#include "board/consistency.h"
#include "board/hash_keys.h"
#include "board/position.h"
#include "board/square_tables.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

namespace quelmar {

namespace {

struct FenFields {
    std::string_view castling, en_passant, halfmove_clock, move_number;
    std::string_view rest;
};

// Squares of the rooks that may castle, White short, long, Black short, long; 0 without the right. A right
// without its rook is dropped. The functions that find them need board and piece lists.
using CastlingRooks = Table<Square, 4>;

// Which of several rooks on one side of the king a letter of KQkq means.
enum class RookMeant { NEAREST, OUTERMOST };

constexpr char CASTLING_LETTERS[] = "KQkq";  // in the order of the bits
constexpr char WHITE_FILES[] = "ABCDEFGH", BLACK_FILES[] = "abcdefgh";

std::string_view take_field(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view field = text.substr(0, text.find(' '));
    text.remove_prefix(field.size());
    return field;
}

// -1 if the letter is none of them.
int place_of(char letter, std::string_view letters) {
    const std::size_t place = letters.find(letter);
    return place != std::string_view::npos ? static_cast<int>(place) : -1;
}

Side side_of_castling(int index) {
    return index < 2 ? WHITE : BLACK;
}

bool is_rook_of(Side side, Square square) {
    return position.at(square) == man_of(side, ROOK);
}

bool king_on_back_rank(Side side) {
    return rank_of(position.king_square(side)) == (side == WHITE ? RANK_1 : RANK_8);
}

// 0 if there is none.
Square rook_beside_king(int castling, RookMeant meant) {
    const Side side = side_of_castling(castling);
    if (meant == RookMeant::OUTERMOST && !king_on_back_rank(side))
        return 0;
    const int step = castling % 2 == 0 ? 1 : -1;
    Square found = 0;
    for (Square square = position.king_square(side) + step; is_playing_square(square); square += step) {
        if (!is_rook_of(side, square))
            continue;
        found = square;
        if (meant == RookMeant::NEAREST)
            break;
    }
    return found;
}

void allow_rook_on_file(CastlingRooks& rooks, Side side, int file) {
    const Square king = position.king_square(side), rook = king - file_of(king) + file;
    if (king_on_back_rank(side) && is_rook_of(side, rook))
        rooks[2 * side + (rook > king ? 0 : 1)] = rook;
}

// Whether the king of `side` stood in check before the enemy pawn on `pawn` came from `origin`.
bool was_in_check_before(Side side, Square pawn, Square origin) {
    u8 &now = position.board[pawn], &then = position.board[origin];
    std::swap(now, then);
    const bool checked = in_check(side);
    std::swap(now, then);
    return checked;
}

// `text` begins at the side to move; fields that are missing are empty.
FenFields split_fen_fields(std::string_view text) {
    take_field(text);
    FenFields fields;
    fields.castling = take_field(text);
    fields.en_passant = take_field(text);
    fields.halfmove_clock = take_field(text);
    fields.move_number = take_field(text);
    fields.rest = text.substr(std::min(text.find_first_not_of(' '), text.size()));
    return fields;
}

// KQkq, or file letters (A to H for White, a to h for Black) for the rook on that file. For outermost rooks,
// and in all file letters, the king has to stand on its back rank.
CastlingRooks castling_rooks(std::string_view field, RookMeant meant) {
    CastlingRooks rooks{};
    // An operation of an EPD line without a castling field ("bm") names no rooks.
    const bool has_files = field.find_first_not_of("KQkqABCDEFGHabcdefgh") == std::string_view::npos;
    for (const char letter : field) {
        const int castling = place_of(letter, CASTLING_LETTERS);
        const int white_file = place_of(letter, WHITE_FILES), black_file = place_of(letter, BLACK_FILES);
        if (castling >= 0)
            rooks[castling] = rook_beside_king(castling, meant);
        else if (has_files && white_file >= 0)
            allow_rook_on_file(rooks, WHITE, white_file);
        else if (has_files && black_file >= 0)
            allow_rook_on_file(rooks, BLACK, black_file);
    }
    return rooks;
}

// The square that the field names if the last move can have been the double step over it, otherwise 0. Needs
// the side to move as well.
Square possible_en_passant(std::string_view field) {
    const Side us = position.side_to_move, them = other_side(us);
    const int skipped_rank = us == WHITE ? RANK_6 : RANK_3, step = -forward_of(us);  // the way the pawn went
    if (field.size() != 2 || field[0] < 'a' || field[0] > 'h' || field[1] != '1' + skipped_rank)
        return 0;
    const Square skipped = square_at(field[0] - 'a', skipped_rank);
    const Square pawn = skipped + step, origin = skipped - step;
    if (position.at(skipped) != EMPTY || position.at(origin) != EMPTY ||
        position.at(pawn) != man_of(them, PAWN))
        return 0;
    return was_in_check_before(us, pawn, origin) ? 0 : skipped;
}

// What fits into the clock; 0 if the field is no number.
u8 read_halfmove_clock(std::string_view field) {
    constexpr unsigned LIMIT = std::numeric_limits<u8>::max();
    unsigned plies = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), plies);
    if (error == std::errc::result_out_of_range)
        return LIMIT;
    return static_cast<u8>(std::min(plies, LIMIT));
}

constexpr char PIECE_CODES[] = " PNBRQKpnbrqk";  // in the order of the piece codes
constexpr std::string_view SEPARATORS = " /;";   // each of them ends a rank

bool is_separator(char c) {
    return SEPARATORS.find(c) != std::string_view::npos;
}

void clear_board() {
    position.board.fill(OFF_BOARD);
    for (u8 square : square_of_index)
        position.board[square] = EMPTY;
}

bool one_king_each() {
    const auto count = [](Piece piece) {
        return std::count(position.board.begin(), position.board.end(), static_cast<u8>(piece));
    };
    return count(WHITE_KING) == 1 && count(BLACK_KING) == 1;
}

// Reads the placement and moves `text` behind the separator that ends rank 1.
FenError parse_placement(const char*& text) {
    for (Square square = A8; square >= FIRST_SQUARE; ++text) {
        const char c = *text;
        if (c == '\0')
            return FenError::PLACEMENT_CUT_SHORT;
        if (is_separator(c)) {
            square = (square & ~15) - 16;
        } else if (c >= '0' && c <= '9') {
            if (file_of(square) + (c - '0') > 8)
                return FenError::PLACEMENT_IMPOSSIBLE;
            square += c - '0';
        } else {
            const int code = place_of(c, PIECE_CODES);
            if (code < 0 || !is_playing_square(square))
                return FenError::PLACEMENT_IMPOSSIBLE;
            position.board[square] = static_cast<u8>(code);
            if (!is_separator(text[1]))
                ++square;
        }
    }
    return one_king_each() ? FenError::NONE : FenError::PLACEMENT_IMPOSSIBLE;
}

// Entry 0 of the stack and the piece lists, from board and side to move; castle_lost is left to the caller.
void init_position_state() {
    position.search_ply = 0;
    position.game_ply = 0;
    position.dropped_plies = 0;
    move_list.start_of(0) = move_list.move_stack.data();
    UndoRecord& here = position.current();
    here = UndoRecord{};
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
    position.sets = piece_sets_of_board();
    here.key = compute_key();
    here.pawn_key = compute_pawn_key();
}

// Notes where king and rook of every allowed castling stand.
void set_castling(const CastlingRooks& rooks) {
    position.castle_bits_of.fill(0);
    u8& lost = position.current().castle_lost;
    lost = CASTLE_ANY;
    for (int i = 0; i < rooks.size(); ++i) {
        if (rooks[i] == 0)
            continue;
        const auto bit = static_cast<u8>(1 << i);
        const Side side = i < 2 ? WHITE : BLACK;
        const Square king = position.king_square(side);
        lost = static_cast<u8>(lost & ~bit);
        position.king_home[side] = king;
        position.castle_rook_square[i] = rooks[i];
        position.castle_bits_of[king] |= bit;
        position.castle_bits_of[rooks[i]] |= bit;
    }
}

void read_fields(const FenFields& fields, FenFieldsRead wanted) {
    if (wanted == FenFieldsRead::CASTLING) {
        set_castling(castling_rooks(fields.castling, RookMeant::NEAREST));
        return;
    }
    set_castling(castling_rooks(fields.castling, RookMeant::OUTERMOST));
    position.current().ep_square = narrow<u8>(possible_en_passant(fields.en_passant));
    position.current().halfmove_clock = read_halfmove_clock(fields.halfmove_clock);
}

}  // namespace

// ---- faults ----

namespace {

// `fen` from the side to move on; its placement has been read.
std::string_view behind_placement(std::string_view fen) {
    for (int rank = 0; rank < 8; ++rank)
        fen.remove_prefix(fen.find_first_of(SEPARATORS) + 1);
    return fen;
}

bool has_all_rights(std::string_view castling) {
    const int lost = std::popcount(position.current().castle_lost);
    return castling == "-" || castling.size() + static_cast<std::size_t>(lost) == CastlingRooks::size();
}

bool is_number(std::string_view field) {
    return field.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

std::vector<FenFault> faults_of_fields(std::string_view fen) {
    const FenFields fields = split_fen_fields(behind_placement(fen));
    std::vector<FenFault> faults;
    const auto expect = [&faults](bool fits, const char* what, std::string_view text) {
        if (!fits && !text.empty())
            faults.push_back({what, text});
    };
    expect(has_all_rights(fields.castling),
           "not all of these castling rights are possible:", fields.castling);
    expect(fields.en_passant == "-" || position.current().ep_square != 0,
           "no pawn can have passed this square:", fields.en_passant);
    expect(is_number(fields.halfmove_clock), "this halfmove clock is no number:", fields.halfmove_clock);
    expect(is_number(fields.move_number), "this move number is no number:", fields.move_number);
    expect(false, "this stands behind the last field:", fields.rest);
    return faults;
}

// ---- out ----

namespace {

std::string placement_text() {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        const auto put_empty = [&] {
            if (empty > 0)
                text += std::to_string(std::exchange(empty, 0));
        };
        for (int file = 0; file < 8; ++file) {
            const Piece piece = position.at(square_at(file, rank));
            if (piece == EMPTY) {
                ++empty;
                continue;
            }
            put_empty();
            text += PIECE_CODES[piece];
        }
        put_empty();
        text += rank > 0 ? "/" : "";
    }
    return text;
}

std::string castling_text() {
    std::string text;
    for (int i = 0; i < CastlingRooks::size(); ++i) {
        if ((position.current().castle_lost & 1 << i) != 0)
            continue;
        const Square rook = position.castle_rook_square[i];
        const bool is_outermost = rook == rook_beside_king(i, RookMeant::OUTERMOST);
        const char* files = side_of_castling(i) == WHITE ? WHITE_FILES : BLACK_FILES;
        text += is_outermost ? CASTLING_LETTERS[i] : files[file_of(rook)];
    }
    return text.empty() ? "-" : text;
}

std::string en_passant_text() {
    const Square square = position.current().ep_square;
    if (square == 0)
        return "-";
    return {BLACK_FILES[file_of(square)], static_cast<char>('1' + rank_of(square))};
}

}  // namespace

std::string fen_text() {
    const bool white = position.side_to_move == WHITE;
    const int plies = position.game_ply + position.dropped_plies;
    const int moves_of_black = (plies + (white ? 1 : 0)) / 2;
    return placement_text() + (white ? " w " : " b ") + castling_text() + " " + en_passant_text() + " " +
           std::to_string(position.current().halfmove_clock) + " " + std::to_string(1 + moves_of_black);
}

FenError parse_fen(const char* text, FenFieldsRead fields) {
    position.usable = false;
    clear_board();
    const FenError error = parse_placement(text);
    if (error != FenError::NONE)
        return error;
    if (*text != 'w' && *text != 'W' && *text != 'b' && *text != 'B')
        return FenError::NO_SIDE_TO_MOVE;
    position.side_to_move = *text == 'w' || *text == 'W' ? WHITE : BLACK;
    init_position_state();
    read_fields(split_fen_fields(text), fields);
    position.usable = true;
    assert(position_is_consistent());
    return FenError::NONE;
}

}  // namespace quelmar
