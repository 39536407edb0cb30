#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/position.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "search/principal_variation.h"
#include "search/search_state.h"
#include "search/thinking.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "support/searching.h"

#include <algorithm>
#include <sstream>

namespace quelmar {

namespace {

enum class Dialect { CONSOLE, XBOARD, UCI };

class ThinkingTest : public SearchTest {
protected:
    static void speak(Dialect dialect) {
        protocol_state.xboard_mode = dialect == Dialect::XBOARD;
        protocol_state.uci_mode = dialect == Dialect::UCI;
    }
    // Leaves the line of legal moves in search_state.pv.
    static void lay_out(const std::string& moves) {
        const PieceOrderGuard guard;
        search_state.pv_length = 0;
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            generate_legal_moves();
            Move& next = search_state.pv[static_cast<std::size_t>(search_state.pv_length)];
            next = {};
            for (const Move& move : move_list.current())
                if (move_text(move) == word)
                    next = move;
            ASSERT_NE(next.from, 0) << word;
            make_move(&next);
            ++search_state.pv_length;
        }
        for (int i = search_state.pv_length; i > 0; --i)
            unmake_move(&search_state.pv[static_cast<std::size_t>(i - 1)]);
    }
    template <typename Print> static std::string printed(Print print) {
        testing::internal::CaptureStdout();
        print();
        return testing::internal::GetCapturedStdout();
    }
    static std::string line(Dialect dialect, Score score, int kind, i32 elapsed = 1234) {
        speak(dialect);
        return printed([&] { print_thinking_line(7, score, elapsed, 98765, kind); });
    }
    // Leaves a table entry with that move for the position reached by `moves`.
    static void store(const std::string& moves, const std::string& best) {
        lay_out(moves + " " + best);
        const PieceOrderGuard guard;
        const int before = search_state.pv_length - 1;
        for (int i = 0; i < before; ++i)
            make_move(&search_state.pv[static_cast<std::size_t>(i)]);
        tt_store_lower(60, pack_move(search_state.pv[static_cast<std::size_t>(before)]), 0, 0);
        for (int i = before; i > 0; --i)
            unmake_move(&search_state.pv[static_cast<std::size_t>(i - 1)]);
    }
    static std::string walked() {
        std::array<Move, MAX_PV> moves;
        const int length = walk_table(moves);
        std::string text;
        for (int i = 0; i < length; ++i)
            text += move_text(moves[static_cast<std::size_t>(i)]) + " ";
        return text;
    }
};

TEST_F(ThinkingTest, OrdinaryScoresInThreeDialects) {
    lay_out("e2e4 e7e5 g1f3");
    search_state.sel_depth = 12;
    const struct {
        Dialect dialect;
        int kind;
        const char* text;
    } cases[] = {
        {Dialect::XBOARD, LINE_EXACT, "7 50 123 98765 e2e4 e7e5 g1f3 \n"},
        {Dialect::XBOARD, LINE_UPPER_BOUND, "7 50 123 98765 e2e4 e7e5 g1f3 :-(\n"},
        {Dialect::XBOARD, LINE_LOWER_BOUND, "7 50 123 98765 e2e4 e7e5 g1f3 :-)\n"},
        {Dialect::CONSOLE, LINE_EXACT, " 7        0.50     1.23      98765 e4 e5 Nf3 \n"},
        {Dialect::CONSOLE, LINE_UPPER_BOUND, " 7    <=  0.50     1.23      98765 e4 e5 Nf3 \n"},
        {Dialect::CONSOLE, LINE_LOWER_BOUND, " 7    >=  0.50     1.23      98765 e4 e5 Nf3 \n"},
        {Dialect::UCI, LINE_EXACT,
         "info depth 7 seldepth 12 time 1234 nodes 98765 score cp 50 nps 80036 pv e2e4 e7e5 g1f3 \n"},
        {Dialect::UCI, LINE_UPPER_BOUND,
         "info depth 7 seldepth 12 time 1234 nodes 98765 score cp 50 upperbound nps 80036 pv e2e4 e7e5 g1f3 "
         "\n"},
        {Dialect::UCI, LINE_LOWER_BOUND,
         "info depth 7 seldepth 12 time 1234 nodes 98765 score cp 50 lowerbound nps 80036 pv e2e4 e7e5 g1f3 "
         "\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(line(c.dialect, 16, c.kind), c.text);
    EXPECT_EQ(line(Dialect::XBOARD, -1, LINE_EXACT).substr(0, 5), "7 -4 ");  // rounded down
}

TEST_F(ThinkingTest, MatesInThreeDialects) {
    lay_out("e2e4");
    search_state.current_root_move = search_state.pv[0];
    search_state.root_moves_searched = 3;
    search_state.sel_depth = 9;
    EXPECT_EQ(line(Dialect::CONSOLE, 29995, LINE_EXACT), " 7          #3     1.23      98765 e4 \n");
    EXPECT_EQ(line(Dialect::CONSOLE, -29996, LINE_UPPER_BOUND), " 7    <=   -#2     1.23      98765 e4 \n");
    EXPECT_EQ(line(Dialect::XBOARD, 29995, LINE_EXACT), "7 32763 123 98765 e2e4 \n");
    EXPECT_EQ(line(Dialect::XBOARD, -29996, LINE_LOWER_BOUND), "7 -32764 123 98765 e2e4 :-)\n");
    EXPECT_EQ(
        line(Dialect::UCI, 29995, LINE_EXACT, 2500),
        "info depth 7 seldepth 9 time 2500 nodes 98765 score mate 3 currmovenumber 3 currmove e2e4 nps 49382 "
        "pv e2e4 \n");
    EXPECT_EQ(
        line(Dialect::UCI, -29996, LINE_UPPER_BOUND, 0),
        "info depth 7 seldepth 9 time 0 nodes 98765 score mate -2 upperbound currmovenumber 3 currmove e2e4 "
        "nps 98765 pv e2e4 \n");
}

TEST_F(ThinkingTest, WhiteScoreAndSanChangeTheXboardLine) {
    play("e2e4");
    lay_out("e7e5");
    settings.white_score = 1;
    settings.san_output = 1;
    EXPECT_EQ(line(Dialect::XBOARD, 16, LINE_EXACT), "7 -50 123 98765 e5 \n");
    EXPECT_EQ(line(Dialect::CONSOLE, 16, LINE_EXACT).substr(0, 15), " 7        0.50 ");
}

TEST_F(ThinkingTest, SanLinesMarkChecksAndWrapOnTheConsole) {
    lay_out("e2e4 f7f6 d2d4 g7g5 d1h5");
    EXPECT_NE(line(Dialect::CONSOLE, 0, LINE_EXACT).find("e4 f6 d4 g5 Qh5# \n"), std::string::npos);
    EXPECT_EQ(printed(print_tellall), "tellall depth=0 nodes=0 score=0.00 PV: e4 f6 d4 g5 Qh5# \n");
    lay_out("g1f3 g8f6 b1c3 b8c6 f3e5 f6e4 e5c6 e4c3 c6d8 c3d1");
    const std::string text = line(Dialect::CONSOLE, 0, LINE_EXACT);
    EXPECT_NE(
        text.find("Nf3 Nf6 Nc3 Nc6 Ne5 Ne4 Nxc6 Nxc3 Nxd8 \n                                   Nxd1 \n"),
        std::string::npos)
        << text;
    clear_last_pv_text();
    search_state.last_score = -29996;
    EXPECT_EQ(printed(print_tellall), "tellall depth=0 nodes=0 score=-#2 PV: \n");
}

TEST_F(ThinkingTest, XboardShowsThirtyMovesUciAll) {
    std::string moves;
    for (int i = 0; i < 8; ++i)
        moves += "g1f3 g8f6 f3g1 f6g8 ";
    lay_out(moves);
    const auto words = [](const std::string& text) { return std::count(text.begin(), text.end(), ' '); };
    EXPECT_EQ(words(line(Dialect::XBOARD, 0, LINE_EXACT)), 4 + 30);
    EXPECT_EQ(words(line(Dialect::UCI, 0, LINE_EXACT)), 15 + 32);
}

TEST_F(ThinkingTest, PrintingLeavesTheOrderOfTheMenAlone) {
    set_up("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq");
    play("e5g6");
    const auto order = [] {
        std::string squares;
        for (const Side side : {WHITE, BLACK})
            for (Square s = position.first_of(side); s != LIST_END; s = position.next_man(s))
                squares += square_text(s);
        return squares;
    };
    const std::string before = order();
    lay_out("f7g6 f3f6 e7f6 O-O");
    line(Dialect::CONSOLE, 0, LINE_EXACT);
    store("f7g6", "f3f6");
    walked();
    EXPECT_EQ(order(), before);
}

TEST_F(ThinkingTest, TheWalkFollowsTheTableAndEndsAtARepetition) {
    store("", "g1f3");
    store("g1f3", "g8f6");
    EXPECT_EQ(walked(), "g1f3 g8f6 ");
    store("g1f3 g8f6", "f3g1");
    store("g1f3 g8f6 f3g1", "f6g8");
    EXPECT_EQ(walked(), "g1f3 g8f6 f3g1 f6g8 ");  // and then for ever
    ++tt_generation;
    EXPECT_EQ(walked(), "g1f3 g8f6 f3g1 f6g8 ");
}

TEST_F(ThinkingTest, TheWalkRefusesWhatIsNotLegal) {
    store("", "e2e4");
    // The same men with castling gone: the table cannot tell, the rules can.
    set_up("4k3/8/8/8/8/8/8/4K2R w K");
    store("", "O-O");
    EXPECT_EQ(walked(), "O-O ");
    set_up("4k3/8/8/8/8/8/8/4K2R w -");
    EXPECT_EQ(walked(), "");
}

TEST_F(ThinkingTest, StatusLines) {
    speak(Dialect::UCI);
    lay_out("e2e4");
    search_state.current_root_move = search_state.pv[0];
    search_state.root_moves_searched = 5;
    search_state.root_legal_moves = 20;
    search_state.iteration = 8;
    search_state.nodes = 3000;
    search_state.start_time = clock_ms() - 2000;
    EXPECT_EQ(printed(print_current_move), "info currmove e2e4 currmovenumber 5\n");
    EXPECT_EQ(printed(print_stat01).substr(0, 11), "stat01: 200");
    EXPECT_NE(printed(print_stat01).find(" 3000 8 15 20 e2e4\n"), std::string::npos);
    const Move first = search_state.pv[0];
    make_move(&first);
    make_null_move();
    settings.show_curr_line = 1;
    EXPECT_NE(printed(print_status).find(" tbhits 0\ninfo currline e2e4 0000\n"), std::string::npos);
    unmake_null_move();
    unmake_move(&first);
    store("e2e4", "e7e5");
    EXPECT_EQ(printed([&] { print_refutation(first); }), "info refutation e2e4 e7e5 \n");
}

TEST_F(ThinkingTest, Times) {
    const struct {
        i32 ms;
        const char* text;
    } cases[] = {{0, "0.00"},       {59, "0.05"},         {59990, "59.99"},      {61000, "1:01"},
                 {600000, "10:00"}, {3723000, "1:02:03"}, {36000000, "10:00:00"}};
    for (const auto& c : cases)
        EXPECT_EQ(format_time(c.ms), c.text);
}

}  // namespace

}  // namespace quelmar
