#include "board/consistency.h"
#include "board/position.h"
#include "search/search.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "support/searching.h"

#include <algorithm>
#include <cstring>

namespace quelmar {

namespace {

constexpr char KIWIPETE[] = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq";

TEST_F(SearchTest, AnOnlyMoveIsNotThoughtAbout) {
    set_up("k7/8/1K6/8/8/8/8/3R4 b -");
    const Verdict verdict = search_to(20);
    EXPECT_EQ(verdict.best, "a8b8");
    EXPECT_EQ(search_state.iteration, 2);
    EXPECT_EQ(std::count(verdict.output.begin(), verdict.output.end(), '\n'),
              1);  // iteration 2 is not recorded
}

TEST_F(SearchTest, AStopDuringTheFirstIterationStillGivesAMove) {
    set_up(KIWIPETE);
    search_control.uci_infinite = true;
    // reset_search() clears a stop that came before; this one is seen from the first node on.
    search_state.iteration = 1;
    search_control.abort_search = true;
    EXPECT_FALSE(stop_wanted());
    search_state.iteration = 2;
    EXPECT_TRUE(stop_wanted());
}

// What other lines left on the stack, in the attack maps and in the ply records is no fact of this one.
TEST_F(SearchTest, NoRuleReadsLeftovers) {
    for (const char* fen : {KIWIPETE, "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w -"}) {
        set_up(fen);
        forget_searches();
        const Verdict clean = search_to(6);
        set_up(fen);
        forget_searches();
        for (int ply = position.game_ply + 1; ply < POSITION_STACK_SIZE; ++ply)
            std::memset(static_cast<void*>(&position.position_stack[ply]), 0x44, sizeof(UndoRecord));
        position.current().move = {0x44, 0x45, 2, 8, 3, 0, 1, 0};
        position.current().threat_square_us = position.current().threat_square_them = {0x44, 0x45, 0x46};
        for (int ply = 0; ply < MAX_PLY; ++ply) {
            PlyRecord& record = search_state.at(ply);
            record.threat_move = 0x4454;
            record.extension = 60;
            record.mate_threat = record.bm_extended = true;
            record.check_count = {3, 3};
        }
        const Verdict dirty = search_to(6);
        EXPECT_EQ(clean.nodes, dirty.nodes) << fen;
        EXPECT_EQ(clean.score, dirty.score) << fen;
    }
}

TEST_F(SearchTest, EveryStopLeavesTheBoardAsItWas) {
    set_up(KIWIPETE);
    play("e1g1");
    const auto board = position.board;
    const HashKey key = position.current().key;
    const int game_ply = position.game_ply;
    int stopped = 0;
    for (u64 nodes = 1; nodes < 4900; nodes += 97) {
        forget_searches();
        reset_search();
        setup_search_constants();
        search_state.iteration = 8;
        search_state.start_time = clock_ms();
        search_state.max_time = -1;  // the first look at the clock stops the search
        search_state.nodes_since_poll = 5000 - nodes;
        printed_by([] { mtd_driver(0, 8 * ONE_PLY); });
        stopped += search_control.abort_search;
        ASSERT_EQ(position.board, board) << nodes;
        ASSERT_EQ(position.current().key, key);
        ASSERT_EQ(position.game_ply, game_ply);
        ASSERT_EQ(position.search_ply, 0);
        ASSERT_TRUE(position_is_consistent());
    }
    EXPECT_GT(stopped, 45);
}

TEST_F(SearchTest, SwitchesChangeTheTree) {
    const auto nodes_with = [](auto change, int depth = 8) {
        search_settings = {};
        change();
        set_up("r2q1rk1/pbp1bppp/1pn1pn2/3p4/2PP4/1PN1PN2/PB2BPPP/R2Q1RK1 w -");
        forget_searches();
        return search_to(depth).nodes;
    };
    const u64 plain = nodes_with([] {});
    EXPECT_NE(plain, nodes_with([] { search_settings.selectivity = 0; }));
    EXPECT_NE(plain, nodes_with([] {
                  search_settings.null_reduction = search_settings.null_reduction_endgame = 0;
              }));
    EXPECT_NE(plain, nodes_with([] { search_settings.iid = 0; }));
    EXPECT_NE(plain, nodes_with([] { search_settings.bm_exts = 0; }));
    EXPECT_NE(plain, nodes_with([] { search_settings.qsearch_checks = 0; }));
    for (const int grain : {-3, 0, 1, 2, 31, 1000})
        EXPECT_GT(nodes_with([grain] { search_settings.grain_size = grain; }, 5), 500U) << grain;
}

TEST_F(SearchTest, QuiescenceScoresKingsAndMates) {
    reset_search();
    setup_search_constants();
    search_state.iteration = 3;
    set_up("4k3/8/8/8/8/8/4R3/4K3 w -");
    position.search_ply = 4;
    // The black king can be taken; neither a stand pat nor a draw answers before that is seen.
    EXPECT_EQ(qsearch(20000, 0, 6), 30001 - 4);
    EXPECT_EQ(qsearch(0, 0, 6), 30001 - 4);
    position.current().halfmove_clock = 100;
    EXPECT_EQ(qsearch(0, 0, 6), 30001 - 4);
    set_up("R5k1/5ppp/8/8/8/8/8/4K3 b -");
    position.search_ply = 4;
    EXPECT_EQ(qsearch(0, 0, 6), 4 - 30000);  // mated
    position.search_ply = 0;
}

}  // namespace

}  // namespace quelmar
