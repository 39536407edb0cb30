#include "tablemaker/compress.h"

#include "tablemaker/block_parser.h"
#include "tablemaker/prefix_code.h"

#include <array>
#include <string_view>

namespace quelmar::tablemaker {

namespace {

constexpr std::string_view BANNER = "Endgame table packed in blocks of 8192 bytes; 24 distances\r\n";
static_assert(BANNER.size() == BANNER_TEXT + 2);
constexpr std::size_t CHECKSUM_SIZE = 4;
constexpr int LONGEST_CODE = 16, PASSES = 3;
constexpr std::size_t SAMPLE_BLOCKS = 128;
// Before anything is counted: what a literal and a match are guessed to cost, and afterwards a symbol that
// has not occurred yet.
constexpr u8 GUESSED_LITERAL = 6, GUESSED_MATCH = 8, UNSEEN_COST = 13;

using Block = std::span<const u8>;
using Counts = std::array<u64, MAIN_ALPHABET>;

std::vector<Block> cut(Block table) {
    std::vector<Block> blocks;
    for (std::size_t at = 0; at < table.size(); at += BLOCK_SIZE)
        blocks.push_back(table.subspan(at, std::min(BLOCK_SIZE, table.size() - at)));
    return blocks;
}

std::vector<Block> sample_of(const std::vector<Block>& blocks) {
    std::vector<Block> sample;
    const std::size_t taken = std::min(blocks.size(), SAMPLE_BLOCKS);
    for (std::size_t i = 0; i < taken; ++i)
        sample.push_back(blocks[blocks.size() * i / taken]);
    return sample;
}

std::vector<std::vector<Token>> parse_all(const std::vector<Block>& blocks, const Distances& distances,
                                          const SymbolBits& costs, const Workers& workers) {
    std::vector<std::vector<Token>> tokens(blocks.size());
    workers.share(blocks.size(), 8, [&](u64 first, u64 last) {
        for (u64 i = first; i < last; ++i)
            tokens[i] = parse_block(blocks[i], distances, costs);
    });
    return tokens;
}

Counts count_symbols(const std::vector<std::vector<Token>>& tokens) {
    Counts counts{};
    for (const auto& block : tokens)
        for (const Token& token : block)
            ++counts[token.symbol];
    return counts;
}

SymbolBits costs_of(const PrefixCode& code) {
    SymbolBits costs{};
    for (std::size_t symbol = 0; symbol < MAIN_ALPHABET; ++symbol)
        costs[symbol] = code.lengths()[symbol] == 0 ? UNSEEN_COST : code.lengths()[symbol];
    return costs;
}

// Costs and parses depend on each other: a few rounds on a sample settle them.
SymbolBits settle_costs(const std::vector<Block>& blocks, const Distances& distances,
                        const Workers& workers) {
    SymbolBits costs{};
    std::fill(costs.begin(), costs.end(), GUESSED_MATCH);
    std::fill_n(costs.begin(), FIRST_MATCH_SYMBOL, GUESSED_LITERAL);
    const std::vector<Block> sample = sample_of(blocks);
    for (int pass = 0; pass < PASSES; ++pass)
        costs =
            costs_of(PrefixCode(count_symbols(parse_all(sample, distances, costs, workers)), LONGEST_CODE));
    return costs;
}

std::vector<u8> pack(Block block, const std::vector<Token>& tokens, const PrefixCode& code) {
    BitWriter out;
    for (const Token& token : tokens) {
        code.put(out, token.symbol);
        out.put(token.extra, token.extra_bits);
    }
    std::vector<u8> packed = out.take();
    if (packed.empty())
        packed.push_back(0);  // a length of 0 would be read as a full block
    if (packed.size() >= block.size())
        packed.assign(block.begin(), block.end());
    return packed;
}

void append(std::vector<u8>& bytes, const std::vector<u8>& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void append_u32(std::vector<u8>& bytes, u32 value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<u8>(value >> shift));
}

// Banner and header; the size of the index, which the header tells, is only known to the caller.
std::vector<u8> header(u32 index_size, std::size_t block_count) {
    std::vector<u8> bytes(BANNER.begin(), BANNER.end());
    bytes.resize(BANNER_SIZE);
    append_u32(bytes, index_size);
    bytes.insert(bytes.end(), {0, 0, BLOCK_BITS, DISTANCE_COUNT});
    append_u32(bytes, static_cast<u32>(block_count));
    append_u32(bytes, FORMAT_NUMBER);
    return bytes;
}

std::vector<u8> lengths_and_distances(const std::vector<Block>& blocks,
                                      const std::vector<std::vector<u8>>& packed,
                                      const Distances& distances) {
    BitWriter out;
    const auto put = [&](std::size_t value) { out.put(static_cast<u32>(value), BLOCK_BITS); };
    for (const auto& bytes : packed)
        put(bytes.size());
    put(blocks.back().size());
    for (const u16 distance : distances)
        put(distance);
    return out.take();
}

}  // namespace

std::vector<u8> compress_table(std::span<const u8> table, const Workers& workers) {
    const std::vector<Block> blocks = cut(table);
    const Distances distances = choose_distances(table, workers);
    const SymbolBits costs = settle_costs(blocks, distances, workers);
    const auto tokens = parse_all(blocks, distances, costs, workers);
    const PrefixCode code(count_symbols(tokens), LONGEST_CODE);
    std::vector<std::vector<u8>> packed(blocks.size());
    workers.share(blocks.size(), 8, [&](u64 first, u64 last) {
        for (u64 i = first; i < last; ++i)
            packed[i] = pack(blocks[i], tokens[i], code);
    });

    std::vector<u8> index;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        append_u32(index, checksum(blocks[i]));
        append_u32(index, checksum(packed[i]));
    }
    append(index, lengths_and_distances(blocks, packed, distances));
    BitWriter code_lengths;
    put_code_lengths(code_lengths, code.lengths());
    append(index, code_lengths.take());

    const std::size_t index_size = header(0, 0).size() + index.size() + CHECKSUM_SIZE;
    std::vector<u8> file = header(static_cast<u32>(index_size), blocks.size());
    append(file, index);
    append_u32(file, checksum(file));
    for (const auto& bytes : packed)
        append(file, bytes);
    return file;
}

}  // namespace quelmar::tablemaker
