// Compressed files: a byte sequence cut into blocks of equal size, each compressed on its own, so that any
// block can be had without the others. All numbers are big-endian.
//
//     0                 60 characters that name the compressor, the last two CR LF, then four zero bytes
//     64  u32           size of the index: everything before the first compressed block
//     68  u16           unused
//     70  u8            log2 of the block size, at most 16
//     71  u8            24, the number of match distances
//     72  u32           number of blocks
//     76  u32           format number
//     80                per block two u32: check values of its decoded and of its compressed bytes
//     ...               bit fields as wide as byte 70 says: the compressed length of each block, the decoded
//                       length of the last one (0 stands for the full size in both), the 24 distances
//     next byte         the packed code lengths of the 1024 symbols
//     index size - 4    u32 check value of all bytes before it
//     index size        the compressed blocks
//
// A block that did not shrink is stored as it is. Otherwise it is a sequence of symbols: 0..255 are bytes,
// the others copy bytes from one of the 24 distances back, which the whole file shares.
//
// Nothing in a file is trusted: whatever the bytes are, no function reads or writes outside its buffers.
#pragma once

#include "tablebase/huffman.h"

#include <array>
#include <cstdio>

namespace quelmar {

// Error codes: 0 is success; otherwise the low byte is one of these classes and the rest tells which check
// failed.
inline constexpr int FILE_OK = 0, FILE_READ_ERROR = 2, FILE_NO_MEMORY = 5, FILE_MALFORMED = 6,
                     FILE_BAD_CALL = 7;
constexpr int error_class(int code) {
    return code & 255;
}

// The class in words; nullptr for FILE_OK and FILE_BAD_CALL.
const char* error_words(int code);

// The layout above, for whoever writes such files.
inline constexpr std::size_t BANNER_SIZE = 64, BANNER_TEXT = 58, FIXED_HEADER_SIZE = 80,
                             BLOCK_CHECKS_SIZE = 8;
inline constexpr std::uint32_t FORMAT_NUMBER = 0x004001F5, SMALLEST_INDEX = 84;
inline constexpr unsigned DISTANCE_COUNT = 24, MAX_BLOCK_BITS = 16;
inline constexpr unsigned FIRST_MATCH_SYMBOL = 256, MAIN_ALPHABET = 1024, MAIN_LOOKUP_BITS = 13;

// A match symbol is FIRST_MATCH_SYMBOL + slot * LENGTH_CODES + length code. Length codes up to
// LAST_PLAIN_LENGTH mean their value + 1; later ones have n = code - LAST_PLAIN_LENGTH extra bits and mean
// (1 << n) + these bits + LAST_PLAIN_LENGTH.
inline constexpr unsigned LENGTH_CODES = 32, LAST_PLAIN_LENGTH = 14;

// The check values of a block.
struct BlockChecks {
    std::uint32_t decoded = 0;
    std::uint32_t compressed = 0;
};

// What the index of a file says. Written by read_compressed_header, then constant.
struct CompressedTableInfo {
    unsigned block_bits = 0;
    std::uint32_t block_size = 0;
    std::uint32_t block_count = 0;
    std::uint32_t last_block_length = 0;       // decoded
    std::uint32_t largest_compressed = 0;      // length of a block
    std::unique_ptr<std::uint64_t[]> offsets;  // of every block in the file, and of the end of the last one
    std::unique_ptr<BlockChecks[]> checks;     // of every block
    std::array<std::uint32_t, DISTANCE_COUNT> distances{};
    DecodeTable main_table;

    // Both need block < block_count.
    std::uint32_t decoded_length(std::uint32_t block) const {
        return block + 1 == block_count ? last_block_length : block_size;
    }
    std::uint32_t compressed_length(std::uint32_t block) const {
        return static_cast<std::uint32_t>(offsets[block + 1] - offsets[block]);
    }
    // Where the last block ends, and with it the file.
    std::uint64_t file_size() const { return offsets[block_count]; }
};

// Work space for one block at a time, shared by all files.
struct BlockDecoder {
    std::size_t capacity = 0;  // greatest block size it can take; 0 before create_block_decoder
    std::uint32_t block = 0;   // that was read last
    std::unique_ptr<std::uint8_t[]> input;
    std::size_t input_length = 0;
    std::uint8_t* output = nullptr;
    std::size_t output_length = 0;
    bool complete = false;  // the block was stored and is already in the output
};

// The check value of the format: a CRC over the reflected polynomial 0xEDB88320 whose table is built with the
// test of the low bit reversed, so table[0] is not 0. No initial and no final inversion.
std::uint32_t checksum(std::span<const std::uint8_t> bytes);

// Reads and checks the index; leaves the file behind it. `info` is usable only after FILE_OK.
int read_compressed_header(std::FILE* file, CompressedTableInfo& info);

// Allocates the work space for blocks of up to `block_size` bytes.
int create_block_decoder(std::size_t block_size, BlockDecoder& decoder);

// Directs the next block into `buffer`, which must have room for the decoder's block size.
void set_output(BlockDecoder& decoder, std::uint8_t* buffer);

// Reads the compressed bytes of a block; a stored block is in the output at once. Needs an output.
int read_compressed_block(BlockDecoder& decoder, const CompressedTableInfo& info, std::FILE* file,
                          std::uint32_t block);

// Decodes the block that was read last into the output. Afterwards output_length bytes are there.
int decode_block(BlockDecoder& decoder, const CompressedTableInfo& info);

// Compares the block that was decoded last with its check values: nullptr when they agree, otherwise what
// does not. Decoding never looks at them, so that it can be tested with bytes of any kind.
const char* block_fault(const BlockDecoder& decoder, const CompressedTableInfo& info);

}  // namespace quelmar
