#include "support/block_packer.h"
#include "support/engine.h"
#include "tablebase/compressed_file.h"
#include "tablemaker/prefix_code.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace quelmar::testing {
namespace {

// A file in memory of the program's address space, which must outlive it, and what was read of it.
struct Reader {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
    CompressedTableInfo info;
    BlockDecoder decoder;
    Bytes output;
    int code;  // of the header

    explicit Reader(const Bytes& bytes)
        : file(fmemopen(const_cast<u8*>(bytes.data()), bytes.size(), "rb"), std::fclose),
          code(error_class(read_compressed_header(file.get(), info))) {
        if (code != FILE_OK)
            return;
        EXPECT_EQ(create_block_decoder(info.block_size, decoder), FILE_OK);
        output.resize(info.block_size);
        set_output(decoder, output.data());
    }
    int read(u32 block) { return error_class(read_compressed_block(decoder, info, file.get(), block)); }
    // Reads and decodes; the decoded bytes are added to `content`.
    int unpack(u32 block, Bytes& content) {
        set_output(decoder, output.data());
        if (const int fault = read(block); fault != FILE_OK)
            return fault;
        const int fault = error_class(decode_block(decoder, info));
        if (fault == FILE_OK)
            content.insert(content.end(), output.data(), output.data() + decoder.output_length);
        return fault;
    }
};

// Decodes every block; the first error code ends it.
int unpack(const Bytes& bytes, Bytes& content) {
    Reader reader(bytes);
    int code = reader.code;
    for (u32 block = 0; code == FILE_OK && block < reader.info.block_count; ++block)
        code = reader.unpack(block, content);
    return code;
}

Bytes table_like_bytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes;
    while (bytes.size() < size) {
        const u8 value = static_cast<u8>(random() % 40);
        const auto length = random(), range = random();  // in this order, whatever the compiler
        bytes.insert(bytes.end(), 1 + length % (range % 16 == 0 ? 400 : 6), value);
    }
    bytes.resize(size);
    return bytes;
}

Bytes incompressible_bytes(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<u8>(i * 73);
    return bytes;
}

struct ForeignFile {
    std::string title;
    Bytes content, packed;
};

std::vector<ForeignFile> foreign_files() {
    std::vector<ForeignFile> files;
    for (const std::string& line : data_lines("packed.txt")) {
        if (line.starts_with("  ")) {
            for (std::size_t i = 2; i < line.size(); i += 2)
                files.back().packed.push_back(static_cast<u8>(std::stoi(line.substr(i, 2), nullptr, 16)));
        } else if (!line.empty() && line.front() != '#') {
            std::istringstream words(line);
            std::string kind;
            std::size_t size = 0;
            words >> kind >> size;
            files.push_back({line,
                             kind == "runs"   ? table_like_bytes(size, 1)
                             : kind == "same" ? Bytes(size, 9)
                                              : incompressible_bytes(size),
                             {}});
        }
    }
    return files;
}

TEST(CompressedFile, ReadsWhatAnotherPackerWrote) {
    for (const auto& [title, content, packed] : foreign_files()) {
        Bytes result;
        EXPECT_EQ(unpack(packed, result), FILE_OK) << title;
        EXPECT_EQ(result, content) << title;
    }
}

TEST(CompressedFile, StoredBlockNeedsNoDecoding) {
    const auto [title, content, bytes] = foreign_files().back();
    Reader reader(bytes);
    ASSERT_EQ(reader.code, FILE_OK);
    EXPECT_EQ(reader.info.compressed_length(0), content.size());
    EXPECT_EQ(reader.info.last_block_length, content.size());
    ASSERT_EQ(reader.read(0), FILE_OK);
    EXPECT_TRUE(std::equal(content.begin(), content.end(), reader.output.begin()));
    EXPECT_EQ(reader.read(1), FILE_BAD_CALL);
    EXPECT_EQ(decode_block(reader.decoder, reader.info), FILE_OK);
}

TEST(CompressedFile, RejectsBrokenHeaders) {
    const Bytes good = pack(table_like_bytes(20000, 4));
    ASSERT_EQ(Reader(good).code, FILE_OK);
    const struct {
        std::size_t at;
        u8 value;
        int expected;
        const char* why;
    } damages[] = {
        {3, 0xE9, FILE_READ_ERROR, "banner not printable"},
        {59, ' ', FILE_READ_ERROR, "no LF"},
        {63, 1, FILE_READ_ERROR, "no zero after the banner"},
        {67, 83, FILE_MALFORMED, "check value"},
        {64, 0xFF, FILE_READ_ERROR, "index larger than the file"},
        {70, 17, FILE_MALFORMED, "block size"},
        {71, 23, FILE_MALFORMED, "distances"},
        {79, 0xF4, FILE_MALFORMED, "format"},
        {100, 0xAA, FILE_MALFORMED, "check value"},
    };
    for (const auto& damage : damages) {
        Bytes bad = good;
        bad[damage.at] = damage.value;
        EXPECT_EQ(Reader(bad).code, damage.expected) << damage.why;
    }
    for (const std::size_t size : {1u, 79u, 80u, 200u})
        EXPECT_EQ(Reader(Bytes(good.begin(), good.begin() + size)).code, FILE_READ_ERROR) << size;
    Bytes tiny = good;
    tiny[64] = tiny[65] = tiny[66] = 0;
    tiny[67] = 83;
    EXPECT_EQ(Reader(tiny).code, FILE_MALFORMED);
}

