// A byte sequence as a stream of bits, the highest bit of each byte first.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quelmar {

// Reading past the end is allowed and gives zero bits; overrun() tells afterwards. The bytes must outlive the
// reader.
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

}  // namespace quelmar
