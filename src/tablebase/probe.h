// Endgame tables as the search and the front ends see them.
#pragma once

#include "search/score.h"

#include <string_view>

namespace quelmar {

extern int tb_max_men;  // most men, kings included, of any registered table; 0 without tables

// Registers the tables found along the path and allocates a block cache; what an earlier call had taken is
// given back. Sets tb_max_men. A cache size that cannot be had is clamped and told (table_reports); returns
// the size in use. For broken table files see init_tablebases.
int setup_tablebases(std::string_view path_list, int cache_mb);

// Looks the current position up. On success writes the score (of the side to move, relative to search_ply)
// and returns true; false when no table holds the position or its file cannot be read.
bool probe_tablebase(Score& score_out);

// The value of an entry: 0 is drawn; 32766 mates in one move and every move more takes one off; -32766 is
// mated and every move more adds one. NO_VALUE (block_cache.h) when it cannot be had.
int read_table_value(int ending, Side side, u32 index);

}  // namespace quelmar
