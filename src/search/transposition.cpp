// A bucket holds two slots. Slot 0 keeps what is worth most of the current search: deep bounds, and any lower
// bound against upper bounds, since only lower bounds have a move. Slot 1 takes what slot 0 refuses and is
// always overwritten; neither store looks at it first, so one position may stand in both slots, and a probe
// then finds slot 0.
//
// All searches have null windows, so every result is a bound. An entry keeps the best known bound of either
// kind side by side; an exact score is one whose bounds have met. A mate score is kept relative to the node
// that stored it, in the search it is relative to the root.
#include "search/transposition.h"

#include "board/make_move.h"
#include "board/position.h"
#include "platform/platform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <thread>

namespace quelmar {

u8 tt_generation = 0;

namespace {

struct TTBucket {
    Table<TTEntry, 2> slots;
};
static_assert(sizeof(TTBucket) == 48);

constexpr u64 MIN_BUCKETS = 16384;
// The low half of a key reaches no further, and neither do 32-bit sizes.
constexpr u64 MAX_BUCKETS = sizeof(std::size_t) > 4 ? u64{1} << 32 : u64{1} << 26;

struct BucketBlock {
    TTBucket* buckets = nullptr;
    u64 count = 0;  // a power of two

    std::size_t bytes() const { return static_cast<std::size_t>(count) * sizeof(TTBucket); }
};
BucketBlock table;
u64 tt_store_count = 0;  // since the last reset

TTBucket& bucket_of(HashKey key) {
    return table.buckets[(key & 0xFFFFFFFF) & (table.count - 1)];
}

bool holds(const TTEntry& entry, HashKey key) {
    return entry.key_low == static_cast<u32>(key) && entry.key_high == static_cast<u32>(key >> 32);
}

void set_key(TTEntry& entry, HashKey key) {
    entry.key_low = static_cast<u32>(key);
    entry.key_high = static_cast<u32>(key >> 32);
}

// Scores of positions with dozens of queens may lie outside the window; they are kept at its edge. The two
// sentinels are never converted.
i16 score_to_store(Score score) {
    const Score inside = std::clamp(score, -INFINITE_SCORE, INFINITE_SCORE);
    if (inside == INFINITE_SCORE || inside == -INFINITE_SCORE)
        return narrow<i16>(inside);
    if (inside >= TT_MATE_LIMIT)
        return narrow<i16>(inside + position.search_ply);
    if (inside <= -TT_MATE_LIMIT)
        return narrow<i16>(inside - position.search_ply);
    return narrow<i16>(inside);
}

u64 megabytes_of(u64 buckets) {
    return buckets * sizeof(TTBucket) >> 20;
}

}  // namespace

u64 tt_buckets_for(int megabytes) {
    const u64 bytes = static_cast<u64>(std::max(megabytes, 0)) << 20;
    u64 count = MIN_BUCKETS;
    while (count < MAX_BUCKETS && 2 * count * sizeof(TTBucket) <= bytes)
        count *= 2;
    return count;
}

namespace {

// A table of zeros, without buckets when there is no memory for it. Nearly every probe of a large table falls
// on another page, so it wants large ones.
BucketBlock fresh_table(u64 count) {
    BucketBlock fresh{nullptr, count};
    fresh.buckets = static_cast<TTBucket*>(platform::allocate_large(fresh.bytes()));
    return fresh;
}

void release(BucketBlock block) {
    platform::release_large(block.buckets, block.bytes());
}

// To give gigabytes back takes the system a second or more, which nobody has to wait for.
void release_in_background(BucketBlock block) {
    try {
        std::thread([block] { release(block); }).detach();
    } catch (const std::system_error&) {
        release(block);  // no more threads for us
    }
}

}  // namespace

int tt_allocate(int megabytes) {
    const u64 wanted = tt_buckets_for(megabytes);
    release(table);
    for (u64 count = wanted; count > 0; count /= 2) {
        table = fresh_table(count);
        if (table.buckets != nullptr)
            break;
    }
    if (table.buckets == nullptr) {
        std::printf("*** Cannot allocate the transposition table\n");
        std::exit(EXIT_FAILURE);
    }
    return table.count == wanted ? megabytes : static_cast<int>(megabytes_of(table.count));
}

// Writing zeros over a large table would keep the client waiting, so it is exchanged for a new one, unless
// there is no memory for both.
void tt_clear() {
    constexpr u64 LARGE_TABLE_MB = 64;
    if (megabytes_of(table.count) >= LARGE_TABLE_MB) {
        const BucketBlock fresh = fresh_table(table.count);
        if (fresh.buckets != nullptr) {
            release_in_background(table);
            table = fresh;
            return;
        }
    }
    std::memset(static_cast<void*>(table.buckets), 0, table.bytes());
}

void tt_forget(HashKey key) {
    for (TTEntry& entry : bucket_of(key).slots) {
        if (holds(entry, key))
            entry = TTEntry{};
    }
}

TTEntry* tt_probe(HashKey key) {
    for (TTEntry& entry : bucket_of(key).slots) {
        if (holds(entry, key))
            return &entry;
    }
    return nullptr;
}

// A bucket may lie across two cache lines.
void tt_prefetch(HashKey key) {
    const TTBucket& bucket = bucket_of(key);
    __builtin_prefetch(&bucket);
    __builtin_prefetch(reinterpret_cast<const char*>(&bucket + 1) - 1);
}

void tt_prefetch_children() {
    const HashKey key = position.current().key;
    for (const Move& move : move_list.current())
        tt_prefetch(key_after_move(key, &move));
}

void tt_store_lower(Depth depth, PackedMove move, Score score, u8 flags) {
    ++tt_store_count;
    const HashKey key = position.current().key;
    TTBucket& bucket = bucket_of(key);
    const TTEntry& preferred = bucket.slots[0];
    const bool keep = preferred.generation == tt_generation && preferred.lower_depth > depth;
    TTEntry& entry = bucket.slots[keep ? 1 : 0];
    if (!holds(entry, key)) {
        entry.upper_score = INFINITE_SCORE;
        entry.upper_depth = 0;
        set_key(entry, key);
    }
    entry.lower_depth = narrow<i16>(depth);
    if (move != 0)
        entry.move = move;
    entry.generation = entry.lower_generation = tt_generation;
    entry.lower_score = score_to_store(score);
    entry.flags = flags;
}

void tt_store_upper(Depth depth, Score score, u8 flags) {
    ++tt_store_count;
    const HashKey key = position.current().key;
    TTBucket& bucket = bucket_of(key);
    const TTEntry& preferred = bucket.slots[0];
    const bool keep = preferred.generation == tt_generation &&
                      (preferred.upper_depth > depth || preferred.lower_score != -INFINITE_SCORE);
    TTEntry& entry = bucket.slots[keep ? 1 : 0];
    if (!holds(entry, key)) {
        entry.lower_score = -INFINITE_SCORE;
        entry.move = 0;
        entry.lower_depth = 0;
        set_key(entry, key);
    }
    entry.upper_score = score_to_store(score);
    entry.upper_depth = narrow<i16>(depth);
    entry.generation = entry.upper_generation = tt_generation;
    entry.flags = flags;
}

Score tt_score_at(Score stored, int ply) {
    if (std::abs(stored) < TT_MATE_LIMIT || std::abs(stored) == INFINITE_SCORE)
        return stored;
    return stored > 0 ? stored - ply : stored + ply;
}

int tt_hashfull() {
    const double slots = 2.0 * static_cast<double>(table.count);
    const double stores = static_cast<double>(tt_store_count);
    return static_cast<int>(1000.0 * (1.0 - std::exp(stores * std::log(1.0 - 1.0 / slots))));
}

void tt_count_from_zero() {
    tt_store_count = 0;
}

}  // namespace quelmar
