// Endings that the evaluation recognises. The score is the side to move's; every case is also asked with the
// colours exchanged, except where the rule itself is not symmetric.
#include "eval/evaluate.h"
#include "eval/terms.h"

namespace quelmar {
namespace {

class Endings : public EngineTest {};

struct ScoreCase {
    const char* fen;
    int score;
    const char* why;
};

template <std::size_t COUNT> void expect_scores(const ScoreCase (&cases)[COUNT]) {
    for (const ScoreCase& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        EXPECT_EQ(evaluate(), c.score);
        set_up(mirrored_fen(c.fen));
        EXPECT_EQ(evaluate(), c.score) << "mirrored";
    }
}

TEST_F(Endings, KingAndPawn) {
    const ScoreCase CASES[] = {
        {"7k/8/8/P7/8/8/8/K7 w", 1405, "outside the square"},
        {"7k/8/8/P7/8/8/8/K7 b", -1405, "and with the other to move"},
        {"8/8/8/8/6k1/8/P7/K7 w", 1403, "a double step counts one move"},
        {"8/8/8/8/5k2/8/P7/K7 b", 0, "the weak king is nearer to the corner"},
        {"8/8/8/8/1k6/P7/8/7K b", 0, "the pawn falls"},
        {"K1k5/P7/8/8/8/8/8/8 w", 0, "shut in"},
        {"K7/P1k5/8/8/8/8/8/8 b", 0, "held from next door"},
        {"K7/P2k4/8/8/8/8/8/8 b", 0, "can come next door"},
        {"K7/P2k4/8/8/8/8/8/8 w", 1407, "too late"},
        {"8/8/8/2k5/7P/8/8/K7 w", 1404, "outside by a step"},
        {"8/8/8/3k4/7P/8/8/K7 w", 0, "inside"},
        {"8/8/8/4k3/7P/8/8/K7 w", 0, "own king too far: 7 against 3 + 1 + 2"},
        {"8/8/2k5/8/2P5/3K4/8/8 w", 0, "two in front on the fourth rank"},
        {"3k4/8/2KP4/8/8/8/8/8 w", 1406, "two in front, king beside, sixth rank, to move"},
        {"3k4/8/2KP4/8/8/8/8/8 b", 0, "not to move"},
        {"8/8/8/8/8/2k5/2P5/4K3 w", 0, "in front on the second rank"},
        {"k7/8/PK6/8/8/8/8/8 w", 0, "nor does that help a rook pawn"},
        {"k7/8/8/8/P7/1K6/8/8 w", 0, "rook pawn, king before it"},
        {"8/8/8/K1k5/P7/8/8/8 w", 0, "king two files beside ours"},
        {"8/8/2k5/K7/P7/8/8/8 b", 0, "or one step from there"},
        {"8/8/K2k4/P7/8/8/8/8 w", 1405, "nearer to the corner and the pawn"},
        {"8/2k5/8/K7/P7/8/8/8 w", 40 - 4, "unclear"},
        {"4k3/8/4K3/8/4P3/8/8/8 b", -1404, "two ranks in front"},
        {"3k4/8/3K4/3P4/8/8/8/8 b", -1405, "sixth rank, opposition or not"},
        {"8/3k4/8/3K4/3P4/8/8/8 w", 0, "opposition, to move"},
        {"8/3k4/8/3K4/3P4/8/8/8 b", -1404, "opposition, not to move"},
        {"8/4k3/8/3K4/3P4/8/8/8 b", 0, "can take the opposition"},
        {"8/4k3/8/3K4/3P4/8/8/8 w", 1404, "cannot any more"},
        {"4k3/8/8/8/4P3/4K3/8/8 w", 128 - 4, "behind the pawn"},
        {"7k/8/8/8/1P6/8/1K6/8 w", 1404, "outside the square on the left wing"},
        {"k7/8/8/8/6P1/8/6K1/8 w", 1404, "and on the right"},
        {"8/8/1PK1k3/8/8/8/8/8 w", 1406, "king between, on one rank"},
    };
    expect_scores(CASES);
}

TEST_F(Endings, RookAgainstPawn) {
    const ScoreCase CASES[] = {
        {"8/8/8/3k4/3p4/8/3K4/R7 w", 1288, "king in front of the pawn"},
        {"8/8/8/3k4/3p4/8/3K4/R7 b", -1288, "whoever moves"},
        {"8/8/3pR3/5k2/3K4/8/8/8 b", -(40 + 200), "unless it attacks the rook"},
        {"8/8/3k4/3p4/8/8/2K5/R7 w", 1287, "king nearer to the corner"},
        {"R6K/8/8/8/3p3k/8/8/8 w", 1286, "weak king far from the pawn"},
        {"R6K/8/8/8/8/2kp4/8/8 w", 80 - 40, "weak king beside an advanced pawn"},
        {"R6K/8/8/8/8/2kp4/8/8 b", -40, "whoever moves"},
        {"R7/8/8/5K2/8/2kp4/8/8 w", 216, "strong king near: 16 + 200"},
        {"3K4/8/8/8/R3k3/8/3p4/8 w", 223, "six ranks behind the pawn: 15"},
        {"2K5/8/8/8/R3k3/8/3p4/8 w", 218, "one file aside: 10"},
        {"8/8/3K4/8/4k3/R7/2p5/8 w", 200 + 8, "four ranks behind it: nothing"},
        {"8/4K3/8/8/R3k3/8/3p4/8 w", 208 + 5, "five ranks, one file: 5"},
        {"8/p7/1k6/8/8/8/8/R6K w", 252, "six ranks ahead, seven files to the right: 4"},
        {"8/p7/1k6/8/8/8/5K2/R7 w", 256, "five ranks ahead, five files: 8"},
        {"8/7p/6k1/8/8/8/2K5/7R w", 248, "nothing to the left"},
    };
    expect_scores(CASES);
}

TEST_F(Endings, Mating) {
    const ScoreCase CASES[] = {
        {"k7/8/2K5/8/8/8/8/7R w", 646 + 1280 + 100 + 100, "corner, kings two apart"},
        {"8/8/8/3k4/8/8/8/K6Q b", -(1248 + 1280 + 70 + 80), "centre, kings four apart"},
        {"8/8/8/3k4/8/8/8/KNN5 w", 832, "two knights cannot mate"},
        {"8/8/8/3k4/8/8/8/KNNN4 w", 1248 + 1280 + 70 + 80, "three can"},
        {"8/8/8/3k4/8/8/8/KBB5 w", 832 + 1280 + 70 + 80, "two bishops"},
        {"8/8/8/3k4/8/8/P7/KNN5 w", 960 + 1280 + 70 + 80, "a pawn helps"},
        {"k7/8/1K6/8/8/8/8/1NB5 w", 1280 + 130 + 100, "wrong corner for the dark bishop"},
        {"8/8/8/8/8/8/2K5/k3NB2 b", -(1280 + 130 + 100), "wrong corner for the light one"},
        {"8/8/8/8/3K4/8/1k6/2B1N3 w", 1280 + 180 + 100, "on the way to a1"},
        {"7k/8/8/8/4b3/8/8/KR6 w", 100 - 60, "rook against bishop"},
        {"7k/8/8/8/4n3/8/8/KR6 b", -(100 - 50 + 20), "knight four away from its king"},
        {"7k/8/8/8/r7/8/8/KR6 w", 0, "rook against rook"},
    };
    expect_scores(CASES);
}

TEST_F(Endings, BishopAndPawn) {
    const ScoreCase CASES[] = {
        {"8/8/8/3Pk3/8/8/8/KB6 b", 0, "the pawn falls"},
        {"8/8/8/3Pk3/8/8/B7/K7 b", -1021, "guarded by the bishop"},
        {"k7/8/8/8/P7/8/8/K1B5 w", 0, "wrong bishop"},
        {"7k/8/8/8/7P/8/8/KB6 w", 0, "on the other wing"},
        {"8/8/8/8/P2k4/8/8/K1B5 w", 252, "wrong bishop, king not in the corner"},
        {"8/Pk6/8/8/8/8/8/K1B5 w", 0, "takes on a7"},
        {"k7/8/8/8/6P1/8/8/KB6 w", 1692, "weak king outside the square"},
        {"8/8/3k4/8/3P4/8/8/K1B5 w", 1692, "own king near enough"},
        {"8/8/3k4/8/3P4/8/8/2B4K w", 636, "nobody guards"},
    };
    expect_scores(CASES);
}

TEST_F(Endings, RookAndPawn) {
    const ScoreCase CASES[] = {
        {"4k3/8/r7/4P3/4K3/8/8/R7 w", 0, "rook on the sixth rank"},
        {"4k3/8/8/8/8/r3P3/4K3/R7 w", 0, "pawn not beyond the third"},
        {"4k3/8/R7/8/8/r3P3/4K3/8 w", 40, "130 - 12 - 8 - 64 - 6, our rook on the sixth"},
        {"4k3/8/4P3/4K3/8/8/8/r6R w", 0, "rook behind a pawn on the sixth"},
        {"R7/P5k1/8/8/8/8/r7/2K5 w", 0, "tied to the corner"},
        {"R7/P5k1/2K5/8/8/8/r7/8 w", 0, "wherever the king stands"},
        {"R7/P5k1/8/r7/8/8/8/2K5 w", 0, "king too far back"},
        {"R7/P5k1/2K5/r7/8/8/8/8 w", 254, "7 * (108 - 4 + 72 - 6 - 24) - 768"},
        {"8/3PK3/8/6k1/8/8/8/r2R4 w", 646, "about to promote: 646 + 1 - 1"},
        {"8/3PK3/8/8/8/8/4k3/r2R4 w", 646, "with the rook under attack, to move"},
        {"8/8/8/8/1k1P4/8/8/K2R3r w", 132 - 12 - 8 + 0 - 18, "weak king level: 6 * 0"},
        {"8/8/2k5/8/3P4/3K4/8/3R3r w", 132 - 12 - 8 - 48 - 6, "one file aside: 48"},
        {"8/8/1k6/8/3P4/3K4/8/3R3r w", 132 - 12 - 8 - 40 - 6, "two files: 40 with the rook far right"},
        {"8/8/1k6/8/3P4/3K4/8/r2R4 w", 132 - 9 - 6 - 12 - 6, "two files: four times three files"},
        {"8/8/4k3/8/3P4/3K4/8/3R3r w", 132 - 12 - 8 - 24 - 6, "pawn one file to the left"},
        {"8/8/5k2/8/3P4/3K4/8/3R3r w", 132 - 12 - 8 - 6, "two files: nothing"},
        {"8/8/6k1/8/3P4/3K4/8/3R3r w", 7 * (132 - 12 - 8 + 36 - 6) - 768, "three files: 12 each"},
        {"8/8/8/8/3P4/3K4/4k3/R2r4 w", 132 - 6 + 12 - 6 - 24, "rook behind the pawn: 24"},
    };
    expect_scores(CASES);
}

struct FlagCase {
    const char* fen;
    int shift_white, shift_black;
    bool cannot_win_white, cannot_win_black;
    const char* why;
};

TEST_F(Endings, Drawish) {
    const FlagCase CASES[] = {
        {"4k3/8/8/8/8/8/3r4/RN2K3 w", 4, 1, false, false, "rook and knight against rook"},
        {"4k3/8/8/8/8/8/3r4/RB2K3 w", 2, 1, false, false, "rook and bishop"},
        {"4k3/p7/8/8/8/8/3r4/RN2K3 w", 4, 0, false, false, "an enemy pawn changes nothing for us"},
        {"4k3/8/8/8/8/8/P2r4/RN2K3 w", 0, 1, false, false, "an own pawn does"},
        {"3qk3/8/8/8/8/8/8/RRN1K3 w", 0, 1, false, false, "460 more is too much; Black's edge is small"},
        {"2bnk3/8/8/8/8/8/8/R1N1K3 w", 1, 1, false, false, "230 more is not"},
        {"2b1k3/8/8/8/8/8/8/1BN1K3 w", 1, 1, false, false, "just a minor more is not"},
        {"2n1k3/8/8/8/8/8/8/2N1K3 w", 0, 0, false, false, "knights cannot give themselves up"},
        {"2b1k3/p7/8/8/8/8/P7/2B1K3 w", 1, 1, false, false, "opposite bishops alone"},
        {"2b1k3/p7/8/8/8/8/P7/3BK3 w", 0, 0, false, false, "not of one colour"},
        {"2b1k1n1/p7/8/8/8/8/P7/2B1K3 w", 0, 0, false, false, "not with a knight"},
        {"4k3/p7/8/8/8/8/8/2B1K3 w", 0, 0, true, false, "lone bishop"},
        {"4k3/pp6/8/8/8/8/P7/2B1K3 w", 0, 0, false, false, "not with a pawn"},
        {"4k3/pp6/8/8/8/8/8/1NN1K3 w", 2, 0, false, false, "two knights, few pawns"},
        {"4k3/ppp5/8/8/8/8/8/1NN1K3 w", 0, 0, true, false, "three pawns"},
        // Bishop and rook pawns.
        {"k7/8/8/8/8/P7/P7/2B1K3 w", 0, 1, true, false, "wrong bishop, king in the corner"},
        {"k7/1p6/8/8/8/P7/P7/2B1K3 w", 2, 0, false, false, "with a b-pawn"},
        {"8/k7/8/8/8/P7/P7/2B1K3 w", 0, 1, true, false, "before the pawns"},
        {"8/P7/k7/8/8/P7/8/2B1K3 w", 0, 1, false, false, "a pawn has got past"},
        {"k7/P7/8/8/8/P7/8/2B1K3 w", 0, 1, true, false, "but not past the corner"},
        {"8/Pk6/8/8/8/P7/8/2B1K3 w", 0, 1, true, false, "nor b7"},
        {"2k5/8/8/8/8/P7/P7/2B1K3 w", 0, 1, false, false, "king on the c-file"},
        {"k7/8/8/8/8/P7/P7/3BK3 w", 0, 1, false, false, "right bishop"},
        {"7k/8/8/8/8/7P/7P/3BK3 w", 0, 1, true, false, "on the other wing"},
        {"7k/6p1/8/8/8/7P/7P/3BK3 w", 2, 0, false, false, "with a g-pawn"},
        {"k7/8/8/8/8/P7/PP6/2B1K3 w", 0, 1, false, false, "not rook pawns alone"},
    };
    for (const FlagCase& c : CASES) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        EvalTrace trace = trace_evaluation();
        EXPECT_EQ(trace.scale_shift, (std::array{c.shift_white, c.shift_black}));
        EXPECT_EQ(trace.cannot_win, (std::array{c.cannot_win_white, c.cannot_win_black}));
        set_up(mirrored_fen(c.fen));
        trace = trace_evaluation();
        EXPECT_EQ(trace.scale_shift, (std::array{c.shift_black, c.shift_white})) << "mirrored";
        EXPECT_EQ(trace.cannot_win, (std::array{c.cannot_win_black, c.cannot_win_white})) << "mirrored";
    }
}

// In pure pawn endings the rule for rook pawns depends on the colour and on the file.
TEST_F(Endings, RookPawnsAlone) {
    const FlagCase CASES[] = {
        {"8/8/8/8/8/pk6/P7/4K3 w", 0, 0, true, false, "no passed pawn counts as below every king"},
        {"4k3/p7/PK6/8/8/8/8/8 w", 0, 0, false, false, "so Black, above every king, can win"},
        {"8/8/k7/P7/8/8/P7/4K3 w", 0, 0, true, false, "first passed pawn below the king"},
        {"8/8/8/P6p/1k6/8/8/4K3 w", 0, 0, false, false, "above it"},
        {"8/1k6/P7/7p/8/8/8/4K3 w", 0, 0, true, false, "b7"},
        {"8/8/8/Pk5p/8/8/8/4K3 w", 0, 0, false, false, "beside it, a-file"},
        {"8/8/8/p5kP/8/8/8/4K3 w", 0, 0, true, false, "beside it, h-file"},
        {"4k3/8/8/8/p5KP/8/8/8 w", 0, 0, false, false, "Black's pawn is on the other wing"},
        {"4k3/8/8/8/P5Kp/8/8/8 w", 0, 0, false, true, "beside it, h-file"},
        {"4k3/8/8/p6P/1K6/8/8/8 w", 0, 0, false, true, "king below the pawn"},
        {"4k3/8/8/7P/pK6/8/8/8 w", 0, 0, false, false, "beside it, a-file"},
        {"4k3/8/8/7P/8/p7/1K6/8 w", 0, 0, false, true, "b2"},
    };
    for (const FlagCase& c : CASES) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        const EvalTrace trace = trace_evaluation();
        EXPECT_EQ(trace.cannot_win, (std::array{c.cannot_win_white, c.cannot_win_black}));
    }
}

