#include "tablemaker/block_parser.h"

#include <bit>
#include <numeric>

namespace quelmar::tablemaker {

namespace {

constexpr std::size_t SAMPLE_BLOCKS = 12, CANDIDATES = 96;
constexpr int LITERAL_COST = 6 * 16, MATCH_COST = 11 * 16;  // 16ths of a bit
constexpr std::size_t SHORTEST_RUN = 3;

// What a byte costs inside a run of this length that repeats an earlier one; at most LITERAL_COST.
u8 cost_in_run(std::size_t length) {
    return static_cast<u8>(std::min<std::size_t>(LITERAL_COST, MATCH_COST / length));
}

std::vector<std::span<const u8>> sample_of(std::span<const u8> table) {
    std::vector<std::span<const u8>> sample;
    const std::size_t blocks = (table.size() + BLOCK_SIZE - 1) / BLOCK_SIZE;
    const std::size_t taken = std::min(blocks, SAMPLE_BLOCKS);
    for (std::size_t i = 0; i < taken; ++i) {
        const std::size_t block = blocks * (2 * i + 1) / (2 * taken);
        sample.push_back(
            table.subspan(block * BLOCK_SIZE, std::min(BLOCK_SIZE, table.size() - block * BLOCK_SIZE)));
    }
    return sample;
}

// Calls f(start, length) for every run of bytes that equals the bytes `distance` earlier.
template <typename F> void for_each_run(std::span<const u8> block, std::size_t distance, const F& f) {
    for (std::size_t i = distance; i < block.size(); ++i) {
        const std::size_t start = i;
        while (i < block.size() && block[i] == block[i - distance])
            ++i;
        if (i - start >= SHORTEST_RUN)
            f(start, i - start);
    }
}

// Distances that repeat much by themselves, the best first. Where a byte repeats its neighbours any distance
// does, which says nothing: there only the edges count.
std::vector<u16> candidates(const std::vector<std::span<const u8>>& sample, const Workers& workers) {
    std::vector<std::vector<u32>>
        changes;  // up to each byte of each block: how many differ from the one before
    for (const auto block : sample) {
        std::vector<u32>& sums = changes.emplace_back(block.size());
        for (std::size_t i = 1; i < block.size(); ++i)
            sums[i] = sums[i - 1] + (block[i] != block[i - 1] ? 1 : 0);
    }
    std::vector<u64> score(BLOCK_SIZE);
    workers.share(BLOCK_SIZE, 64, [&](u64 first, u64 last) {
        for (u64 distance = std::max<u64>(first, 1); distance < last; ++distance)
            for (std::size_t i = 0; i < sample.size(); ++i)
                for_each_run(sample[i], distance, [&](std::size_t start, std::size_t length) {
                    score[distance] += changes[i][start + length - 1] - changes[i][start];
                });
    });
    std::vector<u16> order(BLOCK_SIZE - 1);
    std::iota(order.begin(), order.end(), u16{1});
    std::stable_sort(order.begin() + 1, order.end(), [&](u16 a, u16 b) { return score[a] > score[b]; });
    order.resize(CANDIDATES);  // distance 1, which serves the constant stretches, stays in front
    return order;
}

using Costs = std::vector<u8>;  // of each byte of the sample

Costs costs_with(const std::vector<std::span<const u8>>& sample, std::size_t distance) {
    Costs costs;
    for (const auto block : sample) {
        const std::size_t base = costs.size();
        costs.resize(base + block.size(), u8{LITERAL_COST});
        for_each_run(block, distance, [&](std::size_t start, std::size_t length) {
            std::fill_n(costs.begin() + static_cast<std::ptrdiff_t>(base + start), length,
                        cost_in_run(length));
        });
    }
    return costs;
}

u64 total_of_cheaper(const Costs& a, const Costs& b) {
    u64 total = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        total += std::min(a[i], b[i]);
    return total;
}

}  // namespace

Distances choose_distances(std::span<const u8> table, const Workers& workers) {
    const auto sample = sample_of(table);
    std::vector<u16> open = candidates(sample, workers);
    std::vector<Costs> costs(open.size());
    workers.share(open.size(), 1, [&](u64 i, u64) { costs[i] = costs_with(sample, open[i]); });

    Distances chosen{};
    Costs best(costs[0].size(), u8{LITERAL_COST});
    for (u16& distance : chosen) {
        std::vector<u64> totals(open.size());
        workers.share(open.size(), 8, [&](u64 first, u64 last) {
            for (u64 i = first; i < last; ++i)
                totals[i] = total_of_cheaper(best, costs[i]);
        });
        const auto pick = std::min_element(totals.begin(), totals.end()) - totals.begin();
        distance = open[static_cast<std::size_t>(pick)];
        const Costs& now = costs[static_cast<std::size_t>(pick)];
        std::transform(best.begin(), best.end(), now.begin(), best.begin(),
                       [](u8 a, u8 b) { return std::min(a, b); });
        open.erase(open.begin() + pick);
        costs.erase(costs.begin() + pick);
    }
    return chosen;
}

namespace {

// A match of this length is taken whole: looking at its parts costs time and gains nothing.
constexpr std::size_t LONG_ENOUGH = 256;
constexpr u32 UNREACHED = 0xffffffff;

// The best way on from one byte of the block.
struct Choice {
    u32 cost = UNREACHED;  // bits from here to the end of the block
    u16 length = 1;
    u16 symbol = 0;
};

struct Parser {
    std::span<const u8> block;
    const Distances& distances;
    const SymbolBits& costs;
    std::array<u16, DISTANCE_COUNT> run{};  // match length at the current byte, by distance
    std::array<Choice, BLOCK_SIZE + 1> best{};