// The check value protects against accidents only; behind it every field may hold anything.
TEST(CompressedFile, SurvivesHostileBytes) {
    const Bytes good = pack(table_like_bytes(30000, 5));
    const std::size_t index_size = index_size_of(good);
    std::mt19937 random(6);
    for (int round = 0; round < 3000; ++round) {
        Bytes bad = good;
        const std::size_t first = round % 3 == 0 ? 70 : round % 3 == 1 ? 80 + 8 * 4 : index_size;
        for (int i = 0; i < 1 + round % 4; ++i)
            bad[first + random() % (bad.size() - first)] = static_cast<u8>(random());
        seal_index(bad, index_size);
        Bytes content;
        const int code = unpack(bad, content);
        EXPECT_TRUE(code == FILE_OK || code == FILE_READ_ERROR || code == FILE_MALFORMED) << code;
    }
}

TEST(CompressedFile, BlockChecksMatchContent) {
    const Bytes content = table_like_bytes(10000, 9);
    Bytes bytes = pack(content), last;
    Reader reader(bytes);
    ASSERT_EQ(reader.code, FILE_OK);
    EXPECT_EQ(reader.info.file_size(), bytes.size());
    ASSERT_EQ(reader.unpack(1, last), FILE_OK);
    EXPECT_EQ(reader.info.checks[1].decoded, checksum({content.data() + 8192, content.size() - 8192}));
    EXPECT_EQ(block_fault(reader.decoder, reader.info), nullptr);
    for (u32 BlockChecks::*value : {&BlockChecks::decoded, &BlockChecks::compressed}) {
        ++(reader.info.checks[1].*value);
        EXPECT_NE(block_fault(reader.decoder, reader.info), nullptr);
        --(reader.info.checks[1].*value);
    }
    bytes.pop_back();
    EXPECT_EQ(unpack(bytes, last), FILE_READ_ERROR) << "the data is too short";
}

// The table's first entry: a byte 0 runs through eight steps with the reversed test.
TEST(CompressedFile, ChecksumIsTheFormats) {
    const Bytes zero(1, 0), none;
    EXPECT_EQ(checksum(none), 0u);
    u32 expected = 0;
    for (int step = 0; step < 8; ++step)
        expected = expected & 1 ? expected >> 1 : expected >> 1 ^ 0xEDB88320;
    EXPECT_EQ(checksum(zero), expected);
    EXPECT_NE(expected, 0u);
}

TEST(Huffman, LongCodesAndSpecialCases) {
    // Lengths 1, 2, ... 18, 18: beyond any lookup used here.
    std::vector<u8> lengths;
    for (u8 length = 1; length <= 18; ++length)
        lengths.push_back(length);
    lengths.push_back(18);
    // Each code is a one longer than the one before it and ends in a zero, but for the last.
    tablemaker::BitWriter writer;
    for (int ones = 0; ones < 18; ++ones)
        writer.put((2U << ones) - 2, ones + 1);
    writer.put((1U << 18) - 1, 18);
    const Bytes packed = writer.take();
    for (const unsigned lookup_bits : {1u, 8u, 13u, 16u}) {
        DecodeTable table;
        ASSERT_TRUE(build_decode_table(lengths, lookup_bits, table));
        BitReader bits(packed.data(), packed.size());
        for (unsigned symbol = 0; symbol < lengths.size(); ++symbol)
            EXPECT_EQ(table.decode(bits), symbol);
        EXPECT_FALSE(bits.overrun());
    }
    DecodeTable table;
    const auto builds = [&table](std::vector<u8> code) { return build_decode_table(code, 8, table); };
    EXPECT_FALSE(builds({1, 2}));      // a hole
    EXPECT_FALSE(builds({1, 1, 1}));   // too many
    EXPECT_FALSE(builds({0, 2, 0}));   // an only symbol with a longer code
    EXPECT_FALSE(builds({32, 1, 1}));  // too long
    const u8 ones = 0xFF;
    BitReader bits(&ones, 1);
    ASSERT_TRUE(builds({0, 0, 1}));
    EXPECT_EQ(table.decode(bits), 2u);
    ASSERT_TRUE(builds({0, 0, 0}));
    EXPECT_EQ(table.decode(bits), 0u);
    EXPECT_EQ(bits.read(8), 0xFFu);  // neither took a bit
}

TEST(Huffman, PackedLengths) {
    const auto read = [](const Bytes& packed, std::size_t count, std::vector<u8>& lengths) {
        lengths.assign(count, 99);
        BitReader bits(packed.data(), packed.size());
        return read_code_lengths(bits, lengths);
    };
    std::vector<u8> lengths;
    ASSERT_TRUE(read({0x80}, 1024, lengths));
    EXPECT_EQ(lengths, std::vector<u8>(1024, 0));

    tablemaker::BitWriter writer;  // fields of 3 bits: 5, a zero with two more, 7
    for (const auto& [value, bits] : {std::pair{0, 1}, {3, 5}, {5, 3}, {0, 3}, {2, 4}, {7, 3}})
        writer.put(static_cast<u32>(value), bits);
    const Bytes plain = writer.take();
    ASSERT_TRUE(read(plain, 5, lengths));
    EXPECT_EQ(lengths, (std::vector<u8>{5, 0, 0, 0, 7}));
    EXPECT_FALSE(read(plain, 3, lengths));    // the run of zeros does not fit
    EXPECT_FALSE(read(plain, 100, lengths));  // the bits end
}

}  // namespace
}  // namespace quelmar::testing
