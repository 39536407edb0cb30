#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/setup.h"
#include "eval/attacks.h"
#include "eval/evaluate.h"
#include "eval/ply_outputs.h"
#include "eval/threats.h"
#include "protocol/settings.h"
#include "search/check_kind.h"
#include "search/extensions.h"
#include "search/search_state.h"
#include "support/searching.h"

#include <random>

namespace quelmar {

namespace {

class ExtensionsTest : public SearchTest {
protected:
    static Move move_named(const std::string& name) {
        generate_moves();
        for (const Move& move : move_list.current())
            if (move_text(move) == name)
                return move;
        ADD_FAILURE() << name;
        return {};
    }
    static MoveContext context_here() {
        MoveContext context;
        evaluate();
        find_threats();
        keep_attack_facts(context);
        return context;
    }
    static Depth extension(const std::string& name, Score best = 0) {
        const MoveContext context = context_here();
        return move_extension(context, move_named(name), best);
    }
};

TEST_F(ExtensionsTest, OfMoves) {
    const struct {
        const char* fen;
        const char* move;
        Score best;
        Depth extension;
        const char* why;
    } cases[] = {
        {"8/3k4/4q3/3P4/8/8/7P/4K3 w -", "d5e6", 0, 150, "a pawn takes the last queen"},
        {"8/3k4/4q3/3P4/8/8/7P/4K3 w -", "d5e6", 384, 60, "already winning: check and sixth rank"},
        {"4k3/4q3/8/8/8/8/4Q2P/4K3 w -", "e2e7", 0, 60, "the queen that takes stays: only check"},
        {"8/3k4/4r3/3P4/8/8/7P/4K3 w -", "d5e6", 0, 120, "a pawn takes the last rook"},
        {"8/3k4/4n3/3P4/8/8/7P/4K3 w -", "d5e6", 0, 90, "and the last minor piece"},
        {"4k3/8/8/8/8/8/8/R3K2Q w -", "h1h8", 0, 60, "check"},
        {"4k3/8/8/8/8/8/8/R3K2Q w -", "h1h7", 0, 0, "quiet"},
        {"r3k3/8/P7/8/8/8/8/4K3 w -", "a6a7", 0, 45, "seventh rank, stopped"},
        {"4k3/8/P7/8/8/8/8/4K3 w -", "a6a7", 0, 60, "seventh rank, promotes next"},
        {"r3k3/1P6/P7/8/8/8/8/4K3 w -", "a6a7", 0, 60, "seventh rank, with a partner"},
        {"rnbqkbnr/8/P7/8/8/8/8/RNBQKBNR w -", "a6a7", 0, 45, "seventh rank, many men"},
        {"4k3/8/8/8/8/p7/8/R3K3 b -", "a3a2", 0, 45, "second rank, stopped"},
        {"4k3/8/8/8/8/8/1p6/4K3 b -", "b2b1Q", 0, 60, "check by the queen"},
        {"4k3/8/8/1P6/8/8/8/4K3 w -", "b5b6", 0, 45, "sixth rank, free"},
        {"4k3/1r6/8/1P6/8/8/8/4K3 w -", "b5b6", 0, 20, "sixth rank, blocked"},
        {"4k3/r7/p7/1P6/8/8/8/4K3 w -", "b5a6", 0, 10, "sixth rank, takes a pawn and is blocked"},
        {"4k3/8/P7/1P6/8/8/8/4K3 w -", "b5b6", 0, 60, "sixth rank, with a partner"},
        {"rnbqkbnr/8/8/1P6/8/8/8/RNBQKBNR w -", "b5b6", 0, 30, "sixth rank, many men"},
        {"4k3/8/8/8/1p6/8/1R6/4K3 b -", "b4b3", 0, 20, "third rank, blocked"},
    };
    for (const auto& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(extension(c.move, c.best), c.extension) << c.fen << " " << c.why;
    }
}

TEST_F(ExtensionsTest, OfNodes) {
    set_up("4k3/8/8/8/8/8/8/R3K2Q w -");
    MoveContext context = context_here();
    const Move quiet = move_named("h1h7"), check = move_named("h1h8");
    int& balance = outputs_at(0).ply_material_placement;
    const struct {
        int balance;
        Depth extension;
    } threats[] = {{1, 45}, {0, 30}, {-99, 30}, {-100, 20}, {-199, 20}, {-200, 0}};
    context.mate_threat = true;
    for (const auto& c : threats) {
        balance = c.balance;
        EXPECT_EQ(move_extension(context, quiet, 0), c.extension) << c.balance;
        EXPECT_EQ(move_extension(context, check, 0), 60);
    }
    context.mate_threat = false;
    context.in_check = true;
    for (const auto& [evasions, expected] : {std::pair{1, 45}, {2, 20}, {3, 0}}) {
        context.evasions = evasions;
        EXPECT_EQ(move_extension(context, quiet, 0), expected);
    }
}

TEST_F(ExtensionsTest, OfAKingThatLosesItsCover) {
    set_up("4k3/8/8/8/8/8/8/R3K2Q w -");
    const Move first = move_named("a1a2");
    make_move(&first);
    const Move second = move_named("e8d7");
    make_move(&second);
    const MoveContext context = context_here();
    const Move quiet = move_named("h1g1");
    PlyOutputs& here = outputs_at(2);
    const struct {
        u8 hanging;
        int balance;
        Depth extension;
    } cases[] = {{0, 160, 45},  {1, 159, 30}, {0, 64, 30},  {0, 63, 20},  {0, 0, 20},
                 {0, -128, 15}, {0, -129, 0}, {2, 128, 30}, {2, 127, 20}, {3, 64, 20},
                 {2, 63, 15},   {2, 0, 15},   {2, -1, 0}};
    for (const auto& c : cases) {
        position.current().threat_value_them[0] = c.hanging;
        here.ply_material_placement = c.balance;
        outputs_at(1).ply_king_danger[WHITE] = 0;
        here.ply_king_danger[WHITE] = -57;
        EXPECT_EQ(move_extension(context, quiet, 0), c.extension) << c.balance;
        here.ply_king_danger[WHITE] = -56;
        EXPECT_EQ(move_extension(context, quiet, 0), 0);
    }
}

// Rook takes rook on d5 after a quiet white move; what then takes back on d5?
TEST_F(ExtensionsTest, OfRecaptures) {
    const struct {
        const char* fen;
        const char* path;
        const char* move;
        Depth extension;
        const char* why;
    } cases[] = {
        {"3r2k1/8/8/3R4/8/2N5/PP3PPP/6K1 w -", "h2h3 d8d5", "c3d5", 60, "few pieces left"},
        {"3r2k1/8/8/3R4/4B3/2N5/PP3PPP/6K1 w -", "h2h3 d8d5", "c3d5", 0, "two men can take back"},
        {"3r2k1/8/8/8/8/2N5/PP1R1PPP/6K1 w -", "d2d5 d8d5", "c3d5", 0, "we have just gone there"},
        {"3q2k1/8/8/3R4/8/2N5/PP3PPP/6K1 w -", "h2h3 d8d5", "c3d5", 0, "a queen for a rook"},
        {"3r2k1/8/8/3R4/8/2N5/PP2nPPP/7K w -", "h2h3 d8d5", "c3d5", 0, "something else hangs too"},
        {"3rq1k1/pp2bppp/5n2/3R4/8/2N5/PP1QBPPP/6K1 w -", "h2h3 d8d5", "c3d5", 0, "the queen can take too"},
        {"3rq1k1/pp2bppp/8/3R4/8/2N5/PP2BPPP/2Q3K1 w -", "h2h3 d8d5", "c3d5", 45, "many pieces, but rooks"},
    };
    for (const auto& c : cases) {
        set_up(c.fen);
        play(c.path);
        position.search_ply = 2;
        EXPECT_EQ(extension(c.move), c.extension) << c.fen << " " << c.why;
        position.search_ply = 0;
    }
}

TEST_F(ExtensionsTest, ReductionsFollowHistoryAndSelectivity) {
    const Move move = move_named("g1f3");
    make_move(&move);
    SearchState& s = search_state;
    const auto reduction = [&](u64 nodes, u32 history, int selectivity) {
        s.nodes = nodes;
        s.history_of(move) = history;
        settings.selectivity = selectivity;
        return late_move_reduction(move);
    };
    EXPECT_EQ(reduction(32767, 0, 6), 0);
    EXPECT_EQ(reduction(32768, 3, 6), 1);
    EXPECT_EQ(reduction(32768, 4, 6), 0);
    EXPECT_EQ(reduction(32768, 63, 10), 1);
    EXPECT_EQ(reduction(32768, 64, 10), 0);
    EXPECT_EQ(reduction(1 << 30, 0, 0), 0);
    EXPECT_EQ(reduction(1 << 24, 0, 6), 2);
    EXPECT_EQ(reduction(1 << 24, 1, 6), 1);
    for (const int odd : {-7, 2147483647, -2147483647 - 1})
        EXPECT_LE(reduction(1 << 24, 1, odd), 1);
    settings.selectivity = 6;
    s.at(-1).extension = 30;
    EXPECT_EQ(late_move_reduction(move), 0);
    s.at(-1).extension = 0;
    s.at(-4).extension = 30;  // four plies before this one
    EXPECT_EQ(reduction(1 << 24, 0, 6), 1);
    Move capture = move;
    capture.captured = BLACK_PAWN;
    EXPECT_EQ(late_move_reduction(capture), 0);
}

TEST_F(ExtensionsTest, NullMoveByMaterial) {
    const struct {
        const char* fen;
        int reduction;
    } cases[] = {{START_FEN, 3},
                 {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq", 2},
                 {"4k3/pp6/8/8/8/8/PP6/4K3 w -", 0},
                 {"4k3/1q6/8/8/8/8/8/R3K3 w -", 0},  // a lone rook is too little
                 {"4k3/1q6/8/8/8/8/P7/R3K3 w -", 2},
                 {"4k3/8/8/8/8/8/PP6/R3K3 w -", 0},
                 {"4k3/p7/8/8/8/8/PPPPPP2/4K3 w -", 0}};
    for (const auto& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(null_move_reduction(), c.reduction) << c.fen;
    }
    set_up(START_FEN);
    for (const auto& [value, expected] : {std::pair{0, 0}, {-9, 0}, {2147483647, 60}}) {
        settings.null_reduction = value;
        EXPECT_EQ(null_move_reduction(), expected);
    }
}

TEST_F(ExtensionsTest, RepetitionsOnceWithinTheReversibleMoves) {
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_FALSE(is_search_repetition());  // the first position lies as far back as the clock reaches
    play("g1f3");
    EXPECT_TRUE(is_search_repetition());
    play("e7e5");
    EXPECT_FALSE(is_search_repetition());
}

TEST_F(ExtensionsTest, DrawsByMaterialNeedTheMoveBefore) {
    set_up("4k3/6b1/8/8/8/8/4p3/4K1N1 w -");
    play("g1e2");
    EXPECT_FALSE(is_search_draw());  // the pawn was there a moment ago
    play("g7b2");
    EXPECT_TRUE(is_search_draw());
    set_up("4k3/8/8/8/8/8/8/4K2R w -");
    play("h1h2 e8e7");
    EXPECT_FALSE(is_search_draw());
    position.current().halfmove_clock = 100;
    EXPECT_TRUE(is_search_draw());
}

// Against the truth: play the move and look at the king.
TEST_F(ExtensionsTest, CheckKindAgreesWithTheBoard) {
    std::mt19937 random(7);
    int checks = 0;
    for (int game = 0; game < 60; ++game) {
        set_up(START_FEN);
        for (int ply = 0; ply < 70; ++ply) {
            generate_legal_moves();
            const auto moves = move_list.current();
            if (moves.empty())
                break;
            const Move chosen = moves[random() % moves.size()];
            for (const Move& move : moves) {
                if (move.promotion != EMPTY || move.flags != 0)
                    continue;
                const int kind = check_kind(move);
                make_move(&move);
                EXPECT_EQ(kind != NO_CHECK, in_check(position.side_to_move)) << move_text(move);
                unmake_move(&move);
                checks += kind != NO_CHECK;
            }
            make_move(&chosen);
            position.search_ply = 0;
        }
    }
    EXPECT_GT(checks, 300);
    set_up("4k3/8/8/8/4N3/8/8/4R1K1 w -");
    EXPECT_EQ(check_kind(move_named("e4d6")), DIRECT_CHECK);  // also discovered; the direct one counts
    EXPECT_EQ(check_kind(move_named("e4c3")), DISCOVERED_CHECK);
}

}  // namespace

}  // namespace quelmar