TEST_F(Endings, PawnRaces) {
    struct RaceCase {
        const char* fen;
        int white, black;
        const char* why;
    };
    const RaceCase CASES[] = {
        {"4k3/8/8/8/8/8/P7/4K3 w", 10 - 8 + 5 + 30 + 10, 10, "six moves, enemy king in time"},
        {"8/8/8/8/P7/8/8/K6k w", 139 + 36 * 24, 0, "0 - 6 + 25 + 50 + 56 + 14, and a race alone by 4"},
        {"8/8/8/7p/P7/8/8/K6k w", 139 - 160, 87 - 80, "4 against 2: even"},
        {"8/8/8/P6p/8/8/8/K6k w", 223 - 320, 87 - 128 + 400, "5 against 2: decided"},
        {"4k3/8/8/3p4/3P4/8/8/4K3 w", -8, -8, "blocked: 10 - 8 - 24 + 14"},
        {"8/8/8/4k3/3P4/8/8/4K3 w", 10 - 8 - 76 + 14, 56, "attacked and stopped by the king"},
        {"8/8/8/8/3P4/2k5/8/4K3 w", 73 + 38 * 24, 28, "attacked from behind: 42"},
        {"4k3/8/8/8/1P6/P7/8/4K3 w", 10 + (2 * 25 + 24 + 14) + (-10 + 10 + 28 + 12), 10,
         "b4 is guarded: twice the race value"},
    };
    for (const RaceCase& c : CASES) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        EvalTrace trace = trace_evaluation();
        EXPECT_EQ(term_of(trace, "pawn ending", WHITE).eg, c.white);
        EXPECT_EQ(term_of(trace, "pawn ending", BLACK).eg, c.black);
        set_up(mirrored_fen(c.fen));
        trace = trace_evaluation();
        EXPECT_EQ(term_of(trace, "pawn ending", BLACK).eg, c.white) << "mirrored";
        EXPECT_EQ(term_of(trace, "pawn ending", WHITE).eg, c.black) << "mirrored";
    }
}

