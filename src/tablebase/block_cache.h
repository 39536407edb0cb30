// The most recently used blocks of all tables, decoded, in one piece of memory.
//
// The memory holds the entries' headers and behind them their data. An entry that holds a block is in two
// lists: the recency list of all entries, whose old end is replaced first, and one of the 32 chains of its
// table, chosen by block number, through which it is found.
#pragma once

#include "board/types.h"

#include <cstddef>

namespace quelmar {

inline constexpr int NO_VALUE = 32767;  // of a byte and of a table's value

// Bytes of memory per cached block.
inline constexpr std::size_t CACHE_ENTRY_SIZE = 8260;

// Hands over memory for bytes / CACHE_ENTRY_SIZE blocks, aligned as malloc does; empties the cache and closes
// the table files. False, and no entries, when there are fewer than 32 bytes. The memory stays the caller's
// and must live until the next call.
bool init_block_cache(void* memory, std::size_t bytes);

bool block_cache_has_entries();

// A byte (-128..127) of a registered table, out of the cache or its file; NO_VALUE when it cannot be had. A
// table that cannot be read, or not as its check values say, is dropped, see registry.h.
int read_cached_byte(int ending, Side side, u32 block, u32 offset);

}  // namespace quelmar
