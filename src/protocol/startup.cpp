#include "protocol/startup.h"

#include "protocol/clocks.h"
#include "protocol/config_file.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "search/transposition.h"
#include "tablebase/probe.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace quelmar {

void prepare_standard_streams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1)
            ::open("/dev/null", O_RDWR);  // takes the lowest free number, which is this one
    }
    std::signal(SIGPIPE, SIG_DFL);  // a parent may have left it ignored
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

// No new handler, since readers of tables ask for memory that they can do without.
void end_when_memory_runs_out() {
    std::set_terminate([] {
        try {
            if (const std::exception_ptr fault = std::current_exception())
                std::rethrow_exception(fault);
        } catch (const std::bad_alloc&) {
            std::printf("*** Out of memory\n");
            std::fflush(stdout);
            std::_Exit(EXIT_FAILURE);
        } catch (...) {
            std::abort();
        }
        std::abort();
    });
}

void load_settings() {
    time_control = {};
    protocol_state = {};
    settings = {};
    read_config_file();
    setup_tablebases();
    tt_allocate();
}

}  // namespace quelmar
