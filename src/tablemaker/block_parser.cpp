#include "tablemaker/block_parser.h"

#include <bit>

namespace quelmar::tablemaker {

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
