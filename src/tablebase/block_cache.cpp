#include "tablebase/block_cache.h"

#include "tablebase/catalogue.h"
#include "tablebase/registry.h"

#include <algorithm>

namespace quelmar {
namespace {

using EntryNumber = u32;             // entries count from 1
constexpr EntryNumber NO_ENTRY = 0;  // also what an empty block directory holds

struct CacheEntry {
    u32 block;
    EntryNumber older, newer;  // recency list; `older` also links the free entries
    EntryNumber chain_next, chain_previous;
    u16 length;  // bytes of data
    u8 ending;
    u8 side;
};

constexpr std::size_t SMALLEST_CACHE = 32, HEADER_AREA = 32;
// A block, and room a decoder may spill into.
constexpr std::size_t DATA_AREA = CACHE_ENTRY_SIZE - HEADER_AREA;
static_assert(sizeof(CacheEntry) <= HEADER_AREA && DATA_AREA >= TABLE_BLOCK_SIZE);

struct Cache {
    CacheEntry* headers = nullptr;
    u8* data = nullptr;
    u32 size = 0;                                      // entries
    u32 ever_used = 0;                                 // entries above have not been touched, and are free
    EntryNumber newest = NO_ENTRY, oldest = NO_ENTRY;  // ends of the recency list
    EntryNumber free = NO_ENTRY;                       // entries that were given back

