// Tells what the endgame tables say: tbprobe PATH reads positions (FEN, then moves by coordinates) from
// standard input, one per line, and answers each with "win N" or "loss N" (plies to mate, for the side to
// move), "draw", "none" (no table), "illegal" or "error".
#include "board/attacks.h"
#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/position.h"
#include "protocol/command_line.h"
#include "protocol/game.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "tablebase/probe.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

using namespace quelmar;

namespace {

constexpr char USAGE[] = "usage: tbprobe PATH <positions\n";

// Sets up "FEN moves e2e4 ..."; false when a move is none of the position.
bool set_up(const std::string& line) {
    constexpr std::string_view MOVES = " moves ";
    const std::size_t at = line.find(MOVES);
    if (set_up_game(line.substr(0, at).c_str()) != FenError::NONE)
        return false;
    std::istringstream words(at == std::string::npos ? "" : line.substr(at + MOVES.size()));
    for (std::string word; words >> word;) {
        build_root_moves();
        const Move* move = find_root_move(word);
        if (move == nullptr)
            return false;
        const Move copy = *move;
        make_move(&copy);
    }
    position.search_ply = 0;
    return true;
}

std::string answer_to(const std::string& line) {
    if (!set_up(line))
        return "error";
    if (in_check(other_side(position.side_to_move)))
        return "illegal";
    Score score = 0;
    if (position.current().men_us + position.current().men_them > tb_max_men || !probe_tablebase(score))
        return "none";
    if (score == 0)
        return "draw";
    return (score > 0 ? "win " : "loss ") + std::to_string(MATE_SCORE - std::abs(score));
}

}  // namespace

int main(int argc, char* argv[]) {
    if (const auto status = status_of_options({argv, static_cast<std::size_t>(argc)}, USAGE))
        return *status;
    if (argc != 2) {
        std::fputs(USAGE, stderr);
        return 1;
    }
    greet_terminal(argv[0], "waits for positions, one per line");
    init_hash_keys();
    protocol_state.uci_mode = protocol_state.standard_uci = true;
    constexpr int CACHE_MB = 1;
    setup_tablebases(argv[1], CACHE_MB);
    for (std::string line; std::getline(std::cin, line);)
        std::cout << answer_to(line) << std::endl;
    return 0;
}
