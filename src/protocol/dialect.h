// What the two faces of the program write and read differently, in one place. The first face, spoken unless
// something else is set, is the engine's own: castling in letters, positions without en-passant square and
// clock, diagnostics in its own words. The other is UCI as today's interfaces speak it (standard_uci.h).
#pragma once

#include <string_view>

namespace quelmar {

enum class CastlingText {
    LETTERS,          // O-O, O-O-O
    KING_MOVE,        // e1g1: where the king goes
    KING_TAKES_ROOK,  // e1h1: where the rook stands
};

struct Dialect {
    CastlingText castling = CastlingText::LETTERS;  // as written
    bool reads_any_castling = false;                // however the other side writes it
    bool reads_whole_fen = false;                   // rooks by their files, en-passant square, halfmove clock
    bool starts_in_uci = false;                     // without waiting for "uci"
    bool plays_on_without_table = false;  // a faulty table file is left out instead of ending the program
    const char* current_line_head = "info currline";  // what the moves of "info currline" follow
    void (*report_bad_fen)(int error) = nullptr;  // 1 placement cut short, 2 no placement, 3 no side to move
    // Acts on a command line that arrives during a UCI search.
    void (*uci_line_during_search)(std::string_view line) = nullptr;
};

// Written once at start-up and, for `castling`, by the option UCI_Chess960.
extern Dialect dialect;

// What a line begins with that the active protocol ignores: "#" or "info string".
const char* comment_head();

}  // namespace quelmar
