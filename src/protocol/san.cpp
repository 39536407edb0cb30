#include "protocol/san.h"

#include "board/generate.h"
#include "board/move_list.h"
#include "board/position.h"
#include "protocol/move_text.h"
#include "protocol/settings.h"

namespace quelmar {

namespace {

std::string letter_of(Piece kind) {
    const auto index = static_cast<std::size_t>(kind - PAWN);
    return index < settings.piece_letters.size() ? std::string(1, settings.piece_letters[index])
                                                 : std::string();
}

char file_letter(Square square) {
    return static_cast<char>('a' + file_of(square));
}
char rank_digit(Square square) {
    return static_cast<char>('1' + rank_of(square));
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
