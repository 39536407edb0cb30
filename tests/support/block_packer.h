// A small packer of the compressed format, written apart from the program's own, for the decoder's tests.
#pragma once

#include "tablebase/compressed_file.h"

#include <algorithm>
#include <map>
#include <queue>
#include <string>
#include <vector>

namespace quelmar::testing {

using Bytes = std::vector<std::uint8_t>;

class BitWriter {
public:
    void write(std::uint64_t value, unsigned bits) {
        for (unsigned i = bits; i-- > 0;) {
            if (used_ % 8 == 0)
                bytes_.push_back(0);
            bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (value >> i & 1) << (7 - used_ % 8));
            ++used_;
        }
    }
    const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
    std::size_t used_ = 0;
};

struct PackedSymbol {
    unsigned symbol;
    std::uint64_t extra = 0;
    unsigned extra_bits = 0;
};

// Greedy: the longest match at any of the distances, else a literal.
inline std::vector<PackedSymbol> find_symbols(const Bytes& block,
                                              const std::vector<std::uint32_t>& distances) {
    std::vector<PackedSymbol> symbols;
    for (std::size_t at = 0; at < block.size();) {
        std::size_t best = 0, best_slot = 0;
        for (std::size_t slot = 0; slot < distances.size(); ++slot) {
            const std::size_t distance = distances[slot];
            std::size_t length = 0;
            while (distance > 0 && distance <= at && at + length < block.size() &&
                   block[at + length] == block[at + length - distance])
                ++length;
            if (length > best) {
                best = length;
                best_slot = slot;
            }
        }
        if (best < 2) {
            symbols.push_back({block[at++]});
            continue;
        }
        at += best;
        unsigned code = static_cast<unsigned>(best) - 1, extra_bits = 0;
        if (best > 15) {
            while ((std::size_t{2} << (extra_bits + 1)) + 14 <= best)
                ++extra_bits;
            ++extra_bits;
            code = 14 + extra_bits;
        }
        const std::uint64_t extra = extra_bits > 0 ? best - 14 - (std::size_t{1} << extra_bits) : 0;
        symbols.push_back({256 + static_cast<unsigned>(best_slot) * 32 + code, extra, extra_bits});
    }
    return symbols;
}

inline std::vector<std::uint8_t> huffman_lengths(const std::map<unsigned, std::uint64_t>& frequency) {
    std::vector<std::uint8_t> lengths(1024, 0);
    using Node = std::pair<std::uint64_t, std::vector<unsigned>>;
    std::priority_queue<Node, std::vector<Node>, std::greater<>> queue;
    for (const auto& [symbol, count] : frequency)
        queue.push({count, {symbol}});
    if (queue.size() == 1)
        lengths[queue.top().second[0]] = 1;
    while (queue.size() > 1) {
        Node merged = queue.top();
        queue.pop();
        merged.first += queue.top().first;
        for (const unsigned symbol : queue.top().second)
            merged.second.push_back(symbol);
        queue.pop();
        for (const unsigned symbol : merged.second)
            ++lengths[symbol];
        queue.push(std::move(merged));
    }
    return lengths;
}

// Symbol -> {code, length}.
inline std::map<unsigned, std::pair<std::uint64_t, unsigned>>
canonical_codes(const std::vector<std::uint8_t>& lengths) {
    std::map<unsigned, std::pair<std::uint64_t, unsigned>> codes;
    std::uint64_t code = 0;
    unsigned previous = 0;
    std::size_t used = 0;
    for (unsigned length = 1; length < 64; ++length)
        for (unsigned symbol = 0; symbol < lengths.size(); ++symbol)
            if (lengths[symbol] == length) {
                code = used++ == 0 ? 0 : (code + 1) << (length - previous);
                previous = length;
                codes[symbol] = {code, length};
            }
    if (used == 1)
        codes.begin()->second.second = 0;  // an only symbol takes no bits
    return codes;
}

