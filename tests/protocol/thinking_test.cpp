#include "board/make_move.h"
#include "board/position.h"
#include "board/setup.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "protocol/thinking.h"
#include "search/principal_variation.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "support/searching.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace quelmar {

namespace {

enum class Form { CONSOLE, XBOARD, UCI };

const std::map<std::string, Form> FORMS = {
    {"console", Form::CONSOLE}, {"xboard", Form::XBOARD}, {"uci", Form::UCI}};
const std::map<std::string, LineKind> KINDS = {
    {"exact", LineKind::EXACT}, {"upper", LineKind::UPPER_BOUND}, {"lower", LineKind::LOWER_BOUND}};

class ThinkingTest : public SearchTest {
protected:
    static void speak(Form form) {
        protocol_state.xboard_mode = form == Form::XBOARD;
        protocol_state.uci_mode = form == Form::UCI;
    }
    // Leaves the line of legal moves in search_state.pv.
    static void lay_out(const std::string& moves) {
        const PieceOrderGuard guard;
        search_state.pv_length = 0;
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            Move& next = search_state.pv[search_state.pv_length];
            next = move_named(word);
            make_move(&next);
            ++search_state.pv_length;
        }
        for (int i = search_state.pv_length; i > 0; --i)
            unmake_move(&search_state.pv[i - 1]);
    }
    static std::string line(Form form, Score score, LineKind kind, i32 elapsed = 1234) {
        speak(form);
        return printed_by([&] { print_thinking_line(7, score, elapsed, 98765, kind); });
    }
    // Leaves a table entry with that move for the position reached by `moves`.
    static void store(const std::string& moves, const std::string& best) {
        lay_out(moves + " " + best);
        const PieceOrderGuard guard;
        const int before = search_state.pv_length - 1;
        for (int i = 0; i < before; ++i)
            make_move(&search_state.pv[i]);
        tt_store_lower(60, pack_move(search_state.pv[before]), 0, 0);
        for (int i = before; i > 0; --i)
            unmake_move(&search_state.pv[i - 1]);
    }
    static std::string walked() {
        Table<Move, MAX_PV> moves;
        const int length = walk_table(moves);
        std::string text;
        for (int i = 0; i < length; ++i)
            text += move_text(moves[i]) + " ";
        return text;
    }
};

// tests/data/thinking.txt says how a line reads.
TEST_F(ThinkingTest, LinesInThreeForms) {
    for (const Words& fields : data_rows("thinking.txt")) {
        ASSERT_EQ(fields.size(), 5U) << fields[0];
        set_up(START_FEN);
        play(fields[0]);
        lay_out(fields[1]);
        search_state.current_root_move = search_state.pv[0];
        search_state.root_moves_searched = 3;
        search_state.sel_depth = 12;
        std::istringstream words(fields[2]);
        std::string form, kind;
        Score score = 0;
        i32 elapsed = 0;
        words >> form >> kind >> score >> elapsed;
        settings.white_score = settings.san_output = fields[2].ends_with("settings") ? 1 : 0;
        EXPECT_EQ('"' + line(FORMS.at(form), score, KINDS.at(kind), elapsed) + '"', with_escapes(fields[3]))
            << fields[2] << ": " << fields[4];
    }
}

TEST_F(ThinkingTest, TheLastVariationOnTheConsoleIsWhispered) {
    lay_out("e2e4 f7f6 d2d4 g7g5 d1h5");
    line(Form::CONSOLE, 0, LineKind::EXACT);
    EXPECT_EQ(printed_by(print_tellall), "tellall depth=0 nodes=0 score=0.00 PV: e4 f6 d4 g5 Qh5# \n");
    clear_last_pv_text();
    search_state.last_score = -29996;
    EXPECT_EQ(printed_by(print_tellall), "tellall depth=0 nodes=0 score=-#2 PV: \n");
}

TEST_F(ThinkingTest, XboardShowsThirtyMovesUciAll) {
    std::string moves;
    for (int i = 0; i < 8; ++i)
        moves += "g1f3 g8f6 f3g1 f6g8 ";
    lay_out(moves);
    const auto words = [](const std::string& text) { return std::count(text.begin(), text.end(), ' '); };
    EXPECT_EQ(words(line(Form::XBOARD, 0, LineKind::EXACT)), 4 + 30);
    EXPECT_EQ(words(line(Form::UCI, 0, LineKind::EXACT)), 15 + 32);
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
    line(Form::CONSOLE, 0, LineKind::EXACT);
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
    speak(Form::UCI);
    lay_out("e2e4");
    search_state.current_root_move = search_state.pv[0];
    search_state.root_moves_searched = 5;
    search_state.root_legal_moves = 20;
    search_state.iteration = 8;
    search_state.nodes = 3000;
    search_state.start_time = clock_ms() - 2000;
    EXPECT_EQ(printed_by(search_reports.root_move_begins), "info currmove e2e4 currmovenumber 5\n");
    EXPECT_EQ(printed_by(print_stat01).substr(0, 11), "stat01: 200");
    EXPECT_NE(printed_by(print_stat01).find(" 3000 8 15 20 e2e4\n"), std::string::npos);
    const Move first = search_state.pv[0];
    make_move(&first);
    make_null_move();
    settings.show_curr_line = settings.show_refutations = 1;
    EXPECT_NE(printed_by(search_reports.status).find(" tbhits 0\ninfo currline e2e4 0000\n"),
              std::string::npos);
    protocol_state.standard_uci = true;
    EXPECT_NE(printed_by(search_reports.status).find("\ninfo currline 1 e2e4\n"), std::string::npos);
    protocol_state.standard_uci = false;
    unmake_null_move();
    unmake_move(&first);
    store("e2e4", "e7e5");
    EXPECT_EQ(printed_by([&] { search_reports.root_move_refuted(first); }), "info refutation e2e4 e7e5 \n");
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
