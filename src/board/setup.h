// Positions from text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quelmar {

inline constexpr char START_FEN[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq";

// What is wrong with a position, in the order in which it is found.
enum class FenError { NONE, PLACEMENT_CUT_SHORT, PLACEMENT_IMPOSSIBLE, NO_SIDE_TO_MOVE };

// What is read behind the side to move.
enum class FenFieldsRead {
    CASTLING,  // KQkq as the rooks nearest to the king
    ALL,       // KQkq as the outermost rooks; en-passant square and halfmove clock as well
};

// Sets the position up from FEN or EPD text, with clocks at their defaults, and forgets the game's history.
// After an error the position is not usable.
FenError parse_fen(const char* text, FenFieldsRead fields = FenFieldsRead::CASTLING);

// A part of a FEN that is read as if it were not there.
struct FenFault {
    const char* what;
    std::string_view text;
};

// What the position, just set up from `fen` by parse_fen(..., ALL), does not have of the fields behind the
// side to move. The texts are parts of `fen`.
std::vector<FenFault> faults_of_fields(std::string_view fen);

// The current position as a FEN that parse_fen(..., ALL) reads back: castling rights as KQkq where these mean
// the rook, otherwise by its file. Moves are counted from the set-up on. Needs a usable position.
std::string fen_text();

}  // namespace quelmar
