// Canonical Huffman codes as compressed tables use them: symbols in order of length, then number; the first
// gets the all-zero code. A code with a single symbol gives it length 1 on paper and no bits in the stream.
#pragma once

#include "board/types.h"

#include <span>
#include <utility>
#include <vector>

namespace quelmar::tablemaker {

// Writes bits, the most significant of each byte first.
class BitWriter {
public:
    // The low `bits` bits of value, most significant first; bits 0..32.
    void put(u32 value, int bits) {
        pending_ = pending_ << bits | (value & ((u64{1} << bits) - 1));
        for (pending_bits_ += bits; pending_bits_ >= 8; pending_bits_ -= 8)
            bytes_.push_back(static_cast<u8>(pending_ >> (pending_bits_ - 8)));
    }

    // The bytes written so far; zeros fill the last one. Leaves the writer empty.
    std::vector<u8> take() {
        if (pending_bits_ > 0)
            put(0, 8 - pending_bits_);
        return std::exchange(bytes_, {});
    }

private:
    std::vector<u8> bytes_;
    u64 pending_ = 0;
    int pending_bits_ = 0;
};

class PrefixCode {
public:
    PrefixCode() = default;
    // The best code for these frequencies with no code longer than `longest` bits; 2^longest >= symbols.
    PrefixCode(std::span<const u64> counts, int longest);

    std::span<const u8> lengths() const { return lengths_; }  // 0 for a symbol that does not occur
    // Bits that the symbol, which must occur, takes in the stream.
    int bits(std::size_t symbol) const { return single_ ? 0 : lengths_[symbol]; }
    void put(BitWriter& out, std::size_t symbol) const { out.put(codes_[symbol], bits(symbol)); }

private:
    void assign_codes();

    std::vector<u8> lengths_;
    std::vector<u32> codes_;
    bool single_ = false;
};

// Writes the code lengths of an alphabet of more than 128 symbols: runs of equal lengths, coded by two
// auxiliary codes whose own lengths come first.
void put_code_lengths(BitWriter& out, std::span<const u8> lengths);

}  // namespace quelmar::tablemaker
