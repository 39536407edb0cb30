#include "support/engine.h"

#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/setup.h"
#include "eval/exchange.h"
#include "protocol/clocks.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"

#include <fstream>
#include <sstream>

namespace quelmar {

namespace {

void start_engine() {
    static const bool started = [] {
        init_hash_keys();
        build_exchange_table();
        return true;
    }();
    (void)started;
}

void restore_defaults() {
    settings = EngineSettings{};
    protocol_state = ProtocolState{};
    time_control = TimeControl{};
}

}  // namespace

EngineTest::EngineTest() {
    start_engine();
    restore_defaults();
    // Tests look at positions as if they stood deep in a search, where every ply has its place in the list.
    move_list.ply_list_start.fill(move_list.move_stack.data());
    parse_fen(START_FEN);
}

EngineTest::~EngineTest() {
    restore_defaults();
}

void set_up(const std::string& fen) {
    ASSERT_EQ(parse_fen(fen.c_str()), 0) << fen;
}

void play(std::string_view moves) {
    std::istringstream words{std::string(moves)};
    for (std::string word; words >> word;) {
        build_root_moves();
        ASSERT_EQ(parse_move(word), 1) << word;
        const Move move = protocol_state.user_move;
        make_move(&move);
    }
    build_root_moves();
}

std::vector<std::string> data_lines(const std::string& file) {
    std::ifstream stream(std::string(QUELMAR_TEST_DATA) + "/" + file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    EXPECT_FALSE(lines.empty()) << file;
    return lines;
}

}  // namespace quelmar
