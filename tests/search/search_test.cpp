#include "board/move_text.h"
#include "board/position.h"
#include "eval/ply_outputs.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "search/search.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"
#include "support/searching.h"

#include <algorithm>
#include <cstring>

namespace quelmar {

namespace {

constexpr char KIWIPETE[] = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq";

TEST_F(SearchTest, FindsMates) {
    const struct {
        const char* fen;
        int depth;
        Score score;
        const char* best;  // "" where several moves mate
    } cases[] = {
        {"6k1/5ppp/8/8/8/8/8/R3K3 w -", 2, 29999, "a1a8"},
        {"2bqkbn1/2pppp2/np2N3/r3P1p1/p2N2B1/5Q2/PPPPKPP1/RNB2r2 w -", 5, 29997, "f3f7"},
        {"r5rk/5p1p/5R2/4B3/8/8/7P/7K w -", 6, 29995, "f6a6"},
        {"1k5r/pP3ppp/3p2b1/1BN1n3/1Q2P3/P1B5/KP3P1P/7q w -", 6, 29995, "c5a6"},
        {"r1b2k1r/ppppq3/5N1p/4P2Q/4PP2/1B6/PP5P/n2K2R1 w -", 8, 29997, "h5h6"},
        {"6r1/p3p1rk/1p1pPp1p/q3n2R/4P3/3BR2P/PPP2QP1/7K w -", 8, 29991, "h5h6"},
        {"8/8/8/8/5k2/8/4q3/7K b -", 6, 29997, ""},
        {"7k/8/8/8/8/8/R7/1R5K w -", 6, 29997, ""},
        {"r5rk/5p1p/R7/4B3/8/8/7P/7K b -", 6, -29996, "f7f6"},
        {"k7/8/1K6/8/8/8/8/2R5 w -", 4, 29999, "c1c8"},
    };
    for (const auto& c : cases) {
        set_up(c.fen);
        forget_searches();
        const Verdict verdict = search_to(c.depth);
        EXPECT_EQ(verdict.score, c.score) << c.fen << "\n" << verdict.output;
        if (*c.best != '\0') {
            EXPECT_EQ(verdict.best, c.best) << c.fen;
        }
    }
}

// A stalemate at the horizon, or an illegal move that a stand pat hid, was once announced as mate.
TEST_F(SearchTest, BelievesInNoFalseMate) {
    const struct {
        const char* fen;
        int depth;
    } cases[] = {
        {"8/1K6/B7/1n2B3/8/4k1p1/6Q1/8 w -", 2},        {"8/6p1/6Pp/7P/2N1pk2/1p2N3/1Bp1P2R/2K5 w -", 2},
        {"8/5N2/R7/6p1/3BP1p1/2KB2p1/5pp1/6k1 w -", 2}, {"k1K5/1r6/N7/8/8/8/4B1p1/6B1 w -", 2},
        {"8/r5p1/6R1/8/7p/1B1p3N/1K1P2np/7k w -", 7},
    };
    for (const auto& c : cases) {
        set_up(c.fen);
        forget_searches();
        const Verdict verdict = search_to(c.depth);
        EXPECT_LT(verdict.score, FOUND_MATE_LIMIT) << c.fen << "\n" << verdict.output;
    }
}

TEST_F(SearchTest, SeesDraws) {
    const struct {
        const char* fen;
        const char* played;
        int depth;
        const char* why;
    } cases[] = {
        {"4k3/8/8/8/8/8/8/4K3 w -", "", 8, "bare kings"},
        {"6k1/6p1/8/6KQ/1r6/q2b4/8/8 w -", "", 9, "perpetual check"},
        {"4k3/8/8/2b5/8/8/4p3/4K1N1 w -", "", 6, "the last pawn goes"},
        {"7k/5Q2/8/8/8/8/8/K7 b -", "", 3, "stalemate at the root"},
    };
    for (const auto& c : cases) {
        set_up(c.fen);
        forget_searches();
        EXPECT_EQ(search_to(c.depth).score, 0) << c.fen << " " << c.why;
    }
}

TEST_F(SearchTest, TheFiftyMoveRuleEndsTheLine) {
    set_up("4k3/8/8/8/8/8/8/R3K3 w -");
    position.current().halfmove_clock = 99;
    EXPECT_EQ(search_to(3).score, 0);
    position.current().halfmove_clock = 0;
    forget_searches();
    EXPECT_GT(search_to(3).score, 100);
}

TEST_F(SearchTest, AFixedDepthIsHonouredWhateverTheTime) {
    search_state.target_time = search_state.max_time = 0;
    for (const int depth : {1, 2, 5}) {
        search_to(depth);
        EXPECT_EQ(search_state.iteration, depth);
        EXPECT_GE(search_state.pv_length, 1);
    }
}

TEST_F(SearchTest, TimePerMoveIsKept) {
    position.current().clock[WHITE] = {.kind = CLOCK_PER_MOVE, .time_left_ms = 60};
    const i32 start = clock_ms();
    testing::internal::CaptureStdout();
    think();
    testing::internal::GetCapturedStdout();
    EXPECT_LT(elapsed_since(start), 1000);
    EXPECT_GT(search_state.iteration, 1);
}

TEST_F(SearchTest, AnOnlyMoveIsNotThoughtAbout) {
    set_up("k7/8/1K6/8/8/8/8/3R4 b -");
    const Verdict verdict = search_to(20);
    EXPECT_EQ(verdict.best, "a8b8");
    EXPECT_EQ(search_state.iteration, 2);
    EXPECT_EQ(std::count(verdict.output.begin(), verdict.output.end(), '\n'),
              1);  // iteration 2 is not recorded
}

TEST_F(SearchTest, WithoutMovesThereIsNoVariation) {
    for (const char* fen : {"7k/5Q2/8/8/8/8/8/K7 b -", "k7/1Q6/1K6/8/8/8/8/8 b -"}) {
        set_up(fen);
        EXPECT_EQ(search_to(5).best, "-") << fen;
        EXPECT_EQ(search_state.pv_length, 0);
        EXPECT_EQ(search_state.iteration, 1);
    }
}

TEST_F(SearchTest, AKingThatCanBeTakenIsNotTaken) {
    set_up("4k3/8/8/8/8/8/8/K3R3 w -");
    EXPECT_EQ(search_to(4).best.substr(0, 2), "a1");
    EXPECT_EQ(search_state.pv_length, 1);
}

TEST_F(SearchTest, AnalysisWithNothingLeftToFindEnds) {
    protocol_state.analyze_mode = true;  // no input is open here, so waiting for it ends the search
    set_up("4k3/8/8/8/8/8/8/4K3 w -");
    const Verdict verdict = search_to(60);
    EXPECT_EQ(search_state.iteration, 60);
    EXPECT_LE(std::count(verdict.output.begin(), verdict.output.end(), '\n'), 200);
    EXPECT_TRUE(protocol_state.abort_search);
}

TEST_F(SearchTest, AStopDuringTheFirstIterationStillGivesAMove) {
    set_up(KIWIPETE);
    protocol_state.uci_infinite = true;
    // reset_search() clears a stop that came before; this one is seen from the first node on.
    search_state.iteration = 1;
    protocol_state.abort_search = true;
    EXPECT_FALSE(stop_wanted());
    search_state.iteration = 2;
    EXPECT_TRUE(stop_wanted());
}

TEST_F(SearchTest, SameSearchSameNodes) {
    set_up(KIWIPETE);
    const Verdict first = search_to(6);
    forget_searches();
    const Verdict second = search_to(6);
    EXPECT_EQ(first.nodes, second.nodes);
    EXPECT_EQ(first.score, second.score);
    EXPECT_EQ(first.best, second.best);
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
            std::memset(static_cast<void*>(&position.position_stack[static_cast<std::size_t>(ply)]), 0x44,
                        sizeof(UndoRecord));
        position.current().move = {0x44, 0x45, 2, 8, 3, 0, 1, 0, 0};
        position.current().threat_square_us = position.current().threat_square_them = {0x44, 0x45, 0x46};
        for (int ply = 0; ply < MAX_PLY; ++ply) {
            PlyRecord& record = search_state.at(ply);
            record.threat_move = 0x4454;
            record.extension = 60;
            record.reduced = record.mate_threat = record.bm_extended = record.ply_in_check = true;
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
        testing::internal::CaptureStdout();
        mtd_driver(0, 8 * ONE_PLY);
        testing::internal::GetCapturedStdout();
        stopped += protocol_state.abort_search;
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
        settings = EngineSettings{};
        settings.hash_mb = 4;
        change();
        set_up("r2q1rk1/pbp1bppp/1pn1pn2/3p4/2PP4/1PN1PN2/PB2BPPP/R2Q1RK1 w -");
        forget_searches();
        return search_to(depth).nodes;
    };
    const u64 plain = nodes_with([] {});
    EXPECT_NE(plain, nodes_with([] { settings.selectivity = 0; }));
    EXPECT_NE(plain, nodes_with([] { settings.null_reduction = settings.null_reduction_endgame = 0; }));
    EXPECT_NE(plain, nodes_with([] { settings.iid = 0; }));
    EXPECT_NE(plain, nodes_with([] { settings.bm_exts = 0; }));
    EXPECT_NE(plain, nodes_with([] { settings.qsearch_checks = 0; }));
    for (const int grain : {-3, 0, 1, 2, 31, 1000})
        EXPECT_GT(nodes_with([grain] { settings.grain_size = grain; }, 5), 500U) << grain;
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

TEST_F(SearchTest, MonstrousPositionsDoNotOutrunTheClock) {
    set_up("qqqqkqqq/qqqqqqqq/8/8/8/8/QQQQQQQQ/QQQQKQQQ w -");
    const auto board = position.board;
    position.current().clock[WHITE] = {.kind = CLOCK_PER_MOVE, .time_left_ms = 200};
    testing::internal::CaptureStdout();
    think();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(position.board, board);
    EXPECT_TRUE(position_is_consistent());
    EXPECT_EQ(position.search_ply, 0);
    EXPECT_GE(search_state.pv_length, 1);
}

TEST_F(SearchTest, MonstrousPositionsAreSearched) {
    for (const char* fen : {"qqqqkqqq/8/8/8/8/8/8/QQQQKQQQ w -", "PPPPkPPP/8/8/8/8/8/8/pppKpppp w -",
                            "8/8/8/3kK3/8/8/8/8 w -"}) {
        set_up(fen);
        forget_searches();
        search_to(1);
        EXPECT_TRUE(position_is_consistent()) << fen;
    }
}

}  // namespace

}  // namespace quelmar
