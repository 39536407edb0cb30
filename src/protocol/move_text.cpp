#include "protocol/move_text.h"

#include "board/generate.h"
#include "board/position.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/settings.h"

#include <bit>
#include <cstdlib>

namespace quelmar {

CastlingText castling_notation = CastlingText::LETTERS;

namespace {

char file_letter(Square square) {
    return static_cast<char>('a' + file_of(square));
}
char rank_digit(Square square) {
    return static_cast<char>('1' + rank_of(square));
}

constexpr int SHORT_CASTLINGS = CASTLE_WHITE_SHORT | CASTLE_BLACK_SHORT;
constexpr int LONG_CASTLINGS = CASTLE_WHITE_LONG | CASTLE_BLACK_LONG;

bool is_castling(const Move& move) {
    return (move.flags & CASTLE_ANY) != 0;
}

Square castling_rook(const Move& castling) {
    const int index = std::countr_zero(static_cast<unsigned>(castling.flags));
    return position.castle_rook_square[index];
}

std::string castling_text(const Move& castling) {
    if (castling_notation == CastlingText::LETTERS)
        return (castling.flags & SHORT_CASTLINGS) != 0 ? "O-O" : "O-O-O";
    // In Chess960 the way of a castling king may be that of an ordinary king move, or no way at all.
    constexpr int ORDINARY_STEP = 1;
    const bool is_kings_way_clear = std::abs(castling.to - castling.from) > ORDINARY_STEP;
    const bool by_king = castling_notation == CastlingText::KING_MOVE && is_kings_way_clear;
    return square_text(castling.from) + square_text(by_king ? castling.to : castling_rook(castling));
}

// What a move text asks for; a square of 0 matches no move.
struct WantedMove {
    int castlings = 0;  // mask of CASTLE_ bits, 0 for a move by coordinates
    Square from = 0, to = 0;
    Piece promotion_kind = EMPTY;

    bool is(const Move& move) const {
        if (castlings != 0)
            return (move.flags & castlings) != 0;
        if (move.from != from || kind_of(move.promotion) != promotion_kind)
            return false;
        return move.to == to ||
               (protocol_state.standard_uci && is_castling(move) && castling_rook(move) == to);
    }
};

Square read_square(char file, char rank) {
    if (file < 'a' || file > 'h' || rank < '1' || rank > '8')
        return 0;
    return square_at(file - 'a', rank - '1');
}

Piece read_promotion(char letter) {
    switch (letter) {
    case 'Q':
    case 'q':
        return QUEEN;
    case 'R':
    case 'r':
        return ROOK;
    case 'B':
    case 'b':
        return BISHOP;
    case 'N':
    case 'n':
        return KNIGHT;
    default:
        return EMPTY;
    }
}

// "0-0" and "o-o" are meant as "O-O".
std::string castling_letters(std::string_view text) {
    std::string letters(text);
    for (char& c : letters)
        c = c == '0' || c == 'o' ? 'O' : c;
    return letters;
}

WantedMove read_wanted_move(std::string_view text) {
    WantedMove wanted;
    const std::string letters = protocol_state.standard_uci ? castling_letters(text) : std::string(text);
    if (letters.starts_with("O-O-O")) {
        wanted.castlings = LONG_CASTLINGS;
    } else if (letters.starts_with("O-O")) {
        wanted.castlings = SHORT_CASTLINGS;
    } else if (text.size() >= 4) {
        wanted.from = read_square(text[0], text[1]);
        wanted.to = read_square(text[2], text[3]);
        wanted.promotion_kind = text.size() > 4 ? read_promotion(text[4]) : EMPTY;
    }
    return wanted;
}

void print_what_is_legal() {
    print("Legal moves:\n");
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        print_move(*move);
        print("\n");
    }
    print_board();
    print("Hashkey: %llx\n", static_cast<unsigned long long>(position.current().key));
}

}  // namespace

std::string square_text(Square square) {
    return {file_letter(square), rank_digit(square)};
}

std::string move_text(const Move& move) {
    if (is_castling(move))
        return castling_text(move);
    if (move.from == 0)
        return protocol_state.uci_mode ? "0000" : "-";
    std::string text = square_text(move.from) + square_text(move.to);
    if (move.promotion != EMPTY)
        text += protocol_state.uci_mode ? LOWER_LETTERS[move.promotion] : UPPER_LETTERS[move.promotion];
    return text;
}

void print_move(const Move& move) {
    print("%s", move_text(move).c_str());
}

void print_coded_move(int code) {
    const Square from = square_of_index[code & 63];
    const Square to = square_of_index[code >> 7 & 63];
    print("%s%s", square_text(from).c_str(), square_text(to).c_str());
}

const Move* find_root_move(std::string_view text) {
    const WantedMove wanted = read_wanted_move(text);
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        if (wanted.is(*move))
            return move;
    }
    return nullptr;
}

bool parse_move(std::string_view text) {
    if (const Move* move = find_root_move(text)) {
        protocol_state.user_move = *move;
        return true;
    }
    print_what_is_legal();
    return false;
}

namespace {

std::string letter_of(Piece kind) {
    const auto index = static_cast<std::size_t>(kind - PAWN);
    return index < settings.piece_letters.size() ? std::string(1, settings.piece_letters[index])
                                                 : std::string();
}

std::string pawn_san(const Move& move) {
    std::string text = square_text(move.to);
    if (move.captured != EMPTY)
        text = std::string(1, file_letter(move.from)) + "x" + text;
    if (move.promotion != EMPTY)
        text += letter_of(kind_of(move.promotion));
    return text;
}

// The file wherever a man of the kind on another file can go there too, the rank only when all of them stand
// on the mover's file, never both. `legal` tells whether the move itself was among the legal ones.
std::string disambiguation(const Move& move, bool& legal) {
    bool same_file = false, other_file = false;
    legal = false;
    generate_legal_moves();
    for (const Move& candidate : move_list.current()) {
        if (same_squares(candidate, move))
            legal = true;
        else if (candidate.to == move.to && candidate.piece == move.piece)
            (file_of(candidate.from) == file_of(move.from) ? same_file : other_file) = true;
    }
    if (other_file)
        return {file_letter(move.from)};
    return same_file ? std::string(1, rank_digit(move.from)) : std::string();
}

}  // namespace

std::string san_text(const Move& move) {
    if (move.flags != 0 && move.flags != EN_PASSANT)
        return move_text(move);
    if (is_pawn(move.piece))
        return pawn_san(move);
    bool legal = false;
    const std::string origin = disambiguation(move, legal);
    if (!legal)
        return "*";
    return letter_of(kind_of(move.piece)) + origin + (move.captured != EMPTY ? "x" : "") +
           square_text(move.to);
}

}  // namespace quelmar
