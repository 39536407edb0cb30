// The game loop behind the xboard protocol.
#pragma once

namespace quelmar {

// Starts a new game, then plays, ponders, analyses and waits as the commands say. Ends by process exit
// ("quit", end of input) or in the UCI loop.
[[noreturn]] void game_loop();

}  // namespace quelmar
