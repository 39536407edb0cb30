#include "tablebase/compressed_file.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace quelmar {

namespace {

// Which check failed, above the class.
constexpr int error(int error_class, int check) {
    return check << 8 | error_class;
}

std::uint32_t big_endian(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | static_cast<std::uint32_t>(bytes[3]);
}

constexpr auto CHECKSUM_TABLE = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i;
        for (int step = 0; step < 8; ++step)
            value = (value & 1) != 0 ? value >> 1 : (value >> 1) ^ 0xEDB88320;
        table[i] = value;
    }
    return table;
}();

bool seek_to(std::FILE* file, std::uint64_t offset) {
    return offset <= INT64_MAX && fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

bool read_bytes(std::FILE* file, std::uint8_t* bytes, std::size_t size) {
    return std::fread(bytes, 1, size, file) == size;
}

// The text is the compressor's business; its frame is not.
bool is_banner(const std::uint8_t* bytes) {
    constexpr std::uint8_t END[] = {'\r', '\n', 0, 0, 0, 0};
    static_assert(BANNER_TEXT + sizeof END == BANNER_SIZE);
    const auto printable = [](std::uint8_t byte) { return byte >= ' ' && byte <= '~'; };
    return std::all_of(bytes, bytes + BANNER_TEXT, printable) &&
           std::equal(std::begin(END), std::end(END), bytes + BANNER_TEXT);
}

// The fixed header's fields.
struct FixedHeader {
    std::uint32_t index_size;
    unsigned block_bits;
    std::uint32_t block_count;

    // Bytes that the check values and the bit fields take.
    std::uint64_t checks_size() const { return std::uint64_t{block_count} * BLOCK_CHECKS_SIZE; }
    std::uint64_t fields_size() const {
        return ((std::uint64_t{block_count} + 1 + DISTANCE_COUNT) * block_bits + 7) / 8;
    }
};

int read_fixed_header(std::FILE* file, std::uint8_t* bytes, FixedHeader& header) {
    if (!read_bytes(file, bytes, FIXED_HEADER_SIZE))
        return error(FILE_READ_ERROR, 1);
    if (!is_banner(bytes))
        return error(FILE_READ_ERROR, 2);
    header = {big_endian(bytes + 64), bytes[70], big_endian(bytes + 72)};
    if (header.block_bits > MAX_BLOCK_BITS || header.index_size < SMALLEST_INDEX)
        return error(FILE_MALFORMED, 3);
    if (bytes[71] != DISTANCE_COUNT || big_endian(bytes + 76) != FORMAT_NUMBER)
        return error(FILE_MALFORMED, 4);
    return FILE_OK;
}

// Bytes of the file, so that a false size costs no memory.
std::uint64_t size_of(std::FILE* file) {
    const off_t here = ftello(file);
    if (here < 0 || fseeko(file, 0, SEEK_END) != 0)
        return 0;
    const off_t end = ftello(file);
    return fseeko(file, here, SEEK_SET) == 0 && end > 0 ? static_cast<std::uint64_t>(end) : 0;
}

std::uint32_t read_length(BitReader& bits, const CompressedTableInfo& info) {
    const std::uint32_t length = bits.read(info.block_bits);
    return length == 0 ? info.block_size : length;
}

void read_fields(BitReader bits, std::uint32_t index_size, CompressedTableInfo& info) {
    std::uint64_t offset = index_size;
    for (std::uint32_t block = 0; block < info.block_count; ++block) {
        const std::uint32_t length = read_length(bits, info);
        info.largest_compressed = std::max(info.largest_compressed, length);
        info.offsets[block] = offset;
        offset += length;
    }
    info.offsets[info.block_count] = offset;
    info.last_block_length = read_length(bits, info);
    for (std::uint32_t& distance : info.distances)
        distance = bits.read(info.block_bits);
}

void read_checks(const std::uint8_t* bytes, CompressedTableInfo& info) {
    for (std::uint32_t block = 0; block < info.block_count; ++block, bytes += BLOCK_CHECKS_SIZE)
        info.checks[block] = {big_endian(bytes), big_endian(bytes + 4)};
}

// `index` is the whole index with its check value.
int read_sections(const FixedHeader& header, std::span<const std::uint8_t> index, CompressedTableInfo& info) {
    const std::uint64_t fields_at = FIXED_HEADER_SIZE + header.checks_size();
    const std::uint64_t lengths_at = fields_at + header.fields_size();
    const std::size_t end = index.size() - sizeof(std::uint32_t);
    if (lengths_at > end)
        return error(FILE_MALFORMED, 8);
    info.block_bits = header.block_bits;
    info.block_size = std::uint32_t{1} << header.block_bits;
    info.block_count = header.block_count;
    info.largest_compressed = 0;
    info.offsets.reset(new (std::nothrow) std::uint64_t[std::size_t{header.block_count} + 1]);
    info.checks.reset(new (std::nothrow) BlockChecks[header.block_count]);
    if (!info.offsets || !info.checks)
        return error(FILE_NO_MEMORY, 9);
    read_checks(index.data() + FIXED_HEADER_SIZE, info);
    read_fields({index.data() + fields_at, static_cast<std::size_t>(header.fields_size())}, header.index_size,
                info);
    std::array<std::uint8_t, MAIN_ALPHABET> lengths{};
    BitReader bits(index.data() + lengths_at, end - static_cast<std::size_t>(lengths_at));
    if (!read_code_lengths(bits, lengths))
        return error(FILE_MALFORMED, 10);
    if (!build_decode_table(lengths, MAIN_LOOKUP_BITS, info.main_table))
        return error(FILE_MALFORMED, 11);
    return FILE_OK;
}

// Bytes that a match of this length code copies.
std::uint32_t read_match_length(BitReader& bits, unsigned code) {
    if (code <= LAST_PLAIN_LENGTH)
        return code + 1;
    const unsigned extra = code - LAST_PLAIN_LENGTH;
    return (std::uint32_t{1} << extra) + bits.read(extra) + LAST_PLAIN_LENGTH;
}

}  // namespace

