#include "board/position.h"
#include "board/setup.h"
#include "eval/game_result.h"
#include "support/engine.h"

namespace quelmar {
namespace {

class GameResult : public EngineTest {};

TEST_F(GameResult, OfSetUpPositions) {
    struct ResultCase {
        const char* fen;
        int halfmove_clock;
        int result;
        const char* why;
    };
    const ResultCase CASES[] = {
        {START_FEN, 0, RESULT_NONE, "the game goes on"},
        {"R5k1/5ppp/8/8/8/8/8/4K3 b - -", 0, RESULT_MATE, "mate"},
        {"R5k1/5ppp/8/8/8/8/8/4K3 b - -", 100, RESULT_MATE, "mate comes before fifty moves"},
        {"7k/5Q2/8/8/8/8/8/4K3 b - -", 0, RESULT_STALEMATE, "stalemate"},
        {"7k/5Q2/8/8/8/8/8/4K3 b - -", 120, RESULT_STALEMATE, "stalemate too"},
        {START_FEN, 99, RESULT_NONE, "99 plies"},
        {START_FEN, 100, RESULT_FIFTY_MOVES, "100 plies"},
        {"4k3/8/8/8/8/8/8/4K3 w - -", 0, RESULT_MATERIAL, "bare kings"},
        {"4kb2/8/8/8/8/8/8/4KN2 w - -", 0, RESULT_MATERIAL, "a minor each"},
        {"4k3/8/8/8/8/8/8/3NKN2 w - -", 0, RESULT_NONE, "two knights"},
        {"4k3/8/8/8/8/8/8/4KR2 w - -", 0, RESULT_NONE, "a rook"},
        {"4k3/7p/8/8/8/8/8/4K3 w - -", 0, RESULT_NONE, "a pawn"},
    };
    for (const ResultCase& c : CASES) {
        set_up(c.fen);
        position.current().halfmove_clock = static_cast<u8>(c.halfmove_clock);
        EXPECT_EQ(game_state(), c.result) << c.fen << ' ' << c.why;
    }
}

TEST_F(GameResult, Repetition) {
    set_up(START_FEN);
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_EQ(game_state(), RESULT_NONE) << "twice";
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_FALSE(is_threefold_repetition())
        << "the look-back ends before the first entry of the reversible part";
    play("g1f3");
    EXPECT_EQ(game_state(), RESULT_REPETITION) << "the third time with the knight on f3";
    set_up(START_FEN);
    play("e2e4 e7e5 g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8 b1c3");
    EXPECT_EQ(game_state(), RESULT_NONE) << "a new position";
}

TEST_F(GameResult, Texts) {
    EXPECT_STREQ(result_text(RESULT_NONE), "");
    EXPECT_STREQ(result_text(RESULT_FIFTY_MOVES), "50 moves");
    EXPECT_STREQ(result_text(RESULT_RESIGN), "Resign");
    EXPECT_FALSE(is_decisive_result(RESULT_AGREEMENT));
    EXPECT_TRUE(is_decisive_result(RESULT_MATE));
}

}  // namespace
}  // namespace quelmar
