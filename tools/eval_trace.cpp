// Prints the static score of a position term by term, to see where a number comes from.
//
//   eval_trace "FEN" [style]      style 0..3: Normal, Active (default), Aggressive, Suicidal
//
// Each term stands in 128ths of a pawn, middlegame and endgame, as White and Black have it and as White's
// balance. The totals and the score are the side to move's.
#include "board/hash_keys.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "protocol/command_line.h"
#include "protocol/game.h"
#include "protocol/settings.h"
#include "protocol/tester_commands.h"

#include <cstdio>
#include <cstdlib>

using namespace quelmar;

static constexpr char USAGE[] = "usage: eval_trace \"FEN\" [style 0..3]\n";

int main(int argc, char** argv) {
    if (const auto status = status_of_options({argv, static_cast<std::size_t>(argc)}, USAGE))
        return *status;
    if (argc < 2 || argc > 3) {
        std::fputs(USAGE, stderr);
        return 1;
    }
    init_hash_keys();
    build_exchange_table();
    find_modern_processor();
    if (argc == 3)
        choose_style(static_cast<int>(std::strtol(argv[2], nullptr, 10)) & 3);
    if (!set_up_or_report(argv[1]))
        return 1;
    print_evaluation();
    return 0;
}