    void extend_runs(std::size_t at) {
        for (std::size_t slot = 0; slot < DISTANCE_COUNT; ++slot) {
            const std::size_t distance = distances[slot];
            const bool same = at >= distance && block[at] == block[at - distance];
            run[slot] = same ? static_cast<u16>(run[slot] + 1) : u16{0};
        }
    }

    void offer_match(std::size_t at, std::size_t slot, const LengthCode& as, std::size_t length) {
        const std::size_t symbol = FIRST_MATCH_SYMBOL + slot * LENGTH_CODES + as.code;
        const u32 cost = costs[symbol] + static_cast<u32>(as.extra_bits) + best[at + length].cost;
        if (cost < best[at].cost)
            best[at] = {cost, static_cast<u16>(length), static_cast<u16>(symbol)};
    }

    // The whole run, and of shorter matches the longest of each code.
    void offer_run(std::size_t at, std::size_t slot, bool whole_only) {
        const std::size_t length = run[slot];
        const LengthCode whole = code_of_length(length);
        offer_match(at, slot, whole, length);
        for (unsigned code = 0; code < whole.code && !whole_only; ++code) {
            const std::size_t part = longest_of_code(code);
            offer_match(at, slot, code_of_length(part), part);
        }
    }

    void choose(std::size_t at) {
        extend_runs(at);
        best[at] = {costs[block[at]] + best[at + 1].cost, 1, block[at]};
        const std::size_t longest = *std::max_element(run.begin(), run.end());
        const bool whole_only = longest >= LONG_ENOUGH;
        for (std::size_t slot = 0; slot < DISTANCE_COUNT; ++slot)
            if (run[slot] > 0 && (!whole_only || run[slot] == longest))
                offer_run(at, slot, whole_only);
    }
};

}  // namespace

LengthCode code_of_length(std::size_t length) {
    if (length <= LAST_PLAIN_LENGTH + 1)
        return {static_cast<unsigned>(length - 1), 0, 0};
    const auto rest = static_cast<u32>(length - LAST_PLAIN_LENGTH);
    const int bits = static_cast<int>(std::bit_width(rest)) - 1;
    return {LAST_PLAIN_LENGTH + static_cast<unsigned>(bits), rest - (u32{1} << bits), bits};
}

std::size_t longest_of_code(unsigned code) {
    if (code <= LAST_PLAIN_LENGTH)
        return code + 1;
    return (std::size_t{2} << (code - LAST_PLAIN_LENGTH)) - 1 + LAST_PLAIN_LENGTH;
}

std::vector<Token> parse_block(std::span<const u8> block, const Distances& distances,
                               const SymbolBits& costs) {
    Parser parser{block, distances, costs};
    parser.best[block.size()].cost = 0;
    for (std::size_t at = block.size(); at-- > 0;)
        parser.choose(at);

    std::vector<Token> tokens;
    for (std::size_t at = 0; at < block.size(); at += parser.best[at].length) {
        const Choice& choice = parser.best[at];
        const bool literal = choice.symbol < FIRST_MATCH_SYMBOL;
        const LengthCode as = literal ? LengthCode{0, 0, 0} : code_of_length(choice.length);
        tokens.push_back({choice.symbol, static_cast<u8>(as.extra_bits), static_cast<u16>(as.extra)});
    }
    return tokens;
}

}  // namespace quelmar::tablemaker
