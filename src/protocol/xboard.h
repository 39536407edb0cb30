// The xboard protocol and the game loop around it.
#pragma once

#include <string_view>

namespace quelmar {

// Plays, ponders, analyses and waits as the commands say. Returns only through process exit or into UCI.
[[noreturn]] void game_loop();

// Carries out one command line. Lines that are no command are ignored.
void dispatch_xboard_command(std::string_view line);

// The effect of "new".
void new_game();

}  // namespace quelmar
