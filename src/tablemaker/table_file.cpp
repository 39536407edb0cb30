#include "tablemaker/table_file.h"

#include "platform/platform.h"
#include "tablebase/catalogue.h"
#include "tablebase/compressed_file.h"
#include "tablemaker/error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace quelmar::tablemaker {

namespace {

using File = platform::FileHandle;

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& what) {
    throw TablemakerError(path.string() + ": " + what);
}

File open_to_read(const std::filesystem::path& path) {
    File file(platform::open_to_read(path));
    if (!file)
        fail(path, std::strerror(errno));
    return file;
}

u64 size_of(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        fail(path, error.message());
    return size;
}

std::vector<u8> read_plain(const std::filesystem::path& path) {
    const File file = open_to_read(path);
    std::vector<u8> bytes(size_of(path));
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        fail(path, "cannot be read");
    return bytes;
}

void require(int code, const std::filesystem::path& path) {
    switch (error_class(code)) {
    case FILE_OK:
        return;
    case FILE_READ_ERROR:
        fail(path, "read error");
    case FILE_NO_MEMORY:
        fail(path, "out of memory");
    default:
        fail(path, "file broken (" + std::to_string(code) + ")");
    }
}

std::vector<u8> read_compressed(const std::filesystem::path& path) {
    const File file = open_to_read(path);
    CompressedTableInfo info;
    BlockDecoder decoder;
    require(read_compressed_header(file.get(), info), path);
    if (std::filesystem::file_size(path) != info.file_size())
        fail(path, "the file does not end with its last block");
    require(create_block_decoder(info.block_size, decoder), path);
    std::vector<u8> bytes, buffer(info.block_size);
    bytes.reserve(std::size_t{info.block_count} * info.block_size);
    for (u32 block = 0; block < info.block_count; ++block) {
        set_output(decoder, buffer.data());
        require(read_compressed_block(decoder, info, file.get(), block), path);
        require(decode_block(decoder, info), path);
        if (const char* const fault = block_fault(decoder, info))
            fail(path, "block " + std::to_string(block) + ": " + fault);
        bytes.insert(bytes.end(), decoder.output, decoder.output + decoder.output_length);
    }
    return bytes;
}

constexpr std::string_view PART = ".part";  // behind it the number of the process

std::filesystem::path part_of(const std::filesystem::path& final_path) {
    std::filesystem::path path = final_path;
    return path += std::string(PART) + std::to_string(platform::process_number());
}

void remove_quietly(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

// A file that disappears with the object unless it was kept under its final name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& final_path)
        : final_path_(final_path), path_(part_of(final_path)), descriptor_(platform::open_held(path_)) {
        if (descriptor_ < 0)
            fail(path_, std::strerror(errno));
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0)
            platform::close_file(descriptor_);
        if (!kept_)
            remove_quietly(path_);
    }

    void write_all(std::span<const u8> bytes) {
        if (!platform::write_all(descriptor_, bytes))
            fail(path_, std::strerror(errno));
    }

    void keep() {
        const bool flushed = platform::flush_to_disk(descriptor_);
        const bool closed = platform::close_file(std::exchange(descriptor_, -1));
        if (!flushed || !closed)
            fail(final_path_, std::strerror(errno));
        std::error_code error;
        std::filesystem::rename(path_, final_path_, error);
        if (error)
            fail(final_path_, error.message());
        kept_ = true;
    }

private:
    std::filesystem::path final_path_, path_;
    int descriptor_;
    bool kept_ = false;
};

// "kqk.nbw.emd.part123".
bool is_part_name(const std::filesystem::path& path) {
    const std::string extension = path.extension().string();
    return extension.starts_with(PART) && extension.size() > PART.size() &&
           extension.find_first_not_of("0123456789", PART.size()) == std::string::npos &&
           table_named(path.stem());
}

}  // namespace

// Plain "kqkr.nbw", compressed "kqkr.nbw.emd", "kqkr_nbw.emd" or "kqkrnbw.emd".
std::optional<TableName> table_named(const std::filesystem::path& path) {
    constexpr std::size_t SUFFIX = 3;
    const bool compressed = is_compressed_name(path);
    std::string name = compressed ? path.stem().string() : path.filename().string();
    const bool white = name.ends_with("nbw"), black = name.ends_with("nbb");
    if (!white && !black)
        return std::nullopt;
    name.resize(name.size() - SUFFIX);
    const bool separated = name.ends_with('.') || (compressed && name.ends_with('_'));
    if (separated)
        name.pop_back();
    const int number = ending_by_name(name);
    if (!(separated || compressed) || number == 0 || (black && ending(number).symmetric))
        return std::nullopt;
    return TableName{number, black ? BLACK : WHITE};
}

bool is_compressed_name(const std::filesystem::path& path) {
    return path.extension() == ".emd";
}

std::vector<u8> read_table(const std::filesystem::path& path) {
    return is_compressed_name(path) ? read_compressed(path) : read_plain(path);
}

void write_file(const std::filesystem::path& path, std::span<const u8> bytes) {
    TemporaryFile file(path);
    file.write_all(bytes);
    file.keep();
}

u64 table_size(const std::filesystem::path& path) {
    const File file = open_to_read(path);
    if (!is_compressed_name(path))
        return size_of(path);
    CompressedTableInfo info;
    require(read_compressed_header(file.get(), info), path);
    return u64{info.block_count} * info.block_size;
}

void require_writable(const std::filesystem::path& directory) {
    // Permissions do not tell all, so a file is made; by its name it is found again if this run is broken
    // off.
    const std::filesystem::path path = part_of(directory / (std::string(ending(1).name) + ".nbw"));
    const int descriptor = platform::open_held(path);
    if (descriptor < 0)
        fail(directory, std::string("cannot be written: ") + std::strerror(errno));
    platform::close_file(descriptor);
    remove_quietly(path);
}

void remove_stale_parts(const std::filesystem::path& directory) {
    std::error_code error;
    for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error))
        if (is_part_name(at->path()))
            platform::remove_unless_held(at->path());
}

}  // namespace quelmar::tablemaker
