#include "tablebase/huffman.h"

#include <algorithm>
#include <new>

namespace quelmar {

namespace {

// Lists up to this size are packed as plain fields.
constexpr std::size_t SHORT_LIST = 128;
constexpr unsigned WIDTH_BITS = 5, ZERO_RUN_BITS = 4;
// Symbols of both codes that pack a long list: below this a literal value, from here on something longer.
constexpr unsigned LITERALS = 32, LIST_ALPHABET = 64, LIST_LOOKUP_BITS = 8;
constexpr unsigned SHORTEST_RUN = 2;

bool read_short_list(BitReader& bits, std::span<std::uint8_t> lengths) {
    const unsigned width = bits.read(WIDTH_BITS);
    for (std::size_t filled = 0; filled < lengths.size() && !bits.overrun();) {
        const std::uint32_t length = bits.read(width);
        if (length > MAX_CODE_LENGTH)
            return false;
        lengths[filled++] = static_cast<std::uint8_t>(length);
        if (length != 0)
            continue;
        const std::size_t zeros = bits.read(ZERO_RUN_BITS);
        if (zeros > lengths.size() - filled)
            return false;
        std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(filled), zeros, std::uint8_t{0});
        filled += zeros;
    }
    return !bits.overrun();
}

std::uint64_t read_run(BitReader& bits, const DecodeTable& runs) {
    const unsigned symbol = runs.decode(bits);
    if (symbol < LITERALS)
        return symbol;
    const unsigned extra = symbol - LITERALS;
    return (std::uint64_t{1} << extra) + bits.read(extra) + LITERALS - 1;
}

bool read_long_list(BitReader& bits, std::span<std::uint8_t> lengths) {
    std::array<std::uint8_t, SHORT_LIST> packing{};
    if (!read_code_lengths(bits, packing))
        return false;
    DecodeTable values, runs;
    const std::span<const std::uint8_t> both(packing);
    if (!build_decode_table(both.first(LIST_ALPHABET), LIST_LOOKUP_BITS, values) ||
        !build_decode_table(both.last(LIST_ALPHABET), LIST_LOOKUP_BITS, runs))
        return false;
    for (std::size_t filled = 0; filled < lengths.size() && !bits.overrun();) {
        const unsigned symbol = values.decode(bits);
        const std::uint64_t run = symbol < LITERALS ? 1 : read_run(bits, runs) + SHORTEST_RUN;
        if (run > lengths.size() - filled)
            return false;
        std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(filled), run,
                    static_cast<std::uint8_t>(symbol % LITERALS));
        filled += static_cast<std::size_t>(run);
    }
    return !bits.overrun();
}

}  // namespace

void DecodeTable::order_symbols(std::span<const std::uint8_t> lengths) {
    count_ = {};
    for (const std::uint8_t length : lengths)
        ++count_[length];
    count_[0] = 0;
    std::uint32_t code = 0, place = 0;
    for (unsigned length = 1; length <= MAX_CODE_LENGTH; ++length) {
        code = (code + count_[length - 1]) << 1;
        place += count_[length - 1];
        first_code_[length] = code;
        first_place_[length] = place;
    }
    auto next = first_place_;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
        if (lengths[symbol] != 0)
            symbols_[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
}

bool DecodeTable::fills_code_space() const {
    std::uint64_t used = 0;  // in codes of the greatest length
    for (unsigned length = 1; length <= MAX_CODE_LENGTH; ++length)
        used += std::uint64_t{count_[length]} << (MAX_CODE_LENGTH - length);
    return used == std::uint64_t{1} << MAX_CODE_LENGTH;
}

void DecodeTable::fill_with(unsigned symbol) {
    std::fill_n(lookup_.get(), std::size_t{1} << lookup_bits_,
                static_cast<std::uint16_t>(symbol << LENGTH_BITS));
}

void DecodeTable::fill_lookup() {
    // The codes in order cover the table from its start; what is left begins a longer code.
    std::uint16_t* entry = lookup_.get();
    for (unsigned length = 1; length <= std::min(lookup_bits_, LONG_CODE - 1); ++length)
        for (unsigned i = 0; i < count_[length]; ++i) {
            const unsigned symbol = symbols_[first_place_[length] + i];
            entry = std::fill_n(entry, std::size_t{1} << (lookup_bits_ - length),
                                static_cast<std::uint16_t>(symbol << LENGTH_BITS | length));
        }
    std::fill(entry, lookup_.get() + (std::size_t{1} << lookup_bits_), std::uint16_t{LONG_CODE});
}

unsigned DecodeTable::decode_long(BitReader& bits) const {
    for (unsigned length = lookup_bits_ + 1; length <= MAX_CODE_LENGTH; ++length) {
        const std::uint32_t place = bits.peek(length) - first_code_[length];
        if (place < count_[length]) {
            bits.skip(length);
            return symbols_[first_place_[length] + place];
        }
    }
    return 0;  // not reached: the code is complete
}

bool build_decode_table(std::span<const std::uint8_t> lengths, unsigned lookup_bits, DecodeTable& table) {
    if (lengths.size() > MAX_ALPHABET)
        return false;
    const auto too_long = [](std::uint8_t length) { return length > MAX_CODE_LENGTH; };
    if (std::any_of(lengths.begin(), lengths.end(), too_long))
        return false;
    table.lookup_bits_ = lookup_bits;
    table.lookup_.reset(new (std::nothrow) std::uint16_t[std::size_t{1} << lookup_bits]);
    if (!table.lookup_)
        return false;
    table.order_symbols(lengths);
    const auto used =
        lengths.size() - static_cast<std::size_t>(std::count(lengths.begin(), lengths.end(), 0));
    if (used == 0) {
        table.fill_with(0);
        return true;
    }
    if (used == 1) {
        table.fill_with(table.symbols_[0]);
        return table.count_[1] == 1;
    }
    if (!table.fills_code_space())
        return false;
    table.fill_lookup();
    return true;
}

bool read_code_lengths(BitReader& bits, std::span<std::uint8_t> lengths) {
    if (bits.read(1) == 1) {
        std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
        return true;
    }
    return lengths.size() <= SHORT_LIST ? read_short_list(bits, lengths) : read_long_list(bits, lengths);
}

}  // namespace quelmar