// From totals to the score.
TEST_F(Endings, BlendAndScale) {
    // Rook and knight against rook: the score in White's favour is divided by 16, toward zero.
    set_up("4k3/8/8/8/8/8/3r4/RN2K3 w");
    EvalTrace trace = trace_evaluation();
    ASSERT_GT(trace.blended, 0);
    EXPECT_EQ(trace.score, trace.blended / 16);
    set_up("4k3/8/8/8/8/8/3r4/RN2K3 b");
    trace = trace_evaluation();
    ASSERT_LT(trace.blended, 0);
    EXPECT_EQ(trace.score, trace.blended / 16);
    set_up("4k3/p7/8/8/8/8/8/2B1K3 b");
    trace = trace_evaluation();
    EXPECT_EQ(trace.score, trace.blended < 0 ? 0 : trace.blended) << "White cannot win";

    set_up("rr2k3/8/8/8/8/8/8/1QQ1K3 w");  // 3788
    trace = trace_evaluation();
    EXPECT_EQ(trace.score, 460 * trace.mg / 1280 + 820 * trace.eg / 1280);
    set_up("rqq1k3/8/8/8/8/8/8/1QQ1K3 w");
    trace = trace_evaluation();
    EXPECT_EQ(trace.score, trace.mg);
    set_up("rr2k3/p7/8/8/8/8/P7/RRB1K3 w");
    trace = trace_evaluation();
    EXPECT_EQ(trace.score, trace.eg);
}

