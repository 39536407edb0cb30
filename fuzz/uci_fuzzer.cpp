// A whole run of the program under a UCI interface that sends arbitrary bytes.
#include "outside.h"
#include "protocol/input.h"
#include "protocol/xboard.h"

using namespace quelmar;

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::start_engine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const u8* bytes, std::size_t size) {
    fuzz::reset_engine();
    fuzz::run({bytes, size}, [] {
        open_input(EndOfInput::QUITS);
        new_game();
        dispatch_xboard_command("uci\n");
    });
    return 0;
}
