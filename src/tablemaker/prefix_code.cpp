#include "tablemaker/prefix_code.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <queue>

namespace quelmar::tablemaker {

namespace {

// Lengths of the unrestricted Huffman code; symbols without a count get 0, a lone symbol gets 1.
std::vector<u8> huffman_lengths(std::span<const u64> counts) {
    struct Tree {
        u64 count;
        std::size_t node;
        bool operator>(const Tree& other) const {
            return count != other.count ? count > other.count : node > other.node;
        }
    };
    std::priority_queue<Tree, std::vector<Tree>, std::greater<>> trees;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol)
        if (counts[symbol] != 0)
            trees.push({counts[symbol], symbol});
    std::vector<u8> lengths(counts.size());
    if (trees.size() == 1)
        lengths[trees.top().node] = 1;
    std::vector<std::size_t> parent(2 * counts.size());
    std::size_t nodes = counts.size();
    while (trees.size() > 1) {
        const Tree a = trees.top();
        trees.pop();
        const Tree b = trees.top();
        trees.pop();
        parent[a.node] = parent[b.node] = nodes;
        trees.push({a.count + b.count, nodes++});
    }
    if (nodes == counts.size())
        return lengths;
    std::vector<u8> depth(nodes);
    for (std::size_t node = nodes - 1; node-- > 0;) {
        if (node < counts.size() && counts[node] == 0)
            continue;
        depth[node] = static_cast<u8>(depth[parent[node]] + 1);
        if (node < counts.size())
            lengths[node] = depth[node];
    }
    return lengths;
}

// Runs of equal lengths, as symbols of the two auxiliary codes.
constexpr std::size_t RUN_OF = 32, AUXILIARY_SYMBOLS = 64, LONGEST_AUXILIARY = 12;
constexpr u32 SHORTEST_RUN = 2, LONG_RUN = 32;

struct RunSymbol {
    std::size_t symbol;
    u32 extra;
    int extra_bits;
};

// How a run of `times` equal lengths beyond SHORTEST_RUN is told.
RunSymbol run_symbol(u32 times) {
    if (times < LONG_RUN)
        return {times, 0, 0};
    const u32 rest = times - (LONG_RUN - 1);
    const int bits = static_cast<int>(std::bit_width(rest)) - 1;
    return {LONG_RUN + static_cast<std::size_t>(bits), rest - (u32{1} << bits), bits};
}

struct Run {
    u8 length;
    u32 times;
};

std::vector<Run> runs_of(std::span<const u8> lengths) {
    std::vector<Run> runs;
    for (const u8 length : lengths) {
        if (runs.empty() || runs.back().length != length)
            runs.push_back({length, 0});
        ++runs.back().times;
    }
    return runs;
}

// The plain form of lengths, for 128 symbols or fewer: fixed width, zeros counted in four bits.
void put_short_lengths(BitWriter& out, std::span<const u8> lengths) {
    constexpr std::size_t MOST_FURTHER_ZEROS = 15;
    const auto longest = *std::max_element(lengths.begin(), lengths.end());
    out.put(longest == 0 ? 1 : 0, 1);
    if (longest == 0)
        return;
    const int width = std::bit_width(longest);
    out.put(static_cast<u32>(width), 5);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        out.put(lengths[i], width);
        if (lengths[i] != 0)
            continue;
        std::size_t zeros = 0;
        while (zeros < MOST_FURTHER_ZEROS && i + 1 < lengths.size() && lengths[i + 1] == 0) {
            ++zeros;
            ++i;
        }
        out.put(static_cast<u32>(zeros), 4);
    }
}

}  // namespace

PrefixCode::PrefixCode(std::span<const u64> counts, int longest) {
    std::vector<u64> flattened(counts.begin(), counts.end());
    lengths_ = huffman_lengths(flattened);
    // Halving the frequencies flattens the tree until it is shallow enough; little is lost.
    while (*std::max_element(lengths_.begin(), lengths_.end()) > longest) {
        for (u64& count : flattened)
            count = (count + 1) / 2;
        lengths_ = huffman_lengths(flattened);
    }
    single_ = std::count_if(lengths_.begin(), lengths_.end(), [](u8 length) { return length != 0; }) == 1;
    assign_codes();
}

void PrefixCode::assign_codes() {
    codes_.resize(lengths_.size());
    u32 code = 0;
    const int longest = *std::max_element(lengths_.begin(), lengths_.end());
    for (int length = 1; length <= longest; ++length) {
        code <<= 1;
        for (std::size_t symbol = 0; symbol < lengths_.size(); ++symbol)
            if (lengths_[symbol] == length)
                codes_[symbol] = code++;
    }
}

void put_code_lengths(BitWriter& out, std::span<const u8> lengths) {
    std::array<u64, 2 * AUXILIARY_SYMBOLS> counts{};
    const std::span<u64> length_counts = std::span(counts).first(AUXILIARY_SYMBOLS);
    const std::span<u64> run_counts = std::span(counts).last(AUXILIARY_SYMBOLS);
    const std::vector<Run> runs = runs_of(lengths);
    for (const Run& run : runs) {
        const bool repeated = run.times >= SHORTEST_RUN;
        ++length_counts[run.length + (repeated ? RUN_OF : 0)];
        if (repeated)
            ++run_counts[run_symbol(run.times - SHORTEST_RUN).symbol];
    }
    const PrefixCode length_code(length_counts, LONGEST_AUXILIARY), run_code(run_counts, LONGEST_AUXILIARY);
    std::array<u8, 2 * AUXILIARY_SYMBOLS> auxiliary{};
    std::copy(run_code.lengths().begin(), run_code.lengths().end(),
              std::copy(length_code.lengths().begin(), length_code.lengths().end(), auxiliary.begin()));

    out.put(0, 1);
    put_short_lengths(out, auxiliary);
    for (const Run& run : runs) {
        const bool repeated = run.times >= SHORTEST_RUN;
        length_code.put(out, run.length + (repeated ? RUN_OF : 0));
        if (!repeated)
            continue;
        const RunSymbol told = run_symbol(run.times - SHORTEST_RUN);
        run_code.put(out, told.symbol);
        out.put(told.extra, told.extra_bits);
    }
}

}  // namespace quelmar::tablemaker
