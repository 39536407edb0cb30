// Writes bits, the most significant of each byte first.
#pragma once

#include "board/types.h"

#include <utility>
#include <vector>

namespace quelmar::tablemaker {

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

}  // namespace quelmar::tablemaker
