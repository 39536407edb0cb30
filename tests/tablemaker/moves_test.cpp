#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "support/engine.h"
#include "tablebase/catalogue.h"
#include "tablemaker/men.h"
#include "tablemaker/plain_board.h"

#include <gtest/gtest.h>
#include <random>

namespace quelmar::tablemaker {
namespace {

// A random position in which the side that has moved is not in check.
struct Sample {
    Men men;
    Squares squares{};
    Board board;
};

Sample random_sample(int number, std::mt19937& random) {
    while (true) {
        Sample sample{ending_men(number), {}, {}};
        sample.board.to_move = static_cast<Side>(random() % 2);
        bool apart = true;
        for (std::size_t i = 0; i < sample.men.count; ++i) {
            const Man man = sample.men.man[i];
            const auto square = static_cast<int>(man.kind == PAWN ? 8 + random() % 48 : random() % 64);
            apart &= at(sample.board, square) == EMPTY;
            put(sample.board, square, man_of(man.side, man.kind));
            sample.squares[i] = static_cast<u8>(square);
        }
        if (apart && !king_attacked(sample.board, other_side(sample.board.to_move)))
            return sample;
    }
}

u64 plain_perft(const Board& board, int depth) {
    u64 leaves = 0;
    for_each_move(board, [&](const Board& next) { leaves += depth == 1 ? 1 : plain_perft(next, depth - 1); });
    return leaves;
}

u64 engine_perft(int depth) {
    generate_legal_moves();
    u64 leaves = 0;
    for (const Move& move : move_list.current()) {
        make_move(&move);
        leaves += depth == 1 ? 1 : engine_perft(depth - 1);
        unmake_move(&move);
    }
    return leaves;
}

class TablemakerMoves : public EngineTest {};

// Deep enough that pawns are captured en passant and promote.
TEST_F(TablemakerMoves, ThePlainBoardMovesAsTheEngineDoes) {
    std::mt19937 random(17);
    for (const char* name : {"kpkp", "kppkp", "krpkp", "kqkr", "kbnkn", "kpk"})
        for (int round = 0; round < 60; ++round) {
            const Sample sample = random_sample(ending_by_name(name), random);
            set_up(fen(sample.board) + " 0 1");
            ASSERT_EQ(plain_perft(sample.board, 3), engine_perft(3)) << fen(sample.board);
        }
}

TEST_F(TablemakerMoves, QuickChecksAgreeWithSlowOnes) {
    std::mt19937 random(19);
    for (int number = 1; number < FIRST_SIX_MEN; ++number)
        for (int round = 0; round < 50; ++round) {
            const Sample sample = random_sample(number, random);
            const Side side = sample.board.to_move;
            ASSERT_EQ(in_check(sample.men, sample.squares, side), king_attacked(sample.board, side))
                << fen(sample.board);
        }
}

// What is reached by a quiet move can go back to where it came from, and nowhere else can it have come from.
TEST_F(TablemakerMoves, RetreatsAreQuietMovesBackwards) {
    std::mt19937 random(23);
    for (int round = 0; round < 4000; ++round) {
        const Sample sample = random_sample(FIRST_FOUR_MEN + static_cast<int>(random() % 100), random);
        for (std::size_t i = 0; i < sample.men.count; ++i) {
            const Man man = sample.men.man[i];
            const SquareSet others = occupied_squares(sample.men, sample.squares) & ~bit(sample.squares[i]);
            const int here = sample.squares[i];
            for (int there = 0; there < 64; ++there) {
                const bool pawn_can_stand = there / 8 != 0 && there / 8 != 7;
                if ((others & bit(there)) != 0 || (man.kind == PAWN && !pawn_can_stand))
                    continue;
                const bool reached = (quiet_targets(man, there, others | bit(there)) & bit(here)) != 0;
                const bool returns = (retreat_squares(man, here, others | bit(here)) & bit(there)) != 0;
                ASSERT_EQ(reached, returns) << fen(sample.board) << " " << here << " " << there;
            }
        }
    }
}

// Squares: kings e1 and e8, a white pawn, a black pawn.
TEST_F(TablemakerMoves, EnPassantNeedsANeighbourAndAFreePath) {
    constexpr int A5 = 32, B4 = 25, B5 = 33, C4 = 26, C7 = 50, H5 = 39, KING_E1 = 4, KING_E8 = 60,
                  KING_B6 = 41;
    const Men men = ending_men(ending_by_name("kpkp"));
    const struct {
        Squares squares;
        Side to_move;
        bool possible;
        const char* why;
    } cases[] = {
        {{KING_E1, KING_E8, A5, B5}, WHITE, true, "b7-b5 past the pawn on a5"},
        {{KING_E1, KING_E8, A5, B5}, BLACK, false, "a5 is no double step of White's"},
        {{KING_E1, KING_E8, A5, H5}, WHITE, false, "next to each other only round the edge of the board"},
        {{KING_B6, KING_E8, A5, B5}, WHITE, false, "a king stands on the way"},
        {{KING_E1, KING_E8, C4, B4}, BLACK, true, "c2-c4 past the pawn on b4"},
        {{KING_E1, KING_E8, C7, B5}, WHITE, false, "the pawns do not stand side by side"},
    };
    for (const auto& [squares, to_move, possible, why] : cases) {
        int found = 0;
        for_each_en_passant(men, squares, to_move, [&](int) { ++found; });
        EXPECT_EQ(found, possible ? 1 : 0) << why;
    }
}

}  // namespace
}  // namespace quelmar::tablemaker
