// Canonical Huffman codes, given by the length of each symbol's code alone.
//
// Symbols are ordered by length, then by number. The first gets the code of all zeros; every next one is the
// previous plus one, shifted left by what it is longer. Short codes are resolved by one look into a table.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace quelmar {

// A byte sequence as a stream of bits, the highest bit of each byte first. Reading past the end is allowed
// and gives zero bits; overrun() tells afterwards. The bytes must outlive the reader.
class BitReader {
public:
    static constexpr unsigned MAX_BITS = 32;  // that one call can peek at, skip or read

    BitReader(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) { refill(); }

    std::uint32_t peek(unsigned bits) const {
        assert(bits <= MAX_BITS);
        return bits == 0 ? 0 : static_cast<std::uint32_t>(window_ >> (64 - bits));
    }

    void skip(unsigned bits) {
        assert(bits <= MAX_BITS);
        window_ <<= bits;
        held_ -= bits;
        if (held_ < MAX_BITS)
            refill();
    }

    std::uint32_t read(unsigned bits) {
        const std::uint32_t value = peek(bits);
        skip(bits);
        return value;
    }

    // More bits were taken than there are.
    bool overrun() const { return next_ * 8 - held_ > size_ * 8; }

private:
    void refill() {
        while (held_ <= 56) {
            const std::uint64_t byte = next_ < size_ ? bytes_[next_] : 0;
            ++next_;
            window_ |= byte << (56 - held_);
            held_ += 8;
        }
    }

    const std::uint8_t* bytes_;
    std::size_t size_;
    std::size_t next_ = 0;      // byte to load next, may lie beyond the end
    std::uint64_t window_ = 0;  // the next bits, left-aligned
    unsigned held_ = 0;         // how many of them
};

inline constexpr unsigned MAX_CODE_LENGTH = 31;  // bits
inline constexpr std::size_t MAX_ALPHABET = 1024;

class DecodeTable {
public:
    // The next symbol. Needs a table that was built.
    unsigned decode(BitReader& bits) const {
        const std::uint16_t entry = lookup_[bits.peek(lookup_bits_)];
        const unsigned length = entry & LENGTH_MASK;
        if (length == LONG_CODE)
            return decode_long(bits);
        bits.skip(length);
        return entry >> LENGTH_BITS;
    }

private:
    friend bool build_decode_table(std::span<const std::uint8_t>, unsigned, DecodeTable&);

    // An entry of the lookup table holds a symbol and, in its low bits, its length.
    static constexpr unsigned LENGTH_BITS = 5, LENGTH_MASK = 31, LONG_CODE = 31;
    static_assert(MAX_ALPHABET << LENGTH_BITS <= 1 << 16);

    void order_symbols(std::span<const std::uint8_t> lengths);
    bool fills_code_space() const;
    void fill_lookup();
    void fill_with(unsigned symbol);
    unsigned decode_long(BitReader& bits) const;

    unsigned lookup_bits_ = 0;
    std::unique_ptr<std::uint16_t[]> lookup_;            // 1 << lookup_bits_ entries
    std::array<std::uint16_t, MAX_ALPHABET> symbols_{};  // ordered as above
    // Per code length: how many symbols have it, and the first one's code and place in symbols_.
    std::array<std::uint32_t, MAX_CODE_LENGTH + 1> count_{}, first_code_{}, first_place_{};
};

// Builds the table for `lengths` (at most MAX_ALPHABET; 0 marks a symbol that does not occur) with a lookup
// of `lookup_bits` bits, 1..16. Without any symbol every decoding gives symbol 0 and takes no bits; a single
// symbol, whose length must be 1, takes none either. False, and an unusable table, when the lengths are no
// complete code or memory is short.
bool build_decode_table(std::span<const std::uint8_t> lengths, unsigned lookup_bits, DecodeTable& table);

// Reads the lengths of a code in their packed form: short lists as plain fields, long ones as runs that are
// themselves Huffman-coded. False when the bits make no sense or end too early.
bool read_code_lengths(BitReader& bits, std::span<std::uint8_t> lengths);

}  // namespace quelmar