// The rules that are not the same for both colours, each by name. Everything else is mirrored in a test of
// its own.
TEST_F(Endings, AsymmetriesByName) {
    const auto scores_differ = [](const std::string& fen, int score, int mirrored_score) {
        set_up(fen);
        EXPECT_EQ(evaluate(), score) << fen;
        set_up(mirrored_fen(fen));
        EXPECT_EQ(evaluate(), mirrored_score) << fen << " mirrored";
    };
    // Bishop and knight: h8 holds 100 where a1 holds 200.
    scores_differ("7k/8/5K2/8/8/8/8/1NB5 w", 1480, 1580);

    // Endgame king: h2 holds 1 where a2, a7 and h7 hold 4.
    set_up("4k3/8/8/8/8/8/7K/8 w");
    EXPECT_EQ(term_of(trace_evaluation(), "endgame king", WHITE).eg, 1 - 4);
    set_up("8/7k/8/8/8/8/8/4K3 w");
    EXPECT_EQ(term_of(trace_evaluation(), "endgame king", BLACK).eg, 4 - 4);

    // Three pairs of centre pawns: only White's rearmost pawn of a file is asked whether it is blocked.
    set_up("2bbk1n1/8/3p4/3P4/8/8/3PP3/2BBK1N1 w");
    EXPECT_EQ(term_of(trace_evaluation(), "bishop pair", WHITE).mg, 50) << "d2 is free";
    set_up("2bbk1n1/3pp3/8/8/3p4/3P4/8/2BBK1N1 w");
    EXPECT_EQ(term_of(trace_evaluation(), "bishop pair", WHITE).mg, 15) << "d3 is blocked";
}

}  // namespace
}  // namespace quelmar
