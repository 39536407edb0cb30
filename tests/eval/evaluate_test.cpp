// The evaluation as a whole: symmetry, signature, boards that no game reaches.
#include "board/make_move.h"
#include "board/setup.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "eval/pawns.h"
#include "eval/random_positions.h"
#include "protocol/root_moves.h"
#include "support/engine.h"

#include <functional>

namespace quelmar {
namespace {

class Evaluation : public EngineTest {};

bool list_may_be_cut(const PawnEntry& pawns) {
    for (const SidePawns& side : pawns.sides) {
        if (side.isolated[3] + side.doubled[3] + side.isolated_rear[3] + side.backward[3] + side.passed[7] !=
            0)
            return true;
    }
    return false;
}

// The known asymmetries; what they do is tested by name elsewhere.
bool may_differ_mirrored(const std::string& fen) {
    constexpr Square H2 = square_at(7, 1), H7 = square_at(7, 6);
    set_up(mirrored_fen(fen));
    const CentreType mirrored_centre = pawn_entry().structure_type;
    set_up(fen);
    const PawnEntry& pawns = pawn_entry();
    const Square white_king = position.king_square(WHITE), black_king = position.king_square(BLACK);
    const auto rook_pawns = [&pawns](Side side) {
        return pawns.of(side).pawn_files == 1 || pawns.of(side).pawn_files == 128;
    };
    const bool knight_and_bishop = position.current().material_us + position.current().material_them == 832;
    return white_king == H2 || white_king == H7 || black_king == H2 || black_king == H7 ||
           pawns.structure_type != mirrored_centre || list_may_be_cut(pawns) || rook_pawns(WHITE) ||
           rook_pawns(BLACK) || knight_and_bishop;
}

int evaluate_mirrored(const std::string& fen) {
    set_up(mirrored_fen(fen));
    return evaluate();
}

// Compares positions until `wanted` of them have no known asymmetry.
void expect_symmetry(int wanted, const std::function<std::string()>& next) {
    while (wanted > 0) {
        const std::string fen = next();
        if (may_differ_mirrored(fen))
            continue;
        --wanted;
        playing_style = static_cast<Style>(wanted % 4);
        const int score = evaluate();
        ASSERT_EQ(evaluate_mirrored(fen), score) << fen << " style " << wanted % 4;
    }
}

TEST_F(Evaluation, ColoursAreAlike) {
    RandomPositions random(1);
    expect_symmetry(2000, [&random] { return random.middlegame(); });
    std::size_t ending = 0;
    expect_symmetry(2000,
                    [&] { return random.with_men(SPARSE_ENDINGS[++ending % std::size(SPARSE_ENDINGS)]); });
}

TEST_F(Evaluation, ScoresSurviveMakeAndUnmake) {
    RandomPositions random(2);
    for (int game = 0; game < 20; ++game) {
        set_up(START_FEN);
        for (int ply = 0; ply < 100; ++ply) {
            build_root_moves();
            int count = 0;
            while (root_moves[count].from != 0)
                ++count;
            if (count == 0)
                break;
            const Move move = root_moves[random.below(count)];
            const int before = evaluate();
            make_move(&move);
            evaluate();
            unmake_move(&move);
            ASSERT_EQ(evaluate(), before);
            make_move(&move);
        }
    }
}

// Scores and by-products of many random positions in all styles. When this fails, some rule or table entry
// has changed; if that was meant, renew the number and say why in the commit message.
TEST_F(Evaluation, Signature) {
    u64 signature = 14695981039346656037U;
    const auto mix = [&signature](int value) {
        signature = (signature ^ static_cast<u32>(value)) * 1099511628211U;
    };
    const auto mix_position = [&mix](const std::string& fen) {
        set_up(fen);
        mix(evaluate());
        find_threats();
        const PlyOutputs& out = outputs_at(0);
        for (const int value :
             {out.ply_material_placement, out.ply_king_danger[WHITE], out.ply_king_danger[BLACK],
              out.ply_passed_score[WHITE], out.ply_passed_score[BLACK], out.ply_eval})
            mix(value);
        const UndoRecord& here = position.current();
        for (int i = 0; i < 3; ++i) {
            mix(here.threat_value_us[i] != 0 ? here.threat_square_us[i] : 0);
            mix(here.threat_value_us[i]);
            mix(here.threat_value_them[i] != 0 ? here.threat_square_them[i] : 0);
            mix(here.threat_value_them[i]);
        }
    };
    RandomPositions random(3);
    for (int i = 0; i < 10000; ++i) {
        playing_style = static_cast<Style>(i % 4);
        mix_position(random.middlegame());
        for (const char* solved : {"P", "Rp", "RPr", "BP", "BN"})
            mix_position(random.with_men(solved));
        mix_position(
            random.with_men(SPARSE_ENDINGS[static_cast<std::size_t>(i) % std::size(SPARSE_ENDINGS)]));
        mix_position(random.with_men(std::string(static_cast<std::size_t>(random.below(8)), 'P') +
                                     std::string(static_cast<std::size_t>(random.below(8)), 'p')));
    }
    EXPECT_EQ(signature, 6784094777075730864U);
}

// Boards that no game reaches: crowds of anything, pawns on the first and last rank. The sanitizers judge.
TEST_F(Evaluation, AbsurdBoardsStayInside) {
    RandomPositions random(4);
    for (int i = 0; i < 500; ++i) {
        std::string crowd(64, '1');
        const std::string men = i % 3 == 0 ? "PpQq" : i % 3 == 1 ? "PpNnBbRrQq" : "PpBbN1111111";
        for (char& place : crowd)
            place = men[static_cast<std::size_t>(random.below(static_cast<int>(men.size())))];
        crowd[static_cast<std::size_t>(random.below(32))] = 'k';
        crowd[static_cast<std::size_t>(32 + random.below(32))] = 'K';
        for (std::size_t rank = 7; rank > 0; --rank)
            crowd.insert(8 * rank, "/");
        set_up(crowd + (i % 2 == 0 ? " w KQkq" : " b -"));
        evaluate();
        find_threats();
        for (const Square from : square_of_index) {
            if (is_man(position.at(from)))
                static_exchange(from, square_of_index[random.below(64)]);
        }
    }
}

}  // namespace
}  // namespace quelmar
