#include "protocol/startup.h"

#include "board/hash_keys.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/input.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/strength.h"
#include "protocol/thinking.h"
#include "protocol/xboard.h"
#include "search/search_control.h"
#include "search/search_reports.h"
#include "tablebase/registry.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

namespace quelmar {

[[noreturn]] static void end_without_memory() {
    std::printf("*** Out of memory\n");
    std::fflush(stdout);
    std::_Exit(EXIT_FAILURE);
}

// No new handler, since readers of tables ask for memory that they can do without.
void end_when_memory_runs_out() {
    std::set_terminate([] {
        const std::exception_ptr fault = std::current_exception();
        try {
            if (fault != nullptr)
                std::rethrow_exception(fault);
        } catch (const std::bad_alloc&) {
            end_without_memory();
        } catch (...) {
            std::abort();
        }
        end_without_memory();  // there was none left even for the exception
    });
}

static void connect_search() {
    print_what_the_search_says();
    search_reports.poll_input = poll_input;
    search_reports.wait_for_input = wait_for_input;
    set_search_line_handler(dispatch_xboard_during_search);  // until a UCI takes over
}

void load_settings(UciKind kind) {
    time_control = {};
    search_control = {};
    protocol_state = {};
    protocol_state.standard_uci = protocol_state.uci_mode = kind == UciKind::STANDARD;
    castling_notation = kind == UciKind::STANDARD ? CastlingText::KING_MOVE : CastlingText::LETTERS;
    table_reports.faulty_file_is_fatal = kind == UciKind::OWN;
    table_reports.tell = tell;
    reset_settings();
    strength_settings = {};
    if (!read_config_file() && kind == UciKind::STANDARD)
        read_users_config_file();
    apply_table_path();
    apply_hash_size();
}

void start_engine(UciKind kind) {
    find_modern_processor();
    init_hash_keys();
    build_exchange_table();
    connect_search();
    load_settings(kind);
    new_game();
}

}  // namespace quelmar
