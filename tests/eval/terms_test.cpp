// Single terms against values worked out by hand. Every case is also asked with the colours exchanged.
#include "board/position.h"
#include "eval/evaluate.h"
#include "eval/terms.h"
#include "protocol/settings.h"

namespace quelmar {
namespace {

class Terms : public EngineTest {};

struct TermCase {
    const char* fen;
    const char* term;
    Points white, black;
    const char* why;
};

void expect_term(const TermCase& c) {
    SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
    set_up(c.fen);
    const EvalTrace trace = trace_evaluation();
    const Points white = term_of(trace, c.term, WHITE), black = term_of(trace, c.term, BLACK);
    EXPECT_EQ(white.mg, c.white.mg);
    EXPECT_EQ(white.eg, c.white.eg);
    EXPECT_EQ(black.mg, c.black.mg);
    EXPECT_EQ(black.eg, c.black.eg);
    set_up(mirrored_fen(c.fen));
    const EvalTrace mirrored = trace_evaluation();
    EXPECT_EQ(term_of(mirrored, c.term, BLACK), white) << "mirrored";
    EXPECT_EQ(term_of(mirrored, c.term, WHITE), black) << "mirrored";
}

TEST_F(Terms, Men) {
    const TermCase CASES[] = {
        // Mobility: twice the table value of the squares a man can go to.
        {"4k3/8/8/8/8/8/8/N3K3 w", "mobility", {0, 0}, {}, "two squares from the corner"},
        {"4k3/8/8/3N4/8/8/8/4K3 w", "mobility", {8, 8}, {}, "eight squares"},
        {"4k3/2P5/2n5/3N4/8/8/8/4K3 w",
         "mobility",
         {8, 8},
         {8, 8},
         "an own pawn that can step forward counts"},
        {"2n1k3/2P5/8/3N4/8/8/8/4K3 w", "mobility", {8, 8}, {4, 4}, "a stuck pawn does not: seven squares"},
        {"4k3/8/8/8/8/8/1P6/B3K3 w", "mobility", {0, 0}, {}, "one square, a pawn on it that can move"},
        {"4k3/8/8/3P4/3N4/2B5/8/4K3 w", "mobility", {14, 14}, {}, "the bishop stops at its knight"},
        {"4k3/8/8/4B3/8/2B5/8/4K3 w", "mobility", {22, 22}, {}, "bishops look through each other"},
        {"4k3/8/8/4Q3/8/2B5/8/4K3 w", "mobility", {8, 8}, {}, "the squares behind the queen do not count"},
        {"4k3/8/8/8/8/8/P7/R3K3 w", "mobility", {2, 2}, {}, "four squares and a pawn that can move"},
        {"4k3/8/8/8/8/8/8/R2K4 w", "mobility", {8, 8}, {}, "ten squares, and 2 for the open file"},
        {"4k3/8/8/8/8/8/8/R2R2K1 w", "mobility", {20, 20}, {}, "rooks look through each other"},
        // Rooks.
        {"2k1n3/8/8/8/7p/8/PP6/1R1R2K1 w",
         "rooks at king",
         {20, 0},
         {},
         "only d1 has no own pawn on its file"},
        {"4k3/8/8/8/8/8/8/2R2R1K w", "rooks at king", {20, 0}, {}, "c1 is two files away"},
        {"4k3/8/8/8/8/8/8/R3K3 w", "major pieces", {0, 0}, {}, "the first rook is free"},
        {"3qk3/8/8/8/8/8/8/QR2K2R w", "major pieces", {-24, -24}, {0, 0}, "(1 + 4) * 8 - 16"},
        {"4k3/8/8/8/8/8/PP6/R3KN2 w", "pawn count", {16 * 3 - 24, 0}, {}, "two pawns"},
        {"4k3/8/8/8/8/8/PPPPPP2/R3KN2 w", "pawn count", {-16 + 8, 0}, {}, "six pawns"},
        {"7k/R7/8/8/8/8/8/4K3 w", "seventh rank", {16 + 12, 8 + 30}, {}, "king locked in"},
        {"8/RR5k/8/8/8/8/8/4K3 w", "seventh rank", {32 + 16, 16}, {}, "count 4, squared"},
        {"1Q6/Q6k/8/8/8/8/8/4K3 w", "seventh rank", {16, 8}, {}, "two queens count 2, not squared"},
        {"8/Q6k/8/8/8/8/8/4K3 w", "seventh rank", {0, 0}, {}, "one queen is not enough"},
        // Minor pieces.
        {"4k1n1/8/8/8/8/8/8/2B1KB2 w", "bishop pair", {64, 64}, {}, "open centre"},
        {"4k3/8/8/8/8/8/8/2B1KB2 w", "bishop pair", {84, 84}, {}, "no enemy minor"},
        {"4k1n1/8/8/8/8/8/8/B1B1K3 w", "bishop pair", {0, 0}, {}, "same colour"},
        {"4k1n1/4p3/8/8/8/8/3P4/2B1KB2 w", "bishop pair", {50, 50}, {}, "half-open centre"},
        {"4k1n1/8/4p3/3pP3/3P4/8/8/2B1KB2 w", "bishop pair", {0, 0}, {}, "closed centre"},
        {"4k1n1/8/8/3p4/3P4/8/8/2B1KB2 w", "bishop pair", {15, 15}, {}, "blocked centre"},
        {"4k1n1/8/8/4p3/3P4/8/8/2B1KB2 w", "bishop pair", {40, 40}, {}, "lever"},
        {"4k1n1/3pp3/8/8/8/8/3PP3/2B1KB2 w", "bishop pair", {30, 30}, {}, "full centre"},
        {"4k3/8/4p3/3pP3/2PP4/8/8/2B1K3 w", "bad bishops", {}, {}, "dark pawns d4, e5: 2 + 8 are too few"},
        {"4k3/8/4p3/3pP3/1P1P1P2/8/8/2B1K3 w",
         "bad bishops",
         {-30, -30},
         {},
         "b4, d4, e5, f4: 4 + 12 > 14, five squares"},
        {"4k3/8/4p3/P2pP1P1/1P1P4/P7/8/2B1K3 w",
         "bad bishops",
         {},
         {},
         "six dark, two central: 6 + 8 are too few"},
        {"4k3/B1p5/1p6/8/8/8/8/4K3 w", "trapped bishops", {-150, -150}, {}, "b6 is defended"},
        {"4k3/B7/1p6/8/8/8/8/4K3 w", "trapped bishops", {0, 0}, {}, "b6 is not"},
        {"4k3/5p1B/6p1/8/8/8/8/4K3 w", "trapped bishops", {-150, -150}, {}, "the other wing"},
        {"4k3/p6p/8/8/8/8/P6P/2N1K3 w", "knights, span", {0, -40}, {}, "pawns on both wings, no other piece"},
        {"4k1n1/p6p/8/8/8/8/P6P/1NN1K3 w", "knights, span", {0, -40}, {}, "one knight more"},
        {"2b1k3/p6p/8/8/8/8/P6P/2N1KB2 w", "knights, span", {0, -20}, {}, "bishops help"},
        {"4k3/p7/8/8/8/8/PPPPP3/2N1K3 w", "knights, span", {0, -10}, {}, "a to e"},
        {"4k3/6p1/8/8/8/8/PPP5/2N1K3 w",
         "knights, span",
         {0, 0},
         {},
         "from the higher of the two first files"},
        {"4k3/8/8/8/8/8/P6P/2N1K3 w", "knights, span", {0, -40}, {}, "one side's pawns alone"},
        {"3qk3/p6p/8/8/8/8/P6P/2N1K3 w", "knights, span", {0, 0}, {}, "not with queens"},
        // Centre: weight times kinds.
        {"4k3/8/8/8/8/1P6/8/4K3 w", "centre", {4, 0}, {}, "pawn on c4: 1 * 4"},
        {"4k3/8/8/2P5/8/8/8/4K3 w", "centre", {16, 0}, {}, "pawn on d6: 4 * 4"},
        {"3rk3/8/8/8/8/8/8/4K3 b", "centre", {}, {2 * 1 + 3 * 1 + 4 * 1, 0}, "rook on d5, d4, d3"},
    };
    for (const TermCase& c : CASES)
        expect_term(c);
}

TEST_F(Terms, PawnStructure) {
    const char* const TERM = "pawn structure";
    const TermCase CASES[] = {
        // Isolated pawns. A passed and an isolated pawn together cost 2 more as two weak pawns.
        {"4k3/8/8/8/P7/8/8/4K3 w", TERM, {-3, -3}, {}, "4, 3 less since it can advance"},
        {"4k3/8/P7/8/8/8/8/4K3 w", TERM, {-2, -2}, {}, "from the sixth rank on only the count"},
        {"4k3/8/8/3n4/3P4/8/8/4K3 w", TERM, {-32, -32}, {}, "20 and 10 for the knight"},
        {"4k3/8/8/3b4/3P4/8/8/4K3 w", TERM, {-29, -29}, {}, "20 and 7 for the bishop"},
        {"4k3/8/8/3p4/3P4/8/8/4K3 w", TERM, {-10, -10}, {-10, -10}, "halved by the pawn"},
        {"4k3/8/4p3/8/3P4/8/8/4K3 w", TERM, {-20, -20}, {-20, -20}, "each would be lost in front"},
        {"4k3/8/4p3/8/3P4/2N5/8/4K3 w", TERM, {-8, -8}, {-20, -20}, "safe in front of a pawn: (20 - 3) / 2"},
        // Doubled pawns.
        {"4k3/8/8/8/8/P7/P7/4K3 w", TERM, {-23, -23}, {}, "1 isolated, 8 doubled, 8 / 2 rear, 10 for four"},
        // Chains and duos.
        {"4k3/8/8/8/8/8/3PP3/4K3 w", TERM, {2, 2}, {}, "duo at home, 2 off for two passed pawns"},
        {"4k3/8/8/8/3PP3/8/8/4K3 w", TERM, {8, 8}, {}, "duo"},
        {"4k3/8/8/8/3P4/4P3/8/4K3 w", TERM, {5, 5}, {}, "chain"},
        {"4k3/8/8/8/8/3P4/2P5/4K3 w", TERM, {1, 1}, {}, "chain at home"},
        // Backward pawns.
        {"4k3/8/8/4p3/2P5/3P4/8/4K3 w", TERM, {7 - 40 - 2, -35}, {-20, -20}, "backward behind c4"},
        {"4k3/8/8/4p3/8/3P4/2P5/4K3 w", TERM, {3, 3}, {-20, -20}, "c2 can come to help"},
        {"3rk3/8/8/4p3/2P5/3P4/8/4K3 w", TERM, {-47, -47}, {-20, -20}, "6 on the open file, 6 for the rook"},
        {"4k3/3q4/8/4p3/2P5/3P4/8/4K3 w", TERM, {-44, -44}, {-20, -20}, "3 for the queen"},
        {"4k3/8/8/4p3/2Pn4/3P4/8/4K3 w", TERM, {-45, -45}, {-20, -20}, "10 for the knight"},
        {"4k3/8/8/4p3/2P5/3P1N2/8/4K3 w",
         TERM,
         {-15, -15},
         {-20, -20},
         "halved, since it would be safe on d4"},
        {"4k3/8/4p3/2P5/8/3P4/8/4K3 w", TERM, {-47, -47}, {-17, -17}, "held two squares on: 5 more"},
        {"4k3/8/8/4p3/2P5/8/3P4/4K3 w", TERM, {-42, -42}, {-17, -17}, "not on the second rank"},
        {"4k3/8/4p3/2Pp4/8/3P4/8/4K3 w", TERM, {-24, -24}, {7, 7}, "45 halved by the pawn on d5"},
    };
    for (const TermCase& c : CASES)
        expect_term(c);
}

TEST_F(Terms, PassedPawns) {
    const char* const TERM = "passed pawns";
    // A quarter comes off the sum; the middlegame has half of the rest.
    const auto points = [](int sum) { return Points{(sum - sum / 4) / 2, sum - sum / 4}; };
    const TermCase CASES[] = {
        {"4k3/8/8/8/8/8/P7/4K3 w", TERM, points(12), {}, "second rank"},
        {"4k3/8/8/8/8/P7/8/4K3 w", TERM, points(12), {}, "third rank"},
        {"4k3/8/8/8/P7/8/8/4K3 w", TERM, points(24), {}, "fourth rank"},
        {"4k3/8/8/P7/8/8/8/4K3 w", TERM, points(48), {}, "fifth rank"},
        {"4k3/8/P7/8/8/8/8/4K3 w", TERM, points(84 + 90), {}, "sixth rank, safe, to move"},
        {"4k3/8/P7/8/8/8/8/4K3 b", TERM, points(84 + 70), {}, "sixth rank, safe"},
        {"4k3/8/P7/1n6/8/8/8/4K3 w",
         TERM,
         points(94 + 47),
         {},
         "unsafe, but half more against a lone knight"},
        {"8/P7/8/8/4k3/8/8/4K3 w", TERM, points(128 + 220), {}, "seventh rank, safe, to move"},
        {"8/P7/8/8/4k3/8/8/4K3 b", TERM, points(128 + 120), {}, "seventh rank, safe"},
        {"7r/P7/8/8/4k3/8/8/4K3 w", TERM, points(128 + 20), {}, "seventh rank, unsafe"},
        {"r7/P7/8/8/4k3/8/8/4K3 w", TERM, points(64), {}, "a piece in front"},
        {"4k3/r7/8/P7/8/8/8/4K3 w", TERM, points(48 - 12), {}, "a piece two in front"},
        {"4k3/8/8/PP6/8/8/8/4K3 w", TERM, points(2 * (48 + 96)), {}, "neighbours"},
        {"7k/8/8/8/3P4/4P3/8/4K3 w", TERM, points(24 + 48 + 12), {}, "defended"},
        {"7k/8/8/8/3P4/2P5/8/4K3 w", TERM, points(24 + 48 + 12), {}, "defended from the other side"},
        {"8/8/8/8/3Pk3/4P3/8/4K3 w",
         TERM,
         points((24 + 24 - 18) + (6 - 12)),
         {},
         "the king beside it holds d4"},
        {"k7/8/6b1/3n4/3P4/4P3/8/4K3 w", TERM, points((12 + 24) + 12), {}, "two minors hold it"},
        {"k7/8/8/3n4/3P4/4P3/8/4K3 w", TERM, points((60 + 30) + (12 + 6)), {}, "one cannot"},
        {"4k3/8/8/P7/8/8/8/R3K3 w", TERM, points(48 + 28), {}, "own rook behind"},
        {"4k3/8/8/P7/8/8/R7/R3K3 w", TERM, points(48 + 56), {}, "two of them"},
        {"4k3/8/8/P7/8/8/8/r3K3 w", TERM, points(48 - 30), {}, "enemy rook behind"},
        {"4k3/8/8/P7/8/N7/r7/4K3 w", TERM, points(48), {}, "a knight between"},
        {"8/1k6/8/P7/8/8/8/4K3 w", TERM, points(48 - 30), {}, "enemy king ahead on the next file"},
        {"8/8/8/P7/1k6/8/8/4K3 w", TERM, points(48), {}, "enemy king behind"},
        {"7k/8/8/8/3P4/3P4/8/4K3 w", TERM, points(24 + 12), {}, "each pawn of a file"},
    };
    for (const TermCase& c : CASES)
        expect_term(c);
    const char* const KINGS = "passed pawns' kings";
    const TermCase KING_CASES[] = {
        {"8/8/3K4/3P4/8/8/8/7k w", KINGS, {0, 40}, {}, "own king in front"},
        {"8/8/8/8/3K4/3P4/8/7k w", KINGS, {0, 20}, {}, "halved on the third rank"},
        {"8/8/4k3/3P4/8/8/8/7K w", KINGS, {0, -40}, {}, "enemy king"},
        {"8/8/8/k2P4/8/8/8/1R4K1 w", KINGS, {0, 20 - 8}, {}, "cut off by three files"},
        {"8/8/8/3P3k/8/8/8/6RK w", KINGS, {0, 30}, {}, "and by four from the other side"},
        {"k7/8/8/3P4/8/8/8/1R4K1 w", KINGS, {0, -7}, {}, "not at the edge"},
    };
    for (const TermCase& c : KING_CASES)
        expect_term(c);
}

// Both sides have queen and rook, 1894, out of the kings' way.
TEST_F(Terms, Kings) {
    const TermCase CASES[] = {
        {"qr5k/8/8/8/8/8/5PPP/QR4K1 w", "shelter", {2 * 28, 0}, {}, "10 + 4 in front, 7 on each side"},
        {"qr5k/4p3/8/8/8/8/3P1PPP/QR4K1 w", "shelter", {42, 0}, {}, "half more with a half-open centre"},
        {"qr5k/8/4p3/3pP3/3P4/8/5PPP/QR4K1 w", "shelter", {28, 0}, {}, "as it is in a closed one"},
        {"qr5k/8/8/8/8/6P1/5PBP/QR4K1 w", "shelter", {2 * (7 + 3 + 14), 0}, {}, "bishop among pawns"},
        {"qr5k/8/8/8/8/8/5PBP/QR4K1 w", "shelter", {2 * (4 + 14), 0}, {}, "without g3 it is worth 4"},
        {"qr5k/8/8/8/8/8/5P2/QR3BK1 w", "shelter", {2 * (5 + 7), 0}, {}, "bishop beside, with its pawn"},
        {"qr5k/8/8/8/8/8/8/QR3BKB w", "shelter", {2 * (3 + 3), 0}, {}, "bishops beside"},
        {"qr5k/8/8/8/8/8/5PKP/QR6 w", "shelter", {2 * 10, 0}, {}, "pawns beside"},
        {"qr5k/8/8/8/8/6PP/8/QR4K1 w", "shelter", {2 * 4, 0}, {}, "pawns two in front"},
        {"7k/8/8/8/8/8/5PPP/QR4K1 w", "shelter", {}, {}, "an ending"},
        // Danger: -(table * enemy men) >> 12, times 2, three rooks are 1938; an eighth of that in the
        // endgame.
        {"rrr3k1/5ppp/8/8/8/8/5PPP/RRR3K1 w", "king danger", {0, 0}, {0, 0}, "index 0"},
        {"rrr3k1/5ppp/8/8/8/8/8/RRR3K1 w", "king danger", {-6, 0}, {0, 0}, "index 3: 5"},
        {"rr4k1/5ppp/6q1/8/8/8/5PPP/RRR3K1 w",
         "king danger",
         {-8, -1},
         {0, 0},
         "2 on g2, 1 for the queen: 5 of 2540"},
        {"rrr3k1/5ppp/8/8/8/8/5PPP/RRR4K w", "king danger", {-2, 0}, {0, 0}, "index 1 in the corner"},
        {"rrr3k1/5ppp/8/4K3/8/8/8/RRR5 w",
         "king danger",
         {-100, -12},
         {0, 0},
         "4, 3 squares, 2 each on e6, f6"},
        {"3nk3/8/8/4K3/8/8/8/QQQ5 w", "king danger", {-14, -1}, {-10, -1}, "a knight is little: 68 of 416"},
        // Storm.
        {"qr4k1/8/8/6P1/8/8/8/Q1K2R2 w", "pawn storm", {6, 0}, {}, "g5"},
        {"qr4k1/8/8/6PP/8/8/8/Q1K2R2 w", "pawn storm", {18, 0}, {}, "neighbours: half more"},
        {"qrk5/8/8/P7/8/8/8/QR4K1 w", "pawn storm", {5, 0}, {}, "on the queen's wing"},
        {"qrk5/8/8/P7/8/8/8/Q1K2R2 w", "pawn storm", {0, 0}, {}, "kings on one wing"},
        {"qr4k1/8/8/8/8/7P/8/Q1K2R2 w", "pawn storm", {-4, 0}, {}, "a pawn at home"},
        // Boxed rooks.
        {"4k3/8/8/8/8/8/7P/5K1R w -", "boxed rook", {-64, -64}, {}, "h1"},
        {"4k3/8/8/8/8/8/7P/5K1R w K", "boxed rook", {0, 0}, {}, "it can still castle"},
        {"4k3/8/8/8/8/7P/8/6KR w -", "boxed rook", {-64, -64}, {}, "g1"},
        {"4k3/8/8/8/8/7b/7P/5K1R w -", "boxed rook", {-94, -94}, {}, "for good"},
        {"4k3/8/8/8/8/7b/6PP/5K1R w -", "boxed rook", {-64, -64}, {}, "not with g2"},
        {"4k3/8/8/8/8/8/6P1/5K1R w -", "boxed rook", {0, 0}, {}, "no pawn on the file"},
        {"4k3/8/8/8/8/P7/R7/1K6 w -", "boxed rook", {-64, -64}, {}, "the other wing"},
        {"4k3/8/8/8/8/P7/8/1RK5 w -", "boxed rook", {-64, -64}, {}, "b1"},
        {"4k3/8/8/8/8/P7/8/1RK5 w Q", "boxed rook", {0, 0}, {}, "with the right to castle"},
        // Development: twice the table value of the count.
        {"4k3/8/8/8/8/8/8/1N2K3 w", "development", {-10, -10}, {}, "knight 5"},
        {"4k3/8/8/8/8/8/8/2B1K3 w", "development", {-4, -4}, {}, "bishop 3"},
        {"4k3/8/8/8/8/8/1P1P4/2B1K3 w", "development", {-24, -24}, {}, "shut in 7"},
        {"4k3/8/8/8/8/8/P7/R3K3 w", "development", {0, 0}, {}, "rook 1"},
        {"4k3/8/8/8/8/8/P7/RR2K3 w", "development", {0, 0}, {}, "b1 is open"},
        {"4k3/8/8/8/8/8/1P6/B3K3 w", "development", {-40, -40}, {}, "corner, behind a pawn: 9"},
        {"4k3/8/8/8/8/2P5/1P6/B3K3 w", "development", {-64, -64}, {}, "c3 too: 11"},
        {"4k3/8/8/8/8/2P5/1N6/B3K3 w", "development", {-40, -40}, {}, "7 and 2"},
        {"4k3/8/8/8/8/2P2P2/1P4P1/BNN1KN1B w", "development", {-456, -456}, {}, "beyond the table"},
        {"4k3/8/8/8/8/2P5/1P4P1/BNN1K2B w", "development", {-436, -436}, {}, "11 + 10 + 9"},
        {"4k3/8/8/8/8/5P2/8/4K2B w", "development", {-10, -10}, {}, "3 and 2"},
    };
    for (const TermCase& c : CASES)
        expect_term(c);
}

TEST_F(Terms, OppositeBishopsFavourTheAttacker) {
    // Black's king stands at index 4 + 3 and the zone is under fire, White's is at home.
    set_up("rrr1b3/8/8/3k4/8/8/5PPP/RRBR2K1 w");
    EXPECT_EQ(term_of(trace_evaluation(), "opposite bishops", WHITE).mg, 10);
    set_up("rrr1b3/8/8/3k4/8/8/5PPP/RRBR2K1 b");
    EXPECT_EQ(term_of(trace_evaluation(), "opposite bishops", BLACK).mg, -10);
    set_up("rrrb4/8/8/3k4/8/8/5PPP/RRBR2K1 w");
    EXPECT_EQ(term_of(trace_evaluation(), "opposite bishops", WHITE).mg, 0) << "bishops of one colour";
}

// What a style changes, and nothing else.
TEST_F(Terms, Styles) {
    const char* const FEN = "qr4k1/5p1p/8/8/8/8/5PPP/QR4K1 w";
    const auto score_in = [FEN](int style) {
        settings.style = style;
        set_up(FEN);
        return evaluate();
    };
    settings.style = STYLE_ACTIVE;
    set_up(FEN);
    const EvalTrace active = trace_evaluation();
    const Points danger = term_of(active, "king danger", WHITE) - term_of(active, "king danger", BLACK);
    const Points shelter = term_of(active, "shelter", WHITE) - term_of(active, "shelter", BLACK);
    const auto blended = [&active](Points change) {  // non-pawn material 3788
        return (3788 - 3328) * (active.mg + change.mg) / 1280 +
               (4608 - 3788) * (active.eg + change.eg) / 1280;
    };
    EXPECT_EQ(score_in(STYLE_ACTIVE), blended({}));
    EXPECT_EQ(score_in(STYLE_NORMAL), blended({-danger.mg / 2, danger.mg / 2 / 8 - danger.mg / 8}));
    EXPECT_EQ(score_in(STYLE_AGGRESSIVE), blended({-shelter.mg, 0}));
    EXPECT_EQ(score_in(STYLE_SUICIDAL),
              blended({-shelter.mg + danger.mg / 2, danger.mg / 2 * 3 / 8 - danger.mg / 8}));
}

}  // namespace
}  // namespace quelmar