    CacheEntry& entry(EntryNumber number) const { return headers[number - 1]; }
    u8* data_of(EntryNumber number) const { return data + (number - 1) * DATA_AREA; }
};

Cache cache;

EntryNumber& chain_of(TableRecord& table, u32 block) {
    return table.block_directory[block % BLOCK_CHAINS];
}

EntryNumber& chain_of(const CacheEntry& entry) {
    return chain_of(table_record(entry.ending, entry.side), entry.block);
}

void unlink_recency(EntryNumber number) {
    const CacheEntry& entry = cache.entry(number);
    (entry.newer != NO_ENTRY ? cache.entry(entry.newer).older : cache.newest) = entry.older;
    (entry.older != NO_ENTRY ? cache.entry(entry.older).newer : cache.oldest) = entry.newer;
}

void make_newest(EntryNumber number) {
    CacheEntry& entry = cache.entry(number);
    entry.newer = NO_ENTRY;
    entry.older = cache.newest;
    (cache.newest != NO_ENTRY ? cache.entry(cache.newest).newer : cache.oldest) = number;
    cache.newest = number;
}

void unlink_chain(EntryNumber number) {
    const CacheEntry& entry = cache.entry(number);
    (entry.chain_previous != NO_ENTRY ? cache.entry(entry.chain_previous).chain_next : chain_of(entry)) =
        entry.chain_next;
    if (entry.chain_next != NO_ENTRY)
        cache.entry(entry.chain_next).chain_previous = entry.chain_previous;
}

void make_first_of_chain(EntryNumber number) {
    CacheEntry& entry = cache.entry(number);
    EntryNumber& chain = chain_of(entry);
    entry.chain_previous = NO_ENTRY;
    entry.chain_next = chain;
    if (chain != NO_ENTRY)
        cache.entry(chain).chain_previous = number;
    chain = number;
}

EntryNumber find_block(TableRecord& table, u32 block) {
    EntryNumber number = chain_of(table, block);
    while (number != NO_ENTRY && cache.entry(number).block != block)
        number = cache.entry(number).chain_next;
    if (number == NO_ENTRY)
        return NO_ENTRY;
    if (number != cache.newest) {
        unlink_recency(number);
        make_newest(number);
    }
    if (number != chain_of(table, block)) {
        unlink_chain(number);
        make_first_of_chain(number);
    }
    return number;
}

EntryNumber take_entry() {
    if (cache.free != NO_ENTRY) {
        const EntryNumber number = cache.free;
        cache.free = cache.entry(number).older;
        return number;
    }
    if (cache.ever_used < cache.size)
        return ++cache.ever_used;
    const EntryNumber number = cache.oldest;
    unlink_recency(number);
    unlink_chain(number);
    return number;
}

void give_back(EntryNumber number) {
    cache.entry(number).older = cache.free;
    cache.free = number;
}

bool open_table(TableRecord& table) {
    if (!table.file)
        table.file = open_table_file(table.path.c_str());
    if (!table.file) {
        close_table_files();  // perhaps there were too many
        table.file = open_table_file(table.path.c_str());
    }
    return table.file != nullptr;
}

// What came of reading a block: the number of its bytes, or why it cannot be used.
struct BlockRead {
    u32 length = 0;
    const char* fault = nullptr;
};

constexpr BlockRead UNREADABLE{0, "read error"};

BlockRead read_plain_block(TableRecord& table, bool wide, u32 block, u8* data) {
    const u64 start = u64{block} * TABLE_BLOCK_SIZE, end = u64{table.entry_count} * (wide ? 2 : 1);
    if (start >= end || fseeko(table.file.get(), static_cast<off_t>(start), SEEK_SET) != 0)
        return UNREADABLE;
    // Less than this is a file that has shrunk.
    const auto length = static_cast<std::size_t>(std::min<u64>(end - start, TABLE_BLOCK_SIZE));
    if (std::fread(data, 1, length, table.file.get()) != length)
        return UNREADABLE;
    return {static_cast<u32>(length)};
}

BlockRead read_packed_block(TableRecord& table, u32 block, u8* data) {
    const CompressedTableInfo& info = *table.decoder_info;
    BlockDecoder& decoder = decode_workspace();
    set_output(decoder, data);
    int code = read_compressed_block(decoder, info, table.file.get(), block);
    if (code == FILE_OK)
        code = decode_block(decoder, info);
    if (code != FILE_OK) {
        const char* const words = error_words(code);
        return {0, words != nullptr ? words : "it cannot be decoded"};
    }
    // Bytes that decode need not be the right ones, and a wrong value loses won games.
    return {static_cast<u32>(decoder.output_length), block_fault(decoder, info)};
}

EntryNumber load_block(int number, Side side, TableRecord& table, u32 block) {
    const EntryNumber entry = take_entry();
    u8* const data = cache.data_of(entry);
    BlockRead read{0, "it cannot be opened"};
    if (open_table(table))
        read = table.decoder_info ? read_packed_block(table, block, data)
                                  : read_plain_block(table, ending(number).wide, block, data);
    if (read.fault != nullptr) {
        drop_table(table, read.fault);
        give_back(entry);
        return NO_ENTRY;
    }
    cache.entry(entry) = {
        block,           NO_ENTRY, NO_ENTRY, NO_ENTRY, NO_ENTRY, narrow<u16>(read.length), narrow<u8>(number),
        narrow<u8>(side)};
    make_newest(entry);
    make_first_of_chain(entry);
    return entry;
}

}  // namespace

bool init_block_cache(void* memory, std::size_t bytes) {
    close_table_files();
    cache = Cache{};
    for (int number = 1; number <= ENDING_COUNT; ++number)
        for (const Side side : {WHITE, BLACK}) {
            TableVector<u32>& chains = table_record(number, side).block_directory;
            std::fill(chains.begin(), chains.end(), NO_ENTRY);
        }
    if (bytes < SMALLEST_CACHE)
        return false;
    constexpr std::size_t MOST = 0xFFFFFFFE;
    cache.size = static_cast<u32>(std::min(bytes / CACHE_ENTRY_SIZE, MOST));
    cache.headers = static_cast<CacheEntry*>(memory);
    cache.data = static_cast<u8*>(memory) + cache.size * HEADER_AREA;
    return true;
}

bool block_cache_has_entries() {
    return cache.size > 0;
}

int read_cached_byte(int number, Side side, u32 block, u32 offset) {
    TableRecord& table = table_record(number, side);
    if (cache.size == 0 || table.block_directory.empty())
        return NO_VALUE;
    EntryNumber entry = find_block(table, block);
    if (entry == NO_ENTRY)
        entry = load_block(number, side, table, block);
    if (entry == NO_ENTRY || offset >= cache.entry(entry).length)
        return NO_VALUE;
    return static_cast<i8>(cache.data_of(entry)[offset]);
}

}  // namespace quelmar
