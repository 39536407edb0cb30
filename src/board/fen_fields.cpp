#include "board/fen_fields.h"

#include "board/position.h"
#include "eval/attacks.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace quelmar {

namespace {

constexpr std::string_view CASTLING_LETTERS = "KQkq";  // in the order of the bits
constexpr std::string_view WHITE_FILES = "ABCDEFGH", BLACK_FILES = "abcdefgh";

std::string_view take_field(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view field = text.substr(0, text.find(' '));
    text.remove_prefix(field.size());
    return field;
}

Side side_of_castling(std::size_t index) {
    return index < 2 ? WHITE : BLACK;
}

bool is_rook_of(Side side, Square square) {
    return position.at(square) == man_of(side, ROOK);
}

bool king_on_back_rank(Side side) {
    return rank_of(position.king_square(side)) == (side == WHITE ? 0 : 7);
}

// 0 if there is none.
Square rook_beside_king(std::size_t castling, RookMeant meant) {
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
        rooks[2 * static_cast<std::size_t>(side) + (rook > king ? 0 : 1)] = rook;
}

// Whether the king of `side` stood in check before the enemy pawn on `pawn` came from `origin`.
bool was_in_check_before(Side side, Square pawn, Square origin) {
    u8 &now = position.board[static_cast<std::size_t>(pawn)],
       &then = position.board[static_cast<std::size_t>(origin)];
    std::swap(now, then);
    const bool checked = in_check(side);
    std::swap(now, then);
    return checked;
}

}  // namespace

FenFields split_fen_fields(std::string_view text) {
    take_field(text);
    FenFields fields;
    fields.castling = take_field(text);
    fields.en_passant = take_field(text);
    fields.halfmove_clock = take_field(text);
    return fields;
}

CastlingRooks castling_rooks(std::string_view field, RookMeant meant) {
    CastlingRooks rooks{};
    // An operation of an EPD line without a castling field ("bm") names no rooks.
    const bool has_files = field.find_first_not_of("KQkqABCDEFGHabcdefgh") == std::string_view::npos;
    for (const char letter : field) {
        const std::size_t castling = CASTLING_LETTERS.find(letter);
        const std::size_t white_file = WHITE_FILES.find(letter), black_file = BLACK_FILES.find(letter);
        if (castling != std::string_view::npos)
            rooks[castling] = rook_beside_king(castling, meant);
        else if (has_files && white_file != std::string_view::npos)
            allow_rook_on_file(rooks, WHITE, static_cast<int>(white_file));
        else if (has_files && black_file != std::string_view::npos)
            allow_rook_on_file(rooks, BLACK, static_cast<int>(black_file));
    }
    return rooks;
}

Square possible_en_passant(std::string_view field) {
    const Side us = position.side_to_move, them = other_side(us);
    const int skipped_rank = us == WHITE ? 5 : 2, step = us == WHITE ? -16 : 16;  // the way the pawn went
    if (field.size() != 2 || field[0] < 'a' || field[0] > 'h' || field[1] != '1' + skipped_rank)
        return 0;
    const Square skipped = square_at(field[0] - 'a', skipped_rank);
    const Square pawn = skipped + step, origin = skipped - step;
    if (position.at(skipped) != EMPTY || position.at(origin) != EMPTY ||
        position.at(pawn) != man_of(them, PAWN))
        return 0;
    return was_in_check_before(us, pawn, origin) ? 0 : skipped;
}

u8 read_halfmove_clock(std::string_view field) {
    constexpr unsigned LIMIT = std::numeric_limits<u8>::max();
    unsigned plies = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), plies);
    if (error == std::errc::result_out_of_range)
        return LIMIT;
    return static_cast<u8>(std::min(plies, LIMIT));
}

}  // namespace quelmar
