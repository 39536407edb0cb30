#include "tablemaker/table_file.h"

#include "tablebase/compressed_file.h"
#include "tablemaker/error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace quelmar::tablemaker {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& what) {
    throw TablemakerError(path.string() + ": " + what);
}

File open_to_read(const std::filesystem::path& path) {
    File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        fail(path, std::strerror(errno));
    return file;
}

std::vector<u8> read_plain(const std::filesystem::path& path) {
    const File file = open_to_read(path);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        fail(path, error.message());
    std::vector<u8> bytes(size);
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

// A file that disappears with the object unless it was kept under its final name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& final_path)
        : final_path_(final_path), path_(final_path.string() + ".part" + std::to_string(getpid())),
          descriptor_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
        if (descriptor_ < 0)
            fail(path_, std::strerror(errno));
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!kept_)
            unlink(path_.c_str());
    }

    void write_all(std::span<const u8> bytes) {
        while (!bytes.empty()) {
            const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
            if (written < 0 && errno != EINTR)
                fail(path_, std::strerror(errno));
            if (written > 0)
                bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
    }

    void keep() {
        const bool flushed = fsync(descriptor_) == 0;
        const bool closed = close(std::exchange(descriptor_, -1)) == 0;
        if (!flushed || !closed || rename(path_.c_str(), final_path_.c_str()) != 0)
            fail(final_path_, std::strerror(errno));
        kept_ = true;
    }

private:
    std::filesystem::path final_path_;
    std::string path_;
    int descriptor_;
    bool kept_ = false;
};

}  // namespace

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

}  // namespace quelmar::tablemaker
