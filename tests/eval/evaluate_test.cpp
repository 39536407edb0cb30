// The evaluation as a whole: symmetry, signature, by-products, attack maps.
#include "board/make_move.h"
#include "board/setup.h"
#include "eval/attack_map.h"
#include "eval/attacks.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/ply_outputs.h"
#include "eval/random_positions.h"
#include "eval/terms.h"
#include "eval/threats.h"
#include "protocol/settings.h"

#include <functional>

namespace quelmar {
namespace {

class Evaluation : public EngineTest {};

constexpr Square at(int file, int rank) {  // 1..8 both
    return square_at(file - 1, rank - 1);
}

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
    constexpr Square H2 = at(8, 2), H7 = at(8, 7);
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
        settings.style = wanted % 4;
        const int score = evaluate();
        ASSERT_EQ(evaluate_mirrored(fen), score) << fen << " style " << settings.style;
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
            while (root_moves[static_cast<std::size_t>(count)].from != 0)
                ++count;
            if (count == 0)
                break;
            const Move move = root_moves[static_cast<std::size_t>(random.below(count))];
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
        for (std::size_t i = 0; i < 3; ++i) {
            mix(here.threat_value_us[i] != 0 ? here.threat_square_us[i] : 0);
            mix(here.threat_value_us[i]);
            mix(here.threat_value_them[i] != 0 ? here.threat_square_them[i] : 0);
            mix(here.threat_value_them[i]);
        }
    };
    RandomPositions random(3);
    for (int i = 0; i < 10000; ++i) {
        settings.style = i % 4;
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
                static_exchange(from, square_of_index[static_cast<std::size_t>(random.below(64))]);
        }
    }
}

TEST_F(Evaluation, OutputsForTheSearch) {
    set_up("4k3/8/8/8/8/8/8/4K3 b - -");
    EXPECT_EQ(evaluate(), 0);
    set_up("qr4k1/5ppp/8/8/8/P7/8/QR3K2 w - -");
    const int score = evaluate();
    const PlyOutputs& out = outputs_at(0);
    EXPECT_EQ(out.ply_eval, score);
    const UndoRecord& here = position.current();
    EXPECT_EQ(out.ply_material_placement,
              here.material_us - here.material_them + here.pst_us - here.pst_them);
    EXPECT_EQ(out.ply_passed_score[WHITE], 12 - 3) << "third rank, no rook behind";
    EXPECT_LT(out.ply_king_danger[WHITE], 0);
    set_up("4k3/8/8/8/8/8/8/QR2K3 w - -");
    evaluate();
    EXPECT_EQ(out.ply_king_danger[WHITE], 0) << "an ending";
    EXPECT_EQ(out.ply_passed_score[WHITE], 0);
}

TEST_F(Evaluation, AttackMaps) {
    set_up("4k3/8/8/2q5/1P6/B2P4/1Q6/B3K3 w - -");
    evaluate();
    struct ByteCase {
        Side side;
        Square square;
        int byte;
        const char* why;
    };
    const ByteCase CASES[] = {
        {WHITE, at(1, 5), ATTACK_PAWN + 1, "pawn b4"},
        {WHITE, at(3, 5), ATTACK_PAWN + ATTACK_MINOR + 2, "pawn, and the bishop behind it"},
        {WHITE, at(4, 6), 0, "not beyond the square the pawn attacks"},
        {WHITE, at(3, 3), ATTACK_QUEEN + 2, "queen, and the bishop through her as an x-ray"},
        {WHITE, at(8, 8), ATTACK_QUEEN + 2, "all the way"},
        {WHITE, at(2, 2), ATTACK_MINOR + 2, "both bishops guard her"},
        {WHITE, at(5, 4), ATTACK_PAWN + 1, "pawn d3"},
        {BLACK, at(2, 4), ATTACK_QUEEN + 1, "the queen attacks a pawn"},
        {BLACK, at(1, 3), 0, "but not behind it"},
        {BLACK, at(4, 8), ATTACK_KING + 1, "king"},
    };
    for (const ByteCase& c : CASES)
        EXPECT_EQ(attack_byte(c.side, c.square), c.byte) << c.why;
    set_up("4k3/8/8/3P4/2Q5/1R6/2R5/4K3 b - -");
    evaluate();
    EXPECT_EQ(attack_byte(WHITE, at(5, 6)), ATTACK_PAWN + ATTACK_QUEEN + 2) << "queen behind a pawn";
    EXPECT_EQ(attack_byte(WHITE, at(3, 8)), ATTACK_QUEEN + 2) << "rook behind the queen";
    EXPECT_EQ(attack_byte(WHITE, at(3, 1)), ATTACK_ROOK + ATTACK_QUEEN + 2) << "queen behind the rook";
}

