// A whole run of the program under an xboard interface that sends arbitrary bytes.
#include "outside.h"
#include "protocol/game_loop.h"
#include "protocol/input.h"

void quelmar::fuzz::session() {
    open_input(EndOfInput::QUITS);
    game_loop();
}
