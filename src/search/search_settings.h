// What the user may set about the search. Written by the protocol's options, only read by the search.
#pragma once

namespace quelmar {

// Flags are ints holding 0 or 1, so that the tables of keys and options can address every field alike.
struct SearchSettings {
    int selectivity = 6;             // 0..10; 0 switches late-move reductions off
    int null_reduction = 3;          // plies; 0 switches the null move off
    int null_reduction_endgame = 2;  // plies, with little material
    int qsearch_checks = 1;
    int bm_exts = 1;     // Botvinnik-Markoff extension
    int iid = 1;         // internal iterative deepening
    int grain_size = 4;  // evaluation units per unit of search score; used through grain()

    // grain_size clamped to what the search can divide and shift by, 1..31.
    int grain() const { return grain_size < 1 ? 1 : grain_size > 31 ? 31 : grain_size; }
};

inline SearchSettings search_settings;

}  // namespace quelmar
