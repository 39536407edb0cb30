#include "tablebase/probe.h"

#include "board/position.h"
#include "tablebase/block_cache.h"
#include "tablebase/catalogue.h"
#include "tablebase/index.h"
#include "tablebase/registry.h"

#include <algorithm>

namespace quelmar {

int tb_max_men = 0;

namespace {

constexpr int MAX_CACHE_MB = sizeof(void*) > 4 ? 65536 : 1024;
constexpr int MATED_VALUE = -32766, MATE_IN_ONE_VALUE = 32766;
// A narrow entry of 1..126 counts from here. The two lowest bytes extend the range by one move each way.
constexpr int NARROW_OFFSET = 32640;

// Entries of kppkp with Black to move that the table has wrong: mated, farther off than a byte can say.
constexpr Table<u32, 7> WRONG_KPPKP_ENTRIES = {56802428, 56811076, 56849992, 56858640,
                                               59592489, 67775659, 71071628};
constexpr int RIGHT_KPPKP_VALUE = -32639;

int read_wide_value(int number, Side side, u32 index) {
    constexpr u32 ENTRIES = TABLE_BLOCK_SIZE / 2;
    const u32 block = index / ENTRIES, offset = 2 * (index % ENTRIES);
    const int low = read_cached_byte(number, side, block, offset);
    const int high = read_cached_byte(number, side, block, offset + 1);
    return low == NO_VALUE || high == NO_VALUE ? NO_VALUE : (low & 255) + 256 * high;
}

int read_narrow_value(int number, Side side, u32 index) {
    if (number == ENDING_KPPKP && side == BLACK &&
        std::find(WRONG_KPPKP_ENTRIES.begin(), WRONG_KPPKP_ENTRIES.end(), index) != WRONG_KPPKP_ENTRIES.end())
        return RIGHT_KPPKP_VALUE;
    const int byte = read_cached_byte(number, side, index / TABLE_BLOCK_SIZE, index % TABLE_BLOCK_SIZE);
    switch (byte) {
    case NO_VALUE:
    case 127:
        return NO_VALUE;
    case 0:
        return 0;
    case -127:
        return -NARROW_OFFSET;
    case -128:
        return NARROW_OFFSET;
    default:
        return byte > 0 ? byte + NARROW_OFFSET : byte - NARROW_OFFSET;
    }
}

// The men of one side, without its king in the counts; false when a kind has more men than any ending.
bool collect_men(Side side, SideSquares& men, u8* counts) {
    men.king = index_of_square[position.king_square(side)];
    for (Square square = position.next_man(position.king_square(side)); square != LIST_END;
         square = position.next_man(square)) {
        const int row = kind_of(position.at(square)) - PAWN;
        if (men.count[row] == men.men[row].size())
            return false;
        men.men[row][men.count[row]++] = index_of_square[square];
    }
    std::copy(men.count.begin(), men.count.end(), counts);
    return true;
}

// The square that the last move skipped. A double step that can be answered en passant has an entry of its
// own, often with another result; where no pawn stands ready the index passes over the square. Entries do not
// ask whether the capture is legal: with a pinned pawn both have the same value.
int skipped_square() {
    const Square square = position.current().ep_square;
    return square == 0 ? NO_EP_SQUARE : index_of_square[square];
}

// Moves to mate become plies from the root.
Score score_of(int value) {
    if (value == 0)
        return 0;
    const int plies = value > 0 ? 1 + 2 * (MATE_IN_ONE_VALUE - value) : 2 * (value - MATED_VALUE);
    return value > 0 ? MATE_SCORE - plies - position.search_ply : -MATE_SCORE + plies + position.search_ply;
}

constexpr std::size_t bytes_of(int megabytes) {
    return static_cast<std::size_t>(megabytes) << 20;
}

// As much of the wanted megabytes as there is; nullptr when there is not even one.
void* allocate_cache(int& megabytes) {
    void* memory = try_allocate_table_memory(bytes_of(megabytes));
    while (memory == nullptr && megabytes > 1) {
        megabytes /= 2;
        memory = try_allocate_table_memory(bytes_of(megabytes));
    }
    return memory;
}

}  // namespace

int setup_tablebases(std::string_view path_list, int cache_mb) {
    static void* cache_memory = nullptr;
    init_block_cache(nullptr, 0);
    free_table_memory(cache_memory);
    cache_memory = nullptr;
    tb_max_men = init_tablebases(path_list);
    int megabytes = std::clamp(cache_mb, 1, MAX_CACHE_MB);
    if (tb_max_men > 0)
        cache_memory = allocate_cache(megabytes);
    if (megabytes != cache_mb)
        table_reports.tell("tbcache of " + std::to_string(cache_mb) + " MB is not available, using " +
                           std::to_string(megabytes) + " MB");
    if (cache_memory != nullptr)
        init_block_cache(cache_memory, bytes_of(megabytes));
    else if (tb_max_men > 0)
        table_reports.tell("no memory for the cache, no table is used");
    return megabytes;
}

int read_table_value(int number, Side side, u32 index) {
    const TableRecord& table = table_record(number, side);
    if (!table.registered() || !block_cache_has_entries() || index >= table.entry_count)
        return NO_VALUE;
    return ending(number).wide ? read_wide_value(number, side, index)
                               : read_narrow_value(number, side, index);
}

bool probe_tablebase(Score& score_out) {
    Table<SideSquares, 2> men;
    MaterialCounts counts{};
    if (!collect_men(WHITE, men[WHITE], counts.data()) || !collect_men(BLACK, men[BLACK], counts.data() + 5))
        return false;
    const int signed_number = ending_by_material(counts);
    if (signed_number == 0)
        return false;
    const bool exchanged = signed_number < 0;
    const int number = std::abs(signed_number);
    const Side side = exchanged ? other_side(position.side_to_move) : position.side_to_move;
    if (!table_record(number, side).registered())
        return false;
    const u32 index = table_index(number, side, men[exchanged ? BLACK : WHITE],
                                  men[exchanged ? WHITE : BLACK], skipped_square(), exchanged ? 1 : 0);
    const int value = read_table_value(number, side, index);
    if (value == NO_VALUE)
        return false;
    score_out = score_of(value);
    return true;
}

}  // namespace quelmar
