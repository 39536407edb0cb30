#include "outside.h"

#include "board/position.h"
#include "eval/outputs.h"
#include "protocol/game_clock.h"
#include "protocol/input.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/startup.h"
#include "protocol/xboard.h"
#include "search/search_control.h"
#include "search/search_limits.h"
#include "search/search_state.h"
#include "search/transposition.h"
#include "tablebase/registry.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <span>
#include <sys/time.h>
#include <unistd.h>

namespace quelmar::fuzz {

namespace {

constexpr i64 MS_PER_QUESTION = 10, MS_PER_POLL = 1000;  // a search on the usual clock lives for a few polls
constexpr u64 POLLING_WEIGHT = 100, QSEARCH_WEIGHT = 9;

// In the bytes of standard input: nothing has arrived at this poll of a search.
constexpr u8 NOTHING_YET = 1;

// Larger blocks are not to be had, so that an absurd hash size cannot exhaust the machine. Allocation can
// fail in a process that lives on.
constexpr std::size_t LARGEST_BLOCK = std::size_t{8} << 20;

struct ProcessEnded {
    int status;
};
struct Outside {
    bool inside_session = false;
    std::span<const u8> input;
    i64 clock_ms = 0;
};
Outside outside;

bool next_is(u8 byte) {
    return !outside.input.empty() && outside.input.front() == byte;
}

int poll_input_bytes(int timeout_ms) {
    outside.clock_ms += MS_PER_POLL;
    if (timeout_ms == 0 && next_is(NOTHING_YET)) {
        outside.input = outside.input.subspan(1);
        return 0;
    }
    while (next_is(NOTHING_YET))
        outside.input = outside.input.subspan(1);
    return 1;
}

ssize_t read_input_bytes(void* buffer, std::size_t size) {
    const auto pause = std::find(outside.input.begin(), outside.input.end(), NOTHING_YET);
    const auto arrived = static_cast<std::size_t>(pause - outside.input.begin());
    const std::size_t count = std::min(arrived, size);
    std::copy_n(outside.input.begin(), count, static_cast<u8*>(buffer));
    outside.input = outside.input.subspan(count);
    return static_cast<ssize_t>(count);
}

void reset_engine() {
    set_search_line_handler(dispatch_xboard_during_search);
    position = {};
    attack_map = {};
    ply_outputs.fill({});
    search_state = {};
    search_control = {};
    search_limits = {};
    protocol_state = {};
    time_control = {};
    reset_settings();
    settings.hash_mb = settings.fritz_hash_mb = 1;
    apply_table_path();
    tt_generation = 0;
    apply_hash_size();
}

}  // namespace

std::string take_input() {
    const std::string text(outside.input.begin(), outside.input.end());
    outside.input = {};
    return text;
}

}  // namespace quelmar::fuzz

using namespace quelmar::fuzz;

// The linker makes these names: __wrap_f is called instead of f, and __real_f is f.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    if (!std::freopen("/dev/null", "w", stdout))
        std::abort();
    quelmar::start_engine(quelmar::UciKind::OWN);
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    reset_engine();
    outside = {.inside_session = true, .input = {bytes, size}};
    int status = EXIT_SUCCESS;
    try {
        session();
    } catch (const ProcessEnded& end) {
        status = end.status;
    }
    outside.inside_session = false;
    if (status != EXIT_SUCCESS)
        std::abort();
    return 0;
}

int __real_poll(pollfd* descriptors, nfds_t count, int timeout_ms);
ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
int __real_gettimeofday(timeval* now, void* zone);
std::FILE* __real_fopen(const char* path, const char* mode);
void* __real__ZN7quelmar8platform14allocate_largeEm(std::size_t bytes);
[[noreturn]] void __real_exit(int status);
bool __real__ZN7quelmar22position_is_consistentEv();
int __real__ZN7quelmar8evaluateEv();

int __wrap_poll(pollfd* descriptors, nfds_t count, int timeout_ms) {
    if (!outside.inside_session)
        return __real_poll(descriptors, count, timeout_ms);
    descriptors->revents = POLLIN;
    return poll_input_bytes(timeout_ms);
}

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    return outside.inside_session && descriptor == STDIN_FILENO ? read_input_bytes(buffer, size)
                                                                : __real_read(descriptor, buffer, size);
}

int __wrap_gettimeofday(timeval* now, void* zone) {
    if (!outside.inside_session)
        return __real_gettimeofday(now, zone);
    outside.clock_ms += MS_PER_QUESTION;
    now->tv_sec = outside.clock_ms / 1000;
    now->tv_usec = outside.clock_ms % 1000 * 1000;
    return 0;
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    if (!outside.inside_session || std::strcmp(path, "quelmar.ini") != 0)
        return __real_fopen(path, mode);
    // Opened for reading only.
    return fmemopen(const_cast<quelmar::u8*>(outside.input.data()), outside.input.size(), "r");
}

void* __wrap__ZN7quelmar8platform14allocate_largeEm(std::size_t bytes) {
    return outside.inside_session && bytes > LARGEST_BLOCK
               ? nullptr
               : __real__ZN7quelmar8platform14allocate_largeEm(bytes);
}

void __wrap_exit(int status) {
    if (outside.inside_session)
        throw ProcessEnded{status};
    __real_exit(status);
}

// Recounting the board at every node would leave little time to search.
bool __wrap__ZN7quelmar22position_is_consistentEv() {
    return quelmar::protocol_state.searching || __real__ZN7quelmar22position_is_consistentEv();
}

// Nodes count for many, so that a search polls its input after dozens of them instead of thousands, and ends
// as soon.
int __wrap__ZN7quelmar8evaluateEv() {
    quelmar::search_state.nodes_since_poll += POLLING_WEIGHT;
    quelmar::search_state.qsearch_nodes += QSEARCH_WEIGHT;
    return __real__ZN7quelmar8evaluateEv();
}

// Freed blocks are kept for a while to find who still uses them; a hash table per run is much to keep.
const char* __asan_default_options() {
    return "quarantine_size_mb=16:detect_leaks=0";
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
