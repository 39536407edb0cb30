// Reading single terms out of an evaluation.
#pragma once

#include "eval/eval_trace.h"
#include "support/engine.h"

#include <string>
#include <string_view>

namespace quelmar {

// A term of the position set up last, as one side has it. An unknown name fails the test.
inline Points term_of(const EvalTrace& trace, std::string_view term, Side side) {
    for (const EvalTrace::Row& row : trace.rows) {
        if (row.term == term)
            return side == WHITE ? row.white : row.black;
    }
    ADD_FAILURE() << "no term " << term;
    return {};
}

// The same position with the colours exchanged and the ranks mirrored.
inline std::string mirrored_fen(const std::string& fen) {
    const std::size_t blank = fen.find(' ');
    std::string mirrored;
    for (std::size_t end = blank, start = 0; start != std::string::npos; end = start - 1) {
        start = fen.rfind('/', end - 1);
        start = start == std::string::npos ? 0 : start + 1;
        mirrored += fen.substr(start, end - start) + '/';
        if (start == 0)
            break;
    }
    mirrored.back() = ' ';
    mirrored += fen[blank + 1] == 'w' ? 'b' : 'w';
    mirrored += fen.substr(blank + 2);
    for (std::size_t i = 0; i < mirrored.size(); ++i) {
        const auto letter = static_cast<unsigned char>(mirrored[i]);
        const bool side_letter = i == blank + 1;
        if (!side_letter)
            mirrored[i] =
                static_cast<char>(std::isupper(letter) ? std::tolower(letter) : std::toupper(letter));
    }
    return mirrored;
}

}  // namespace quelmar
