// The engine for UCI clients: no mode to choose, UCI from the first line on.

#include "board/hash_keys.h"
#include "eval/exchange.h"
#include "protocol/input.h"
#include "protocol/standard_uci.h"
#include "protocol/startup.h"
#include "protocol/xboard.h"

using namespace quelmar;

int main() {
    prepare_standard_streams();
    end_when_memory_runs_out();
    adopt_standard_dialect();
    init_hash_keys();
    build_exchange_table();
    load_settings();
    new_game();
    open_input(EndOfInput::QUITS);
    run_standard_uci();
}
