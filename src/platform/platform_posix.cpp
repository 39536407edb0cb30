#include "platform/platform.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace quelmar::platform {

void prepare_standard_streams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1)
            ::open("/dev/null", O_RDWR);  // takes the lowest free number, which is this one
    }
    std::signal(SIGPIPE, SIG_DFL);  // a parent may have left it ignored
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

bool is_terminal(int descriptor) {
    return ::isatty(descriptor) == 1;
}

std::ptrdiff_t read_arrived(int descriptor, std::span<char> bytes, int timeout_ms) {
    pollfd question{descriptor, POLLIN, 0};
    const int ready = ::poll(&question, 1, timeout_ms);
    if (ready == 0 || (ready < 0 && errno == EINTR))
        return NOTHING;
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count > 0)
        return count;
    return count < 0 && (errno == EINTR || errno == EAGAIN) ? NOTHING : END;
}

std::uint64_t time_of_day_ms() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_usec) / 1000;
}

std::string_view file_name(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string_view list_separators() {
    return ",;:";
}

bool is_regular_file(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool is_directory(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

std::FILE* open_to_read(const std::filesystem::path& path) {
    return std::fopen(path.c_str(), "rb");
}

int open_held(const std::filesystem::path& path) {
    for (;;) {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0)
            return descriptor;
        ::flock(descriptor, LOCK_EX);  // a file system without locks has no stale files removed either
        struct stat status {};
        if (::fstat(descriptor, &status) != 0 || status.st_nlink > 0)
            return descriptor;
        ::close(descriptor);  // it was taken for a stale one before it was locked
    }
}

bool write_all(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool flush_to_disk(int descriptor) {
    return ::fsync(descriptor) == 0;
}

bool close_file(int descriptor) {
    return ::close(descriptor) == 0;
}

void remove_unless_held(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.c_str());
    ::close(descriptor);
}

int process_number() {
    return ::getpid();
}

std::string output_of(const std::string& program, const std::string& arguments) {
    std::FILE* const pipe = ::popen(("'" + program + "' " + arguments).c_str(), "r");
    if (pipe == nullptr)
        return {};
    std::string output;
    std::array<char, 4096> part;
    for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
        output.append(part.data(), count);
    ::pclose(pipe);
    return output;
}

namespace {

// Of x86 and of most others; where huge pages are larger, the block lies on ordinary ones.
constexpr std::size_t HUGE_PAGE = std::size_t{2} << 20;

constexpr std::size_t in_whole_pages(std::size_t bytes) {
    return (bytes + HUGE_PAGE - 1) / HUGE_PAGE * HUGE_PAGE;
}

}  // namespace

// A block can begin anywhere, so a page more is taken and what is too much at either end given back.
void* allocate_large(std::size_t bytes) {
    const std::size_t size = in_whole_pages(bytes);
    if (size < bytes || size + HUGE_PAGE < size)
        return nullptr;
    void* const taken =
        ::mmap(nullptr, size + HUGE_PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (taken == MAP_FAILED)
        return nullptr;
    char* const begin = static_cast<char*>(taken);
    const std::size_t before = (HUGE_PAGE - reinterpret_cast<std::uintptr_t>(taken) % HUGE_PAGE) % HUGE_PAGE;
    char* const block = begin + before;
    if (before > 0)
        ::munmap(begin, before);
    if (before < HUGE_PAGE)
        ::munmap(block + size, HUGE_PAGE - before);
#ifdef MADV_HUGEPAGE
    ::madvise(block, size, MADV_HUGEPAGE);
#endif
    return block;
}

void release_large(void* memory, std::size_t bytes) {
    if (memory != nullptr)
        ::munmap(memory, in_whole_pages(bytes));
}

}  // namespace quelmar::platform
