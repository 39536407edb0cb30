// Positions by chance, the same in every run and on every machine.
#pragma once

#include "board/position.h"

#include <random>
#include <string>

namespace quelmar {

class RandomPositions {
public:
    explicit RandomPositions(u64 seed) : engine(seed) {}

    // The C++ library's distributions may differ between machines; this does not.
    int below(int bound) { return static_cast<int>(engine() % static_cast<u64>(bound)); }

    // A position with these men beside the kings, in FEN letters ("QRPPqrpp"): pawns on ranks 2 to 7, kings
    // at home as often as not and never side by side. Side to move and castling rights are random too.
    std::string with_men(const std::string& men) {
        std::string board(64, ' ');
        const int white_king = king_place(0), black_king = apart_from(white_king);
        board[static_cast<std::size_t>(white_king)] = 'K';
        board[static_cast<std::size_t>(black_king)] = 'k';
        for (const char letter : men) {
            const bool pawn = letter == 'P' || letter == 'p';
            std::size_t place;
            do {
                place = static_cast<std::size_t>(pawn ? 8 + below(48) : below(64));
            } while (board[place] != ' ');
            board[place] = letter;
        }
        return text_of(board) + (below(2) == 0 ? " w " : " b ") + castling();
    }

    // Up to the usual set of each side.
    std::string middlegame() {
        std::string men;
        for (const bool white : {true, false}) {
            std::string side(static_cast<std::size_t>(below(9)), 'P');
            for (const char* pair : {"NN", "BB", "RR", "Q"})
                side += std::string(pair).substr(static_cast<std::size_t>(below(2)));
            for (const char letter : side)
                men += white ? letter : static_cast<char>(letter - 'A' + 'a');
        }
        return with_men(men);
    }

private:
    int king_place(int home_rank) { return below(2) == 0 ? below(64) : 8 * home_rank + below(8); }

    int apart_from(int other) {
        for (;;) {
            const int place = king_place(7);
            if (std::abs(place % 8 - other % 8) > 1 || std::abs(place / 8 - other / 8) > 1)
                return place;
        }
    }

    std::string castling() {
        std::string rights;
        for (const char letter : std::string("KQkq")) {
            if (below(2) == 0)
                rights += letter;
        }
        return rights.empty() ? "-" : rights;
    }

    static std::string text_of(const std::string& board) {
        std::string text;
        for (std::size_t rank = 8; rank-- > 0;) {
            for (std::size_t file = 0; file < 8; ++file) {
                const char letter = board[8 * rank + file];
                text += letter == ' ' ? '1' : letter;
            }
            text += rank == 0 ? "" : "/";
        }
        return text;
    }

    std::mt19937_64 engine;
};

// Endings that rules of their own know, in FEN letters without the kings.
inline constexpr const char* SPARSE_ENDINGS[] = {
    "P",   "Rp",  "BN",   "Q",     "R",     "RP",    "BB",    "NN",     "NNN",   "Rb",     "Rn",
    "Rr",  "RPr", "BP",   "RNr",   "RBr",   "RNrp",  "Qrb",   "RNbn",   "BPbp",  "BPPbpp", "B",
    "Bp",  "N",   "Npp",  "NNp",   "NNppp", "NNPpp", "BPP",   "BPPp",   "BPPPp", "RPPr",   "RPPrp",
    "QPq", "Qqp", "RRrp", "RBPrp", "NPnp",  "BPnpp", "RPPPn", "RRPbnp", "QPPrr", "",       "QRPqrp",
};

}  // namespace quelmar