// The long form, with flat codes for values and runs.
inline void write_code_lengths(BitWriter& bits, const std::vector<std::uint8_t>& lengths) {
    bits.write(0, 1);
    bits.write(0, 1);
    bits.write(3, 5);
    for (int i = 0; i < 128; ++i)
        bits.write(6, 3);
    for (std::size_t at = 0; at < lengths.size();) {
        std::size_t run = 1;
        while (at + run < lengths.size() && lengths[at + run] == lengths[at])
            ++run;
        if (run < 2) {
            bits.write(lengths[at++], 6);
            continue;
        }
        bits.write(32u + lengths[at], 6);
        at += run;
        run -= 2;
        if (run < 32) {
            bits.write(run, 6);
            continue;
        }
        unsigned extra_bits = 0;
        while ((std::size_t{2} << extra_bits) + 31 <= run)
            ++extra_bits;
        bits.write(32 + extra_bits, 6);
        bits.write(run - 31 - (std::size_t{1} << extra_bits), extra_bits);
    }
}

inline void append_u32(Bytes& bytes, std::uint64_t value) {
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

inline void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// Puts the right check value behind an index whose bytes were changed.
inline void seal_index(Bytes& file, std::size_t index_size) {
    Bytes check;
    append_u32(check, checksum({file.data(), index_size - 4}));
    std::copy(check.begin(), check.end(), file.begin() + static_cast<std::ptrdiff_t>(index_size) - 4);
}

inline Bytes make_banner() {
    Bytes banner(58, 'x');
    append(banner, {'\r', '\n', 0, 0, 0, 0});
    return banner;
}

inline Bytes pack(const Bytes& content, unsigned block_bits = 13) {
    const std::size_t block_size = std::size_t{1} << block_bits;
    std::vector<std::uint32_t> distances;
    for (std::uint32_t i = 1; i <= 24; ++i)
        distances.push_back(i < block_size ? i : 0);
    std::vector<Bytes> blocks;
    for (std::size_t at = 0; at < content.size(); at += block_size)
        blocks.emplace_back(content.begin() + static_cast<std::ptrdiff_t>(at),
                            content.begin() +
                                static_cast<std::ptrdiff_t>(std::min(at + block_size, content.size())));
    std::map<unsigned, std::uint64_t> frequency;
    for (const Bytes& block : blocks)
        for (const PackedSymbol& symbol : find_symbols(block, distances))
            ++frequency[symbol.symbol];
    const auto lengths = huffman_lengths(frequency);
    const auto codes = canonical_codes(lengths);

    std::vector<Bytes> packed;
    Bytes checks;
    BitWriter fields;
    for (const Bytes& block : blocks) {
        BitWriter bits;
        for (const PackedSymbol& symbol : find_symbols(block, distances)) {
            bits.write(codes.at(symbol.symbol).first, codes.at(symbol.symbol).second);
            bits.write(symbol.extra, symbol.extra_bits);
        }
        if (bits.bytes().empty())
            bits.write(0, 8);  // a length of 0 would mean a full block
        // A compressed length equal to the decoded one means a stored block.
        packed.push_back(bits.bytes().size() < block.size() ? bits.bytes() : block);
        append_u32(checks, checksum(block));
        append_u32(checks, checksum(packed.back()));
        fields.write(packed.back().size() % block_size, block_bits);
    }
    fields.write(content.size() % block_size, block_bits);
    for (const std::uint32_t distance : distances)
        fields.write(distance, block_bits);
    BitWriter code_section;
    write_code_lengths(code_section, lengths);

    Bytes file = make_banner();
    const std::size_t index_size =
        80 + checks.size() + fields.bytes().size() + code_section.bytes().size() + 4;
    append_u32(file, index_size);
    append(file, {0, 0, static_cast<std::uint8_t>(block_bits), 24});
    append_u32(file, blocks.size());
    append_u32(file, 0x004001F5);
    append(file, checks);
    append(file, fields.bytes());
    append(file, code_section.bytes());
    append_u32(file, 0);
    seal_index(file, index_size);
    for (const Bytes& block : packed)
        append(file, block);
    return file;
}

}  // namespace quelmar::testing
