#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "eval/threats.h"
#include "search/ordering.h"
#include "search/search_state.h"
#include "support/searching.h"

namespace quelmar {

namespace {

class OrderingTest : public SearchTest {
protected:
    static void list_moves(const char* fen) {
        set_up(fen);
        evaluate();
        find_threats();
        generate_moves();
    }
    static Move move_named(const std::string& name) {
        for (const Move& move : move_list.current())
            if (move_text(move) == name)
                return move;
        ADD_FAILURE() << name;
        return {};
    }
    static std::string first(int count, PackedMove table_move = 0) {
        order_moves(table_move);
        std::string names;
        for (int i = 0; i < count; ++i)
            if (const Move* move = pick_move())
                names += move_text(*move) + " ";
        return names;
    }
};

TEST_F(OrderingTest, EveryMoveIsHandedOutOnce) {
    list_moves("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq");
    order_moves(0);
    int count = 0;
    while (pick_move() != nullptr)
        ++count;
    EXPECT_EQ(count, 48);
    EXPECT_EQ(pick_move(), nullptr);
}

TEST_F(OrderingTest, HangingMenThenVictimsThenCheaperAttackers) {
    // The rook on h5 hangs, the pawn on d5 is defended; pawn, knight and queen can all take the latter.
    list_moves("4k3/8/2p5/3p3r/4P3/2N5/3Q4/4K2R w -");
    EXPECT_EQ(first(4), "h1h5 e4d5 c3d5 d2d5 ");
}

TEST_F(OrderingTest, TableMoveMateKillerKillersHistory) {
    list_moves("4k3/8/8/8/8/8/PPP5/4K3 w -");
    SearchState& s = search_state;
    s.at(0).killer = move_named("a2a3");
    s.at(-2).killer = {};
    ++s.history_of(move_named("c2c4"));
    s.at(0).mate_killer = move_named("b2b4");
    EXPECT_EQ(first(4, pack_move(move_named("c2c3"))), "c2c3 b2b4 a2a3 c2c4 ");
}

TEST_F(OrderingTest, PromotionsByExchange) {
    list_moves("1r6/P1P4k/8/8/8/8/8/K7 w -");
    // c8 is covered by the rook, a8 too; taking the rook wins it.
    EXPECT_EQ(first(2), "a7b8Q a7b8R ");
    list_moves("8/P6k/8/8/8/8/8/K7 w -");
    EXPECT_EQ(first(2), "a7a8Q a7a8R ");
    list_moves("7r/P6k/8/8/8/8/8/K7 w -");
    search_state.history_of(move_named("a1b1")) = HISTORY_LIMIT;
    EXPECT_EQ(first(5), "a7a8Q a7a8R a7a8B a7a8N a1b1 ");  // also losing promotions go before quiet moves
}

TEST_F(OrderingTest, AThreatIsAnsweredFirstAfterAPass) {
    list_moves("4k3/8/8/8/8/8/PPP5/4K3 b -");
    make_null_move();
    make_null_move();
    generate_moves();
    search_state.at(0).threat_move = pack_move(move_named("e8d8"));
    order_moves(0);
    EXPECT_EQ(move_text(*pick_move()), "e8d8");
    unmake_null_move();
    unmake_null_move();
}

TEST_F(OrderingTest, TheReadShiftGrowsWithTheCounters) {
    list_moves("4k3/8/8/8/8/8/PPP5/4K3 w -");
    const Move move = move_named("a2a4");
    search_state.history_of(move) = HISTORY_LIMIT - 2;
    update_history_and_killer(move, 127);  // two plies and a bit count 3
    EXPECT_EQ(search_state.history_of(move), HISTORY_LIMIT + 1);
    EXPECT_EQ(search_state.history_shift, 1);
    update_history_and_killer(move, 240);
    EXPECT_EQ(search_state.history_of(move), HISTORY_LIMIT + 8);
    EXPECT_EQ(search_state.history_shift, 1);
    EXPECT_TRUE(same_squares(search_state.at(0).killer, move));
}

}  // namespace

}  // namespace quelmar
