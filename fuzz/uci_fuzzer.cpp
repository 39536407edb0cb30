// A whole run of the program under a UCI interface that sends arbitrary bytes.
#include "outside.h"
#include "protocol/game.h"
#include "protocol/input.h"
#include "protocol/xboard.h"

void quelmar::fuzz::session() {
    open_input(EndOfInput::QUITS);
    new_game();
    dispatch_xboard_command("uci\n");
}
