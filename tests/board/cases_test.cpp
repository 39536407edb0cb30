// Generators, the list of men, moves as text: one case to a line of tests/data/board.txt, which says how a
// line reads.
#include "board/consistency.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/setup.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "search/captures.h"
#include "support/engine.h"

namespace quelmar {
namespace {

using Board = EngineTest;

std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text.empty() ? "none" : text;
}

template <auto GENERATE> std::string listed(const Words& words) {
    evaluate();  // the captures are sifted by its attack maps
    GENERATE();
    Words names;
    for (const Move& move : move_list.current())
        if (words[0] != "castlings" || move.flags != 0)
            names.push_back(move_text(move));
    return joined(names);
}

std::string men(const Words& words) {
    Words names;
    for (Square square = position.first_of(words.at(1) == "white" ? WHITE : BLACK); square != LIST_END;
         square = position.next_man(square))
        names.push_back(square_text(square));
    return joined(names);
}

std::string rights(const Words& /*unused*/) {
    Words names;
    for (int i = 0; i < 4; ++i)
        if ((position.current().castle_lost >> i & 1) == 0)
            names.push_back(std::string(1, "KQkq"[i]) + "=" + square_text(position.castle_rook_square[i]));
    return joined(names);
}

std::string find(const Words& words) {
    protocol_state.uci_mode = words[0] == "uci";
    build_root_moves();
    const Move* move = find_root_move(words.at(1));
    return move == nullptr ? "none" : move_text(*move);
}

std::string san(const Words& words) {
    build_root_moves();
    const Move* move = find_root_move(words.at(1));
    return move == nullptr ? "none" : san_text(*move);
}

void list_captures() {
    find_threats();
    generate_captures();
}

TEST_F(Board, CasesAreAnswered) {
    constexpr Question QUESTIONS[] = {
        {"moves", listed<generate_moves>},
        {"legal", listed<generate_legal_moves>},
        {"captures", listed<list_captures>},
        {"checks", listed<generate_quiet_checks>},
        {"evasions", listed<generate_evasions>},
        {"castlings", listed<generate_legal_moves>},
        {"men", men},
        {"rights", rights},
        {"find", find},
        {"uci", find},
        {"san", san},
    };
    expect_answers("board.txt", QUESTIONS);
}

TEST_F(Board, AManPutBackStandsBehindItsKing) {
    play("e2e4 d7d5 e4d5");
    const Move capture = position.previous().move;
    unmake_move(&capture);
    EXPECT_TRUE(men({"men", "black"}).starts_with("e8 d5"));
    EXPECT_TRUE(position_is_consistent());
}

TEST_F(Board, AnyPositionFitsTheMoveStack) {
    // More queens than any game has.
    for (const char* fen :
         {"QQQQQQQQ/Q6Q/Q6Q/Q2kq2Q/Q6Q/Q6Q/Q6Q/QQQKQQQQ w -", "QqQqQqQq/8/QqQqQqQq/8/QqQqQqQk/8/K7/8 w -",
          "PPPPPPPP/k7/8/8/8/8/7K/pppppppp b -"}) {
        set_up(fen);
        generate_moves();
        EXPECT_LT(move_list.current().size(), static_cast<std::size_t>(MAX_MOVES_IN_POSITION));
        build_root_moves();
    }
}

}  // namespace
}  // namespace quelmar
