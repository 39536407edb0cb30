#include "protocol/epd.h"

#include "protocol/move_text.h"
#include "protocol/root_moves.h"
#include "protocol/text_values.h"

#include <algorithm>

namespace quelmar {

namespace {

constexpr std::string_view DIGITS = "0123456789";

bool consists_of(std::string_view word, std::string_view letters) {
    return word.find_first_not_of(letters) == std::string_view::npos;
}

// Whether `word` can be the field of that number. Placement and side are taken as they come; the others may
// be missing, and operations follow at once.
bool is_fen_field(std::string_view word, std::size_t number) {
    constexpr std::string_view CASTLING = "KQkqABCDEFGHabcdefgh-", SQUARES = "abcdefgh36-";
    switch (number) {
    case 0:
    case 1:
        return true;
    case 2:
        return consists_of(word, CASTLING);
    case 3:
        return consists_of(word, SQUARES);
    default:
        return consists_of(word, DIGITS);
    }
}

std::string take_fen_fields(std::string_view& text) {
    constexpr std::size_t FIELDS = 6;
    std::string fen;
    for (std::size_t number = 0; number < FIELDS; ++number) {
        std::string_view rest = text;
        const std::string_view word = take_word(rest);
        if (word.empty() || !is_fen_field(word, number))
            break;
        fen.append(fen.empty() ? "" : " ").append(word);
        text = rest;
    }
    return fen;
}

// The next word or quoted text of an operation; empty behind its last, where `text` begins at the ";".
std::string take_operand(std::string_view& text) {
    text = skip_space(text);
    if (text.starts_with('"')) {
        const std::size_t end = std::min(text.find('"', 1), text.size());
        std::string operand(text.substr(1, end - 1));
        text = text_from(text, end + 1);
        return operand;
    }
    std::string operand(text.substr(0, text.find_first_of("; \t\n\r")));
    text.remove_prefix(operand.size());
    return operand;
}

struct WantedSan {
    Piece kind = PAWN, promotion = EMPTY;
    std::string_view origin;  // file, rank, both or none
    std::string_view target;

    bool is(const Move& move) const {
        const std::string from = square_text(move.from);
        return (move.flags & CASTLE_ANY) == 0 && kind_of(move.piece) == kind &&
               square_text(move.to) == target && kind_of(move.promotion) == promotion &&
               std::all_of(origin.begin(), origin.end(),
                           [&from](char c) { return from.find(c) != std::string::npos; });
    }
};

// EMPTY for anything but the upper-case letter of a piece.
Piece piece_of_letter(char letter) {
    constexpr std::string_view PIECES = "NBRQK";
    const std::size_t place = PIECES.find(letter);
    return place != std::string_view::npos ? KNIGHT + static_cast<Piece>(place) : EMPTY;
}

WantedSan read_san(std::string_view letters) {
    constexpr std::size_t SQUARE = 2;
    WantedSan san;
    if (const Piece kind = letters.empty() ? EMPTY : piece_of_letter(letters.front()); kind != EMPTY) {
        san.kind = kind;
        letters.remove_prefix(1);
    }
    if (const Piece kind = letters.empty() ? EMPTY : piece_of_letter(letters.back()); kind != EMPTY) {
        san.promotion = kind;
        letters.remove_suffix(1);
    }
    const std::size_t origin = letters.size() - std::min(letters.size(), SQUARE);
    san.origin = letters.substr(0, origin);
    san.target = letters.substr(origin);
    return san;
}

}  // namespace

EpdLine read_epd(std::string_view line) {
    EpdLine epd;
    epd.fen = take_fen_fields(line);
    for (line = skip_space(line); !line.empty(); line = skip_space(line)) {
        EpdOperation operation{.code = take_operand(line), .operands = {}};
        for (std::string operand = take_operand(line); !operand.empty(); operand = take_operand(line))
            operation.operands.push_back(operand);
        if (line.starts_with(';'))
            line.remove_prefix(1);
        if (!operation.code.empty())
            epd.operations.push_back(operation);
    }
    return epd;
}

std::vector<Move> moves_named(std::string_view text) {
    if (const Move* move = find_root_move(text))
        return {*move};
    std::string letters(text);
    std::erase_if(letters,
                  [](char c) { return std::string_view("x-=+#!?:").find(c) != std::string_view::npos; });
    const WantedSan san = read_san(letters);
    std::vector<Move> moves;
    for (const Move* move = root_moves.data(); move->from != 0; ++move) {
        if (san.is(*move))
            moves.push_back(*move);
    }
    return moves;
}

}  // namespace quelmar
