// UCI as today's interfaces speak it, the protocol of quelmar-uci. It differs from the UCI of quelmar in how
// castling is written, in that it reads whole FENs, in its options, and in that all limits of "go" hold
// together. What went wrong is told in "info string" lines. protocol_state.standard_uci says to the rest of
// the program which of both it is.
#pragma once

namespace quelmar {

// Obeys UCI commands until "quit" or the end of the input. The engine must have been started for it.
[[noreturn]] void run_standard_uci();

}  // namespace quelmar
