#include "support/temporary_directory.h"
#include "tablemaker/block_parser.h"
#include "tablemaker/compress.h"
#include "tablemaker/prefix_code.h"
#include "tablemaker/table_file.h"

#include <array>
#include <gtest/gtest.h>
#include <random>

namespace quelmar::tablemaker {
namespace {

using Bytes = std::vector<u8>;

Bytes unpacked(const Bytes& packed) {
    const quelmar::testing::TemporaryDirectory directory;
    write_file(directory.path() / "file.emd", packed);
    return read_table(directory.path() / "file.emd");
}

// Runs, repetitions at a few distances and noise, as in a table.
Bytes table_like(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes;
    while (bytes.size() < size) {
        const std::size_t length = 1 + random() % (random() % 8 == 0 ? 900 : 20);
        const std::size_t distance = std::array{1, 61, 62, 3660}[random() % 4];
        for (std::size_t i = 0; i < length; ++i)
            bytes.push_back(distance > bytes.size() || random() % 30 == 0 ? static_cast<u8>(random() % 50)
                                                                          : bytes[bytes.size() - distance]);
    }
    bytes.resize(size);
    return bytes;
}

Bytes noise(std::size_t size) {
    std::mt19937 random(5);
    Bytes bytes(size);
    for (u8& byte : bytes)
        byte = static_cast<u8>(random());
    return bytes;
}

TEST(Compress, GivesBackWhatWentIn) {
    const struct {
        Bytes table;
        const char* why;
    } cases[] = {
        {Bytes(1, 127), "one byte: packing cannot win"},
        {Bytes(3, 0), "one symbol takes no bits, yet a packed length of 0 would mean a full block"},
        {Bytes(100000, 0), "a single symbol or two in the whole table"},
        {noise(50000), "every block stored"},
        {noise(8192), "a last block of full length, stored"},
        {table_like(8191, 1), "a last block of nearly full length"},
        {table_like(8192, 2), "exactly one block"},
        {table_like(8193, 3), "a last block of one byte"},
        {table_like(300000, 4), "many blocks"},
    };
    for (const auto& [table, why] : cases)
        EXPECT_EQ(unpacked(compress_table(table, Workers(2))), table) << why;
}

TEST(Compress, ShrinksWhatRepeatsItself) {
    const Bytes table = table_like(300000, 4);
    EXPECT_LT(compress_table(table, Workers(1)).size(), table.size() / 3);
    EXPECT_LT(compress_table(Bytes(1000000, 0), Workers(1)).size(), 5000U);
}

TEST(Compress, DoesNotDependOnTheNumberOfThreads) {
    const Bytes table = table_like(100000, 6);
    EXPECT_EQ(compress_table(table, Workers(1)), compress_table(table, Workers(3)));
}

TEST(Compress, FindsTheDistancesOfATable) {
    Bytes table = noise(997);
    while (table.size() < 60000)  // repeats itself at 997 and nowhere nearer
        table.push_back(table[table.size() - 997]);
    const Distances distances = choose_distances(table, Workers(1));
    EXPECT_NE(std::find(distances.begin(), distances.end(), 997), distances.end());
    EXPECT_EQ(std::set<u16>(distances.begin(), distances.end()).size(), DISTANCE_COUNT);
    EXPECT_TRUE(
        std::all_of(distances.begin(), distances.end(), [](u16 d) { return d > 0 && d < BLOCK_SIZE; }));
}

TEST(LengthCodes, CoverEveryLength) {
    for (std::size_t length = 1; length <= BLOCK_SIZE; ++length) {
        const LengthCode as = code_of_length(length);
        ASSERT_LT(as.code, LENGTH_CODES);
        ASSERT_LT(as.extra, 1U << as.extra_bits);
        const std::size_t read = as.extra_bits == 0
                                     ? as.code + 1
                                     : (std::size_t{1} << as.extra_bits) + as.extra + LAST_PLAIN_LENGTH;
        ASSERT_EQ(read, length);
        ASSERT_GE(longest_of_code(as.code), length);
        ASSERT_EQ(code_of_length(longest_of_code(as.code)).code, as.code);
    }
}

TEST(PrefixCode, KeepsToTheLongestLengthAndFillsTheCodeSpace) {
    std::vector<u64> counts(40, 1);  // Fibonacci numbers give the deepest of all trees
    for (std::size_t i = 2; i < counts.size(); ++i)
        counts[i] = counts[i - 1] + counts[i - 2];
    for (const int longest : {6, 16, 31}) {
        const PrefixCode code(counts, longest);
        u64 filled = 0;
        for (const u8 length : code.lengths()) {
            ASSERT_GE(length, 1);
            ASSERT_LE(length, longest);
            filled += u64{1} << (40 - length);
        }
        EXPECT_EQ(filled, u64{1} << 40);
    }
}

TEST(PrefixCode, LengthsSurviveTheirPackedForm) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        Bytes lengths(MAIN_ALPHABET);
        const unsigned longest_run = std::array{1U, 3U, 40U, 600U}[static_cast<std::size_t>(round % 4)];
        for (std::size_t i = 0; i < lengths.size();) {
            const auto length = static_cast<u8>(random() % 3 == 0 ? 0 : random() % 17);
            for (auto run = 1 + random() % longest_run; run > 0 && i < lengths.size(); --run)
                lengths[i++] = length;
        }
        BitWriter out;
        put_code_lengths(out, lengths);
        const Bytes packed = out.take();
        BitReader in(packed.data(), packed.size());
        Bytes read(MAIN_ALPHABET);
        ASSERT_TRUE(read_code_lengths(in, read));
        ASSERT_EQ(read, lengths);
    }
}

}  // namespace
}  // namespace quelmar::tablemaker
