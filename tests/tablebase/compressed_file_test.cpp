#include "support/block_packer.h"
#include "tablebase/compressed_file.h"

#include <gtest/gtest.h>
#include <random>

namespace quelmar::testing {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A file in memory of the program's address space; `bytes` must outlive it.
File open_bytes(const Bytes& bytes) {
    return {fmemopen(const_cast<std::uint8_t*>(bytes.data()), bytes.size(), "rb"), std::fclose};
}

int header_class(const Bytes& bytes) {
    const File file = open_bytes(bytes);
    CompressedTableInfo info;
    return error_class(read_compressed_header(file.get(), info));
}

// Decodes every block; the first error code ends it.
int unpack(const Bytes& bytes, Bytes& content) {
    const File file = open_bytes(bytes);
    CompressedTableInfo info;
    if (const int code = read_compressed_header(file.get(), info); code != FILE_OK)
        return error_class(code);
    BlockDecoder decoder;
    EXPECT_EQ(create_block_decoder(info.block_size, decoder), FILE_OK);
    for (std::uint32_t block = 0; block < info.block_count; ++block) {
        Bytes output(info.block_size);
        set_output(decoder, output.data());
        if (const int code = read_compressed_block(decoder, info, file.get(), block); code != FILE_OK)
            return error_class(code);
        if (const int code = decode_block(decoder, info); code != FILE_OK)
            return error_class(code);
        content.insert(content.end(), output.begin(),
                       output.begin() + static_cast<std::ptrdiff_t>(decoder.output_length));
    }
    return FILE_OK;
}

Bytes table_like_bytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes;
    while (bytes.size() < size) {
        const std::uint8_t value = static_cast<std::uint8_t>(random() % 40);
        bytes.insert(bytes.end(), 1 + random() % (random() % 16 == 0 ? 400 : 6), value);
    }
    bytes.resize(size);
    return bytes;
}

// All values equally often and nothing repeated nearby.
Bytes incompressible_bytes(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 73 + i / 256 * 31);
    return bytes;
}

TEST(CompressedFile, GivesBackWhatWasPacked) {
    // Whole blocks, a short last block, one symbol only, nothing that shrinks, other block sizes.
    for (const Bytes& content : {table_like_bytes(24576, 1), table_like_bytes(20000, 2), Bytes(8192 + 5, 9),
                                 incompressible_bytes(9000), Bytes(1, 77), table_like_bytes(70000, 3)})
        for (const unsigned block_bits : {13u, 10u, 16u}) {
            Bytes result;
            ASSERT_EQ(unpack(pack(content, block_bits), result), FILE_OK);
            EXPECT_EQ(result, content);
        }
}

TEST(CompressedFile, StoredBlockNeedsNoDecoding) {
    const Bytes content = incompressible_bytes(8192), bytes = pack(content);
    const File file = open_bytes(bytes);
    CompressedTableInfo info;
    ASSERT_EQ(read_compressed_header(file.get(), info), FILE_OK);
    EXPECT_EQ(info.compressed_length(0), 8192u);
    EXPECT_EQ(info.last_block_length, 8192u);
    BlockDecoder decoder;
    ASSERT_EQ(create_block_decoder(8192, decoder), FILE_OK);
    Bytes output(8192);
    set_output(decoder, output.data());
    ASSERT_EQ(read_compressed_block(decoder, info, file.get(), 0), FILE_OK);
    EXPECT_EQ(output, content);
    EXPECT_EQ(error_class(read_compressed_block(decoder, info, file.get(), 1)), FILE_BAD_CALL);
    EXPECT_EQ(decode_block(decoder, info), FILE_OK);
}

TEST(CompressedFile, RejectsBrokenHeaders) {
    const Bytes good = pack(table_like_bytes(20000, 4));
    ASSERT_EQ(header_class(good), FILE_OK);
    struct Damage {
        std::size_t at;
        std::uint8_t value;
        int expected;
        const char* why;
    };
    for (const Damage& damage :
         {Damage{3, 0xE9, FILE_READ_ERROR, "banner not printable"}, Damage{59, ' ', FILE_READ_ERROR, "no LF"},
          Damage{63, 1, FILE_READ_ERROR, "no zero after the banner"},
          Damage{67, 83, FILE_MALFORMED, "check value"},
          Damage{64, 0xFF, FILE_READ_ERROR, "index larger than the file"},
          Damage{70, 17, FILE_MALFORMED, "block size"}, Damage{71, 23, FILE_MALFORMED, "distances"},
          Damage{79, 0xF4, FILE_MALFORMED, "format"}, Damage{100, 0xAA, FILE_MALFORMED, "check value"}}) {
        Bytes bad = good;
        bad[damage.at] = damage.value;
        EXPECT_EQ(header_class(bad), damage.expected) << damage.why;
    }
    for (const std::size_t size : {1u, 79u, 80u, 200u})
        EXPECT_EQ(header_class(Bytes(good.begin(), good.begin() + size)), FILE_READ_ERROR) << size;
    Bytes tiny = good;
    tiny[64] = tiny[65] = tiny[66] = 0;
    tiny[67] = 83;
    EXPECT_EQ(header_class(tiny), FILE_MALFORMED);
}