TEST_F(Evaluation, EighthAttackerCarriesIntoThePawnBit) {
    set_up("k7/8/2N1N3/1N3N2/8/1N3N2/2N1N3/K7 w - -");
    evaluate();
    EXPECT_EQ(attack_byte(WHITE, at(4, 4)), ATTACK_MINOR + ATTACK_PAWN);
}

TEST_F(Evaluation, EstimateAfterAMove) {
    struct MoveCase {
        const char* fen;
        const char* move;
        int exact;  // what the position after the move has, for the mover, less what the estimate leaves out
        const char* why;
    };
    const MoveCase CASES[] = {
        {START_FEN, "g1f3", 0, "quiet"},
        {"4k3/8/8/3p4/4P3/8/8/4K3 w - -", "e4d5", 0, "capture"},
        {"4k3/P7/8/8/8/8/8/4K3 w - -", "a7a8q", QUEEN_VALUE - PAWN_VALUE,
         "the promoted man's value is not counted"},
        {"1r2k3/P7/8/8/8/8/8/4K3 w - -", "a7b8n", MINOR_VALUE - PAWN_VALUE, "promotion with capture"},
    };
    for (const MoveCase& c : CASES) {
        set_up(c.fen);
        build_root_moves();
        const Move* move = root_moves.data();
        while (move->from != 0 &&
               (move->to != at(c.move[2] - 'a' + 1, c.move[3] - '0') ||
                move->from != at(c.move[0] - 'a' + 1, c.move[1] - '0') ||
                (c.move[4] != 0 && UPPER_LETTERS[move->promotion] != c.move[4] - 'a' + 'A')))
            ++move;
        ASSERT_NE(move->from, 0) << c.move;
        const int estimate = material_placement_after_move(*move);
        make_move(move);
        evaluate();
        EXPECT_EQ(estimate, -outputs_at(position.search_ply).ply_material_placement - c.exact) << c.why;
    }
}

TEST_F(Evaluation, AttackedSquares) {
    struct AttackCase {
        const char* fen;
        Square square;
        Side attacker;
        bool attacked;
        const char* why;
    };
    const AttackCase CASES[] = {
        {"4k3/8/8/8/4P3/8/8/4K3 w", at(4, 5), WHITE, true, "white pawn upwards"},
        {"4k3/8/8/8/4P3/8/8/4K3 w", at(6, 5), WHITE, true, "both ways"},
        {"4k3/8/8/8/4P3/8/8/4K3 w", at(4, 3), WHITE, false, "not downwards"},
        {"4k3/8/8/8/4p3/8/8/4K3 w", at(4, 3), BLACK, true, "black pawn downwards"},
        {"4k3/8/8/8/4p3/8/8/4K3 w", at(4, 5), BLACK, false, "not upwards"},
        {"4k3/8/8/8/4n3/8/8/4K3 w", at(3, 3), BLACK, true, "knight"},
        {"4k3/8/8/8/4n3/8/8/4K3 w", at(3, 3), WHITE, false, "of the other side"},
        {"4k3/8/8/8/8/8/8/4K3 w", at(4, 2), WHITE, true, "king"},
        {"4k3/8/8/8/8/8/8/q3K3 w", at(5, 1), BLACK, true, "queen along a rank"},
        {"4k3/8/8/q7/8/8/8/4K3 w", at(5, 1), BLACK, true, "queen along a diagonal"},
        {"4k3/8/8/b7/8/2P5/8/4K3 w", at(5, 1), BLACK, false, "shut off"},
        {"4k3/8/8/r7/8/8/8/4K3 w", at(5, 1), BLACK, false, "a rook is no bishop"},
        {"4k3/8/8/4b3/8/8/8/4K3 w", at(5, 1), BLACK, false, "nor the other way"},
        {"4k3/8/8/4r3/8/8/8/4K3 w", at(5, 1), BLACK, true, "rook"},
    };
    for (const AttackCase& c : CASES) {
        set_up(c.fen);
        EXPECT_EQ(is_square_attacked(c.square, c.attacker), c.attacked) << c.fen << ' ' << c.why;
    }
    set_up("4k3/8/8/4r3/8/8/8/4K3 w");
    EXPECT_TRUE(in_check(WHITE));
    EXPECT_FALSE(in_check(BLACK));
}

}  // namespace
}  // namespace quelmar
