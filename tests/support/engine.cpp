#include "support/engine.h"

#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/settings.h"
#include "protocol/thinking.h"
#include "search/search_control.h"
#include "search/search_limits.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace quelmar {

namespace {

void start_once() {
    static const bool started = [] {
        find_modern_processor();
        init_hash_keys();
        build_exchange_table();
        print_what_the_search_says();
        return true;
    }();
    (void)started;
}

void restore_defaults() {
    reset_settings();
    protocol_state = {};
    search_control = {};
    search_limits = {};
    time_control = {};
}

}  // namespace

EngineTest::EngineTest() {
    start_once();
    restore_defaults();
    // Tests look at positions as if they stood deep in a search, where every ply has its place in the list.
    move_list.ply_list_start.fill(move_list.move_stack.data());
    set_up(START_FEN);
}

EngineTest::~EngineTest() {
    restore_defaults();
}

void set_up(const std::string& fen) {
    ASSERT_EQ(set_up_game(fen.c_str()), FenError::NONE) << fen;
}

void play(std::string_view moves) {
    std::istringstream words{std::string(moves)};
    for (std::string word; words >> word;) {
        build_root_moves();
        ASSERT_TRUE(parse_move(word)) << word;
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

std::vector<std::vector<std::string>> data_rows(const std::string& file) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : data_lines(file)) {
        if (line.empty() || line.front() == '#')
            continue;
        std::istringstream stream(line);
        for (rows.emplace_back(); std::getline(stream, rows.back().emplace_back(), '|');) {
            std::string& field = rows.back().back();
            field.erase(0, field.find_first_not_of(' '));
            field.erase(field.find_last_not_of(' ') + 1);
        }
        rows.back().pop_back();
    }
    return rows;
}

std::string with_escapes(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\')
            result += text[i];
        else
            result += text[++i] == 'n' ? '\n' : text[i] == 'r' ? '\r' : '\t';
    }
    return result;
}

void expect_answers(const std::string& file, std::span<const Question> questions) {
    for (const Words& fields : data_rows(file)) {
        ASSERT_EQ(fields.size(), 4U) << fields.front();
        SCOPED_TRACE(fields[0] + ", " + fields[1] + ": " + fields[3]);
        restore_defaults();
        const std::size_t moves = fields[0].find(" moves ");
        set_up(fields[0].substr(0, moves));
        if (moves != std::string::npos)
            play(fields[0].substr(moves + 7));
        std::istringstream stream(fields[1]);
        const Words words{std::istream_iterator<std::string>(stream), {}};
        const auto asked = std::find_if(questions.begin(), questions.end(),
                                        [&words](const Question& known) { return words[0] == known.name; });
        ASSERT_NE(asked, questions.end()) << "nobody knows";
        EXPECT_EQ(asked->answer(words), fields[2]);
    }
}

std::string printed_by(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

std::string mirrored_fen(const std::string& fen) {
    std::istringstream stream(fen);
    std::string ranks, side, rest, mirrored;
    stream >> ranks >> side;
    std::getline(stream, rest);
    std::istringstream board(ranks);
    for (std::string rank; std::getline(board, rank, '/');)
        mirrored = mirrored.empty() ? rank : rank + "/" + mirrored;
    mirrored += (side == "w" ? " B" : " W") + rest;
    for (char& letter : mirrored)
        letter = static_cast<char>(std::isupper(letter) != 0 ? std::tolower(letter) : std::toupper(letter));
    return mirrored;
}

}  // namespace quelmar