// The check value protects against accidents only; behind it every field may hold anything.
TEST(CompressedFile, SurvivesHostileBytes) {
    const Bytes good = pack(table_like_bytes(30000, 5));
    const std::size_t index_size = std::size_t{good[66]} << 8 | good[67];
    std::mt19937 random(6);
    for (int round = 0; round < 3000; ++round) {
        Bytes bad = good;
        const std::size_t first = round % 3 == 0 ? 70 : round % 3 == 1 ? 80 + 8 * 4 : index_size;
        for (int i = 0; i < 1 + round % 4; ++i)
            bad[first + random() % (bad.size() - first)] = static_cast<std::uint8_t>(random());
        seal_index(bad, index_size);
        Bytes content;
        const int code = unpack(bad, content);
        EXPECT_TRUE(code == FILE_OK || code == FILE_READ_ERROR || code == FILE_MALFORMED) << code;
    }
}

TEST(CompressedFile, ShortDataIsAReadError) {
    Bytes bytes = pack(table_like_bytes(20000, 8)), content;
    bytes.pop_back();
    EXPECT_EQ(unpack(bytes, content), FILE_READ_ERROR);
}

TEST(CompressedFile, BlockChecksMatchContent) {
    const Bytes content = table_like_bytes(10000, 9), bytes = pack(content);
    const File file = open_bytes(bytes);
    CompressedTableInfo info;
    ASSERT_EQ(read_compressed_header(file.get(), info), FILE_OK);
    EXPECT_EQ(info.file_size(), bytes.size());
    BlockDecoder decoder;
    ASSERT_EQ(create_block_decoder(info.block_size, decoder), FILE_OK);
    Bytes output(info.block_size);
    set_output(decoder, output.data());
    ASSERT_EQ(read_compressed_block(decoder, info, file.get(), 1), FILE_OK);
    ASSERT_EQ(decode_block(decoder, info), FILE_OK);
    EXPECT_EQ(info.checks[1].decoded, checksum({content.data() + 8192, content.size() - 8192}));
    EXPECT_EQ(block_fault(decoder, info), nullptr);
    ++info.checks[1].decoded;
    EXPECT_NE(block_fault(decoder, info), nullptr);
    --info.checks[1].decoded;
    ++info.checks[1].compressed;
    EXPECT_NE(block_fault(decoder, info), nullptr);
}

// The table's first entry: a byte 0 runs through eight steps with the reversed test.
TEST(CompressedFile, ChecksumIsTheFormats) {
    const Bytes zero(1, 0), none;
    EXPECT_EQ(checksum(none), 0u);
    std::uint32_t expected = 0;
    for (int step = 0; step < 8; ++step)
        expected = expected & 1 ? expected >> 1 : expected >> 1 ^ 0xEDB88320;
    EXPECT_EQ(checksum(zero), expected);
    EXPECT_NE(expected, 0u);
}

TEST(Huffman, LongCodesAndSpecialCases) {
    // Lengths 1, 2, ... 18, 18: beyond any lookup used here.
    std::vector<std::uint8_t> lengths;
    for (std::uint8_t length = 1; length <= 18; ++length)
        lengths.push_back(length);
    lengths.push_back(18);
    const auto codes = canonical_codes(lengths);
    BitWriter writer;
    for (unsigned symbol = 0; symbol < lengths.size(); ++symbol)
        writer.write(codes.at(symbol).first, codes.at(symbol).second);
    for (const unsigned lookup_bits : {1u, 8u, 13u, 16u}) {
        DecodeTable table;
        ASSERT_TRUE(build_decode_table(lengths, lookup_bits, table));
        BitReader bits(writer.bytes().data(), writer.bytes().size());
        for (unsigned symbol = 0; symbol < lengths.size(); ++symbol)
            EXPECT_EQ(table.decode(bits), symbol);
        EXPECT_FALSE(bits.overrun());
    }
    DecodeTable table;
    const auto builds = [&table](std::vector<std::uint8_t> code) {
        return build_decode_table(code, 8, table);
    };
    EXPECT_FALSE(builds({1, 2}));      // a hole
    EXPECT_FALSE(builds({1, 1, 1}));   // too many
    EXPECT_FALSE(builds({0, 2, 0}));   // an only symbol with a longer code
    EXPECT_FALSE(builds({32, 1, 1}));  // too long
    const std::uint8_t ones = 0xFF;
    BitReader bits(&ones, 1);
    ASSERT_TRUE(builds({0, 0, 1}));
    EXPECT_EQ(table.decode(bits), 2u);
    ASSERT_TRUE(builds({0, 0, 0}));
    EXPECT_EQ(table.decode(bits), 0u);
    EXPECT_EQ(bits.read(8), 0xFFu);  // neither took a bit
}

TEST(Huffman, PackedLengths) {
    const auto read = [](const BitWriter& writer, std::size_t count, std::vector<std::uint8_t>& lengths) {
        lengths.assign(count, 99);
        BitReader bits(writer.bytes().data(), writer.bytes().size());
        return read_code_lengths(bits, lengths);
    };
    std::vector<std::uint8_t> lengths;
    BitWriter none;
    none.write(1, 1);
    ASSERT_TRUE(read(none, 1024, lengths));
    EXPECT_EQ(lengths, std::vector<std::uint8_t>(1024, 0));

    BitWriter plain;  // fields of 3 bits: 5, a zero with two more, 7
    for (const auto& [value, bits] : {std::pair{0, 1}, {3, 5}, {5, 3}, {0, 3}, {2, 4}, {7, 3}})
        plain.write(static_cast<unsigned>(value), static_cast<unsigned>(bits));
    ASSERT_TRUE(read(plain, 5, lengths));
    EXPECT_EQ(lengths, (std::vector<std::uint8_t>{5, 0, 0, 0, 7}));
    EXPECT_FALSE(read(plain, 3, lengths));    // the run of zeros does not fit
    EXPECT_FALSE(read(plain, 100, lengths));  // the bits end
}

}  // namespace
}  // namespace quelmar::testing