const char* error_words(int code) {
    switch (error_class(code)) {
    case FILE_READ_ERROR:
        return "read error";
    case FILE_NO_MEMORY:
        return "out of memory";
    case FILE_MALFORMED:
        return "file broken";
    default:
        return nullptr;
    }
}

std::uint32_t checksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = (value >> 8) ^ CHECKSUM_TABLE[(value ^ byte) & 255];
    return value;
}

int read_compressed_header(std::FILE* file, CompressedTableInfo& info) {
    std::array<std::uint8_t, FIXED_HEADER_SIZE> fixed{};
    FixedHeader header{};
    if (const int code = read_fixed_header(file, fixed.data(), header); code != FILE_OK)
        return code;
    if (header.index_size > size_of(file))
        return error(FILE_READ_ERROR, 5);
    const std::unique_ptr<std::uint8_t[]> index(new (std::nothrow) std::uint8_t[header.index_size]);
    if (!index)
        return error(FILE_NO_MEMORY, 6);
    std::copy(fixed.begin(), fixed.end(), index.get());
    if (!read_bytes(file, index.get() + FIXED_HEADER_SIZE, header.index_size - FIXED_HEADER_SIZE))
        return error(FILE_READ_ERROR, 5);
    const std::size_t checked = header.index_size - sizeof(std::uint32_t);
    if (checksum({index.get(), checked}) != big_endian(index.get() + checked))
        return error(FILE_MALFORMED, 7);
    return read_sections(header, {index.get(), header.index_size}, info);
}

int create_block_decoder(std::size_t block_size, BlockDecoder& decoder) {
    constexpr std::size_t SLACK = 64;
    decoder.input.reset(new (std::nothrow) std::uint8_t[block_size + SLACK]);
    decoder.capacity = decoder.input ? block_size : 0;
    return decoder.input ? FILE_OK : error(FILE_NO_MEMORY, 12);
}

void set_output(BlockDecoder& decoder, std::uint8_t* buffer) {
    decoder.output = buffer;
    decoder.output_length = 0;
    decoder.complete = false;
}

int read_compressed_block(BlockDecoder& decoder, const CompressedTableInfo& info, std::FILE* file,
                          std::uint32_t block) {
    if (decoder.output == nullptr || decoder.capacity < info.block_size)
        return error(FILE_BAD_CALL, 13);
    if (block >= info.block_count)
        return error(FILE_BAD_CALL, 14);
    decoder.block = block;
    decoder.output_length = info.decoded_length(block);
    decoder.input_length = info.compressed_length(block);
    decoder.complete = false;
    if (!seek_to(file, info.offsets[block]) || !read_bytes(file, decoder.input.get(), decoder.input_length)) {
        decoder.input_length = 0;
        return error(FILE_READ_ERROR, 15);
    }
    if (decoder.input_length == decoder.output_length) {
        std::memcpy(decoder.output, decoder.input.get(), decoder.output_length);
        decoder.complete = true;
    }
    return FILE_OK;
}

int decode_block(BlockDecoder& decoder, const CompressedTableInfo& info) {
    if (decoder.output == nullptr || decoder.capacity == 0)
        return error(FILE_BAD_CALL, 16);
    if (decoder.complete)
        return FILE_OK;
    BitReader bits(decoder.input.get(), decoder.input_length);
    std::uint8_t* out = decoder.output;
    std::uint8_t* const end = out + decoder.output_length;
    while (out < end) {
        const unsigned symbol = info.main_table.decode(bits);
        if (symbol < FIRST_MATCH_SYMBOL) {
            *out++ = static_cast<std::uint8_t>(symbol);
            continue;
        }
        const unsigned match = symbol - FIRST_MATCH_SYMBOL;
        const std::uint32_t distance = info.distances[match / LENGTH_CODES];
        const std::uint32_t length = read_match_length(bits, match % LENGTH_CODES);
        if (distance == 0 || static_cast<std::ptrdiff_t>(distance) > out - decoder.output)
            return error(FILE_MALFORMED, 17);
        // Byte by byte: a match that overlaps its source repeats it.
        for (std::uint8_t* const stop = out + std::min<std::ptrdiff_t>(length, end - out); out < stop; ++out)
            *out = out[-static_cast<std::ptrdiff_t>(distance)];
    }
    return bits.overrun() ? error(FILE_MALFORMED, 18) : FILE_OK;
}

const char* block_fault(const BlockDecoder& decoder, const CompressedTableInfo& info) {
    const BlockChecks& checks = info.checks[decoder.block];
    if (checksum({decoder.input.get(), decoder.input_length}) != checks.compressed)
        return "packed bytes do not match their check value";
    if (checksum({decoder.output, decoder.output_length}) != checks.decoded)
        return "decoded bytes do not match their check value";
    return nullptr;
}

}  // namespace quelmar
