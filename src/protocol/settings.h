// The user's settings: one record, filled at start-up, changed by protocol options, only read elsewhere.
#pragma once

#include "board/types.h"

#include <string>

namespace quelmar {

// Playing styles, values of EngineSettings::style.
inline constexpr int STYLE_NORMAL = 0, STYLE_ACTIVE = 1, STYLE_AGGRESSIVE = 2, STYLE_SUICIDAL = 3;

inline constexpr std::size_t PIECE_LETTERS_MAX = 9, TB_PATH_MAX = 257;  // characters

// Flags are ints holding 0 or 1, so that the tables of keys and options can address every field alike.
struct EngineSettings {
    int selectivity = 6;             // 0..10; 0 switches late-move reductions off
    int null_reduction = 3;          // plies; 0 switches the null move off
    int null_reduction_endgame = 2;  // plies, with little material
    int qsearch_checks = 1;
    int hash_mb = 24;        // transposition table, megabytes
    int fritz_hash_mb = 24;  // stands in for a UCI hash size of 1 or less
    int style = STYLE_ACTIVE;
    int bm_exts = 1;  // Botvinnik-Markoff extension
    int resign_enabled = 0;
    int iid = 1;          // internal iterative deepening
    int white_score = 0;  // thinking lines show White's point of view
    int san_output = 0;   // thinking lines show SAN
    int own_book_default = 0;
    int tbook = 0;
    int grain_size = 4;  // evaluation units per unit of search score; used through grain()
    int show_curr_line = 0;
    int show_refutations = 0;
    std::string piece_letters = "PNBRQK";  // pawn, knight, bishop, rook, queen, king; may be shorter or odd
    std::string tb_path;                   // directory list
    int tb_cache_mb = 1;

    // grain_size clamped to what the search can divide and shift by, 1..31.
    int grain() const { return grain_size < 1 ? 1 : grain_size > 31 ? 31 : grain_size; }
};

extern EngineSettings settings;  // defined in protocol_state.cpp

}  // namespace quelmar
