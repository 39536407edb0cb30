#include "tablemaker/match_distances.h"

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

}  // namespace quelmar::tablemaker
