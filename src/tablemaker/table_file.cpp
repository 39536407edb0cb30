#include "tablemaker/table_file.h"

#include "tablebase/catalogue.h"
#include "tablebase/compressed_file.h"
#include "tablemaker/error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
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

std::string part_of(const std::filesystem::path& final_path) {
    return final_path.string() + std::string(PART) + std::to_string(getpid());
}

// Opens a file to be written and locks it: by the lock others see that its process has not ended.
int open_part(const std::string& path) {
    for (;;) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0)
            return descriptor;
        flock(descriptor, LOCK_EX);  // a file system without locks has no stale files removed either
        struct stat status {};
        if (fstat(descriptor, &status) != 0 || status.st_nlink > 0)
            return descriptor;
        close(descriptor);  // it was taken for a stale one before it was locked
    }
}

// A file that disappears with the object unless it was kept under its final name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& final_path)
        : final_path_(final_path), path_(part_of(final_path)), descriptor_(open_part(path_)) {
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

// "kqk.nbw.emd.part123".
bool is_part_name(const std::filesystem::path& path) {
    const std::string extension = path.extension().string();
    return extension.starts_with(PART) && extension.size() > PART.size() &&
           extension.find_first_not_of("0123456789", PART.size()) == std::string::npos &&
           table_named(path.stem());
}

void remove_if_stale(const std::filesystem::path& path) {
    const int descriptor = open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return;
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        unlink(path.c_str());
    close(descriptor);
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
    const std::string path = part_of(directory / (std::string(ending(1).name) + ".nbw"));
    const int descriptor = open_part(path);
    if (descriptor < 0)
        fail(directory, std::string("cannot be written: ") + std::strerror(errno));
    unlink(path.c_str());
    close(descriptor);
}

void remove_stale_parts(const std::filesystem::path& directory) {
    std::error_code error;
    for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end;
         at.increment(error))
        if (is_part_name(at->path()))
            remove_if_stale(at->path());
}

}  // namespace quelmar::tablemaker
