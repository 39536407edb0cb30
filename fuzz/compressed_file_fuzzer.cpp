// Feeds arbitrary bytes to the reader of compressed files: header, index and every block.
//
// Hardly any input would get past the banner and the check value of the index, so both are put right first,
// unless the first byte is odd. It is no part of the file.
#include "tablebase/compressed_file.h"

#include <algorithm>
#include <vector>

namespace {

using namespace quelmar;

void put_big_endian(std::uint8_t* at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        at[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

void repair(std::vector<std::uint8_t>& file) {
    if (file.size() < FIXED_HEADER_SIZE + 4)
        return;
    std::fill_n(file.begin(), BANNER_TEXT, std::uint8_t{'x'});
    constexpr std::uint8_t BANNER_END[] = {'\r', '\n', 0, 0, 0, 0};
    std::copy(std::begin(BANNER_END), std::end(BANNER_END), file.begin() + BANNER_TEXT);
    put_big_endian(&file[76], FORMAT_NUMBER);
    file[71] = DISTANCE_COUNT;
    // Some of the bytes behind the header are the index, the rest is block data.
    const std::size_t index_size =
        std::clamp<std::size_t>(std::size_t{file[66]} << 8 | file[67], SMALLEST_INDEX, file.size());
    put_big_endian(&file[64], static_cast<std::uint32_t>(index_size));
    put_big_endian(&file[index_size - 4], checksum({file.data(), index_size - 4}));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 2)
        return 0;
    std::vector<std::uint8_t> content(bytes + 1, bytes + size);
    if ((bytes[0] & 1) == 0)
        repair(content);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fmemopen(content.data(), content.size(), "rb"),
                                                               std::fclose);
    CompressedTableInfo info;
    if (!file || read_compressed_header(file.get(), info) != FILE_OK)
        return 0;
    BlockDecoder decoder;
    if (create_block_decoder(info.block_size, decoder) != FILE_OK)
        return 0;
    std::vector<std::uint8_t> output(info.block_size);
    constexpr std::uint32_t MOST_BLOCKS = 16;
    for (std::uint32_t block = 0; block < std::min(info.block_count, MOST_BLOCKS); ++block) {
        set_output(decoder, output.data());
        if (read_compressed_block(decoder, info, file.get(), block) == FILE_OK &&
            decode_block(decoder, info) == FILE_OK)
            block_fault(decoder, info);
    }
    return 0;
}
