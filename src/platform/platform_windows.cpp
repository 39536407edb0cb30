#include "platform/platform.h"

#define WIN32_LEAN_AND_MEAN
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <io.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <vector>
#include <windows.h>

namespace quelmar::platform {

namespace {

constexpr DWORD POLLING_PAUSE_MS = 1;

HANDLE handle_of(int descriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

bool is_console(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

// A console hands out lines: reading blocks until somebody has pressed Enter, so that key is looked for among
// what has happened. The keys themselves stay where they are, until then.
bool has_typed_line(HANDLE console) {
    DWORD count = 0;
    if (GetNumberOfConsoleInputEvents(console, &count) == 0 || count == 0)
        return false;
    std::vector<INPUT_RECORD> events(count);
    if (PeekConsoleInputW(console, events.data(), count, &count) == 0)
        return false;
    for (const INPUT_RECORD& event : std::span(events).first(count))
        if (event.EventType == KEY_EVENT && event.Event.KeyEvent.bKeyDown != 0 &&
            event.Event.KeyEvent.uChar.UnicodeChar == L'\r')
            return true;
    return false;
}

// Whether a read would return at once, with bytes or with the end.
bool can_read(HANDLE handle) {
    if (is_console(handle))
        return has_typed_line(handle);
    DWORD available = 0;
    if (GetFileType(handle) == FILE_TYPE_PIPE &&
        PeekNamedPipe(handle, nullptr, 0, nullptr, &available, nullptr) != 0)
        return available > 0;
    return true;  // a file; or a pipe that nobody writes to any more
}

bool wait_until_readable(HANDLE handle, int timeout_ms) {
    if (timeout_ms == FOREVER)
        return true;  // reading waits by itself
    const ULONGLONG deadline = GetTickCount64() + static_cast<ULONGLONG>(timeout_ms);
    while (!can_read(handle)) {
        if (GetTickCount64() >= deadline)
            return false;
        Sleep(POLLING_PAUSE_MS);
    }
    return true;
}

// Sockets, and pipes that come from outside an emulator, do not tell whether bytes have arrived.
bool tells_what_arrived(HANDLE handle) {
    return GetFileType(handle) != FILE_TYPE_PIPE ||
           PeekNamedPipe(handle, nullptr, 0, nullptr, nullptr, nullptr) != 0 ||
           GetLastError() == ERROR_BROKEN_PIPE;
}

std::ptrdiff_t read_once(HANDLE handle, std::span<char> bytes) {
    DWORD count = 0;
    const bool good = ReadFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
    return good && count > 0 ? static_cast<std::ptrdiff_t>(count) : END;
}

// A thread that blocks in reading for others that must not.
class ReaderAhead {
public:
    explicit ReaderAhead(HANDLE handle) : handle_(handle) {
        std::thread([this] { run(); }).detach();
    }

    std::ptrdiff_t take(std::span<char> bytes, int timeout_ms) {
        std::unique_lock lock(mutex_);
        const auto arrived = [this] { return ended_ || !buffer_.empty(); };
        if (timeout_ms == FOREVER)
            change_.wait(lock, arrived);
        else if (timeout_ms > NO_WAIT)
            change_.wait_for(lock, std::chrono::milliseconds(timeout_ms), arrived);
        if (buffer_.empty())
            return ended_ ? END : NOTHING;
        const std::size_t count = std::min(bytes.size(), buffer_.size());
        std::copy_n(buffer_.begin(), count, bytes.begin());
        buffer_.erase(0, count);
        return static_cast<std::ptrdiff_t>(count);
    }

private:
    void run() {
        std::array<char, 4096> bytes;
        for (std::ptrdiff_t count = 0; count != END;) {
            count = read_once(handle_, bytes);
            const std::lock_guard lock(mutex_);
            if (count == END)
                ended_ = true;
            else
                buffer_.append(bytes.data(), static_cast<std::size_t>(count));
            change_.notify_one();
        }
    }

    HANDLE handle_;
    std::mutex mutex_;
    std::condition_variable change_;
    std::string buffer_;
    bool ended_ = false;
};

// The one of standard input. Never destroyed: its thread may still be reading when the program ends.
ReaderAhead& reader_ahead(HANDLE handle) {
    static auto& reader = *new ReaderAhead(handle);
    return reader;
}

DWORD attributes_of(const char* path) {
    return GetFileAttributesA(path);
}

}  // namespace

void prepare_standard_streams() {
    for (std::FILE* const stream : {stdin, stdout, stderr})
        if (_fileno(stream) < 0 || handle_of(_fileno(stream)) == INVALID_HANDLE_VALUE)
            static_cast<void>(std::freopen("NUL", stream == stdin ? "r" : "w", stream));
    _setmode(_fileno(stdout), _O_BINARY);
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);  // without lines to buffer by, each byte would be a write
}

bool is_terminal(int descriptor) {
    return is_console(handle_of(descriptor));
}

std::ptrdiff_t read_arrived(int descriptor, std::span<char> bytes, int timeout_ms) {
    std::fflush(stdout);
    const HANDLE handle = handle_of(descriptor);
    if (handle == INVALID_HANDLE_VALUE)
        return END;
    static const bool tells = tells_what_arrived(handle);
    if (!tells)
        return reader_ahead(handle).take(bytes, timeout_ms);
    return wait_until_readable(handle, timeout_ms) ? read_once(handle, bytes) : NOTHING;
}

std::uint64_t time_of_day_ms() {
    constexpr std::uint64_t TICKS_PER_MS = 10000;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) / TICKS_PER_MS;
}

std::string_view file_name(std::string_view path) {
    return path.substr(path.find_last_of("/\\:") + 1);
}

std::string_view list_separators() {
    return ",;";  // a colon belongs to the name of a drive
}

bool is_regular_file(const char* path) {
    const DWORD attributes = attributes_of(path);
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
}

bool is_directory(const char* path) {
    const DWORD attributes = attributes_of(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::FILE* open_to_read(const std::filesystem::path& path) {
    return _wfopen(path.c_str(), L"rb");
}

// The C library shares files it has open for reading and writing but not for deletion, which is all the
// holding.
int open_held(const std::filesystem::path& path) {
    return _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT,
                  _S_IREAD | _S_IWRITE);
}

bool write_all(int descriptor, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t MOST_AT_ONCE = std::size_t{1} << 30;
    while (!bytes.empty()) {
        const std::size_t size = bytes.size() < MOST_AT_ONCE ? bytes.size() : MOST_AT_ONCE;
        const int written = _write(descriptor, bytes.data(), static_cast<unsigned>(size));
        if (written <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool flush_to_disk(int descriptor) {
    return _commit(descriptor) == 0;
}

bool close_file(int descriptor) {
    return _close(descriptor) == 0;
}

void remove_unless_held(const std::filesystem::path& path) {
    DeleteFileW(path.c_str());
}

int process_number() {
    return static_cast<int>(GetCurrentProcessId());
}

std::string output_of(const std::string& program, const std::string& arguments) {
    std::FILE* const pipe = _popen(("\"" + program + "\" " + arguments).c_str(), "rb");
    if (pipe == nullptr)
        return {};
    std::string output;
    std::array<char, 4096> part;
    for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
        output.append(part.data(), count);
    _pclose(pipe);
    return output;
}

// Huge pages need a privilege that hardly any user has.
void* allocate_large(std::size_t bytes) {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void release_large(void* memory, std::size_t /*bytes*/) {
    if (memory != nullptr)
        VirtualFree(memory, 0, MEM_RELEASE);
}

}  // namespace quelmar::platform
