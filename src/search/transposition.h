// The transposition table: two bounds per position, two entries per bucket.
#pragma once

#include "board/types.h"
#include "search/score.h"

namespace quelmar {

inline constexpr u8 TT_MATE_THREAT = 4;  // a null move here was answered by a mate

struct TTEntry {
    u32 key_low = 0;
    u32 key_high = 0;
    PackedMove move = 0;
    i16 upper_score = 0;  // +30001: none known
    i16 lower_score = 0;  // -30001: none known
    i16 upper_depth = 0;  // 60ths of a ply
    i16 lower_depth = 0;
    u8 upper_generation = 0;
    u8 lower_generation = 0;
    u8 flags = 0;
    u8 generation = 0;  // of the last write
};
static_assert(sizeof(TTEntry) == 24);

extern u8 tt_generation;  // moved on by reset_search and by a sharp change of the root score

// Replaces the table by an empty one of that many megabytes (at least 16384 buckets). What cannot be had is
// halved until it can. Returns `megabytes`, or what there is instead.
int tt_allocate(int megabytes);

// How many buckets a table of that many megabytes has: the largest power of two that fits, at least 16384.
u64 tt_buckets_for(int megabytes);

// Forgets everything, in a moment whatever the size: the memory of a large table is given back in the
// background.
void tt_clear();

void tt_forget(HashKey key);  // forgets one position

// The entry of the position with this key, or nullptr. Does not look at generations.
TTEntry* tt_probe(HashKey key);

// Asks the memory for the entry of the position with this key, so that a later probe does not wait for it.
void tt_prefetch(HashKey key);

// The same for the positions after all moves of the current ply's list, so that their entries come at the
// same time.
void tt_prefetch_children();

// Record a bound of the current position. `move` 0 leaves the entry's old move. `depth` in 60ths of a ply.
void tt_store_lower(Depth depth, PackedMove move, Score score, u8 flags);
void tt_store_upper(Depth depth, Score score, u8 flags);

// A stored bound as the search uses it at `ply`: mate scores become relative to the root.
Score tt_score_at(Score stored, int ply);

int tt_hashfull();          // expected share of slots used since the last reset, per mille
void tt_count_from_zero();  // restarts the count behind tt_hashfull

}  // namespace quelmar
