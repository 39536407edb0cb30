// The order of moves, the lists of the specialised generators, and the piece lists behind them.
#include "board/generate.h"
#include "board/make_move.h"
#include "board/move_list.h"
#include "board/move_text.h"
#include "board/position.h"
#include "board/setup.h"
#include "eval/evaluate.h"
#include "protocol/protocol_state.h"
#include "support/engine.h"

namespace quelmar {
namespace {

using Generate = EngineTest;

std::string listed(void (*generate)()) {
    std::string text;
    generate();
    for (const Move& move : move_list.current())
        text += (text.empty() ? "" : " ") + move_text(move);
    return text;
}

std::string piece_list(Side side) {
    std::string text;
    for (Square square = position.first_of(side); square != LIST_END; square = position.next_man(square))
        text += square_text(square);
    return text;
}

struct Case {
    const char* fen;
    const char* expected;
    const char* why;
};

TEST_F(Generate, StartPositionInListAndOffsetOrder) {
    const char* const expected =
        "b1a3 b1c3 g1f3 g1h3 a2a3 a2a4 b2b3 b2b4 c2c3 c2c4 d2d3 d2d4 e2e3 e2e4 f2f3 f2f4 "
        "g2g3 g2g4 h2h3 h2h4";
    EXPECT_EQ(listed(generate_moves), expected);
    EXPECT_EQ(listed(generate_legal_moves), expected);
    play("e2e4");
    EXPECT_EQ(listed(generate_moves),
              "a7a6 a7a5 b7b6 b7b5 c7c6 c7c5 d7d6 d7d5 e7e6 e7e5 f7f6 f7f5 g7g6 g7g5 h7h6 "
              "h7h5 b8c6 b8a6 g8h6 g8f6");
}

TEST_F(Generate, PseudoLegalOrder) {
    const Case cases[] = {
        {"7k/8/8/8/8/8/1p6/4K3 b -", "h8g8 h8h7 h8g7 b2b1Q b2b1R b2b1B b2b1N", "promotions queen first"},
        {"4k3/8/2p1p3/3P4/8/8/8/4K3 w -", "e1f1 e1d1 e1e2 e1d2 e1f2 d5e6 d5c6 d5d6",
         "White takes towards h first"},
        {"4k3/8/8/3p4/2P1P3/8/8/4K3 b -", "e8f8 e8d8 e8e7 e8f7 e8d7 d5c4 d5e4 d5d4",
         "Black takes towards a first"},
        {"7k/8/8/8/8/8/5P2/R3K2R w KQ",
         "e1f1 e1d1 e1e2 e1d2 a1b1 a1c1 a1d1 a1a2 a1a3 a1a4 a1a5 a1a6 a1a7 a1a8 h1g1 h1f1 h1h2 h1h3 h1h4 "
         "h1h5 h1h6 "
         "h1h7 h1h8 f2f3 f2f4 O-O O-O-O",
         "castlings last, short before long"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(listed(generate_moves), c.expected) << c.why;
    }
}

TEST_F(Generate, EnPassantOrderDiffersFromThatOfCaptures) {
    set_up("4k3/3p4/8/2P1P3/8/8/8/4K3 b -");
    play("d7d5");
    EXPECT_EQ(listed(generate_legal_moves), "e1f1 e1d1 e1e2 e1d2 e1f2 c5c6 e5e6 e5d6 c5d6");
    set_up("4k3/8/8/8/2p1p3/8/3P4/4K3 w -");
    play("d2d4");
    EXPECT_EQ(listed(generate_legal_moves), "e8f8 e8d8 e8e7 e8f7 e8d7 c4c3 e4e3 c4d3 e4d3");
}

TEST_F(Generate, Castling) {
    const Case cases[] = {
        {"7k/8/8/8/8/8/8/RK6 w Q", "O-O-O", "king passes only its own rook"},
        {"1r5k/8/8/8/8/8/8/RK6 w Q", "", "the king's start square is attacked"},
        {"3r3k/8/8/8/8/8/8/R3K3 w Q", "", "a square on the way is attacked"},
        {"1r5k/8/8/8/8/8/8/R3K3 w Q", "O-O-O", "only the rook passes an attacked square"},
        {"7k/8/8/8/8/8/8/q3K3 w Q", "", "the rook is gone"},
        {"7k/8/8/8/8/8/8/Rn2K3 w Q", "", "the rook's way is blocked"},
        {"7k/8/8/8/8/8/8/6KR w K", "O-O", "the king stays where it is"},
        {"7k/8/8/8/8/8/8/5KR1 w K", "O-O", "king and rook change places"},
        {"7k/8/8/8/8/8/3P4/4K2R w Q", "", "a right without its rook is dropped"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        std::string castlings;
        generate_legal_moves();
        for (const Move& move : move_list.current())
            castlings += move.flags != 0 ? move_text(move) : "";
        EXPECT_EQ(castlings, c.expected) << c.fen << " " << c.why;
    }
    // The castling rook shields the king from a rook behind it: only the legal list notices.
    set_up("7k/8/8/8/8/8/8/rR1K4 w Q");
    EXPECT_NE(listed(generate_moves).find("O-O-O"), std::string::npos);
    EXPECT_EQ(listed(generate_legal_moves).find("O-O-O"), std::string::npos);
}

TEST_F(Generate, Captures) {
    const Case cases[] = {
        {"4k3/8/3p4/4n3/8/8/4R3/4K3 w -", "", "a rook does not take a knight that a pawn defends"},
        {"4k3/8/8/4n3/8/8/4R3/4K3 w -", "e2e5", "an undefended knight is taken"},
        {"4k3/8/3p4/4r3/8/8/4R3/4K3 w -", "e2e5", "an equal man is always tried"},
        {"4k3/P7/8/8/8/8/8/4K3 w -", "a7a8Q", "a queen promotion, no other"},
        {"1n2k3/P7/8/8/8/8/8/4K3 w -", "a7b8Q a7a8Q", "captures before the push"},
        {"4k3/8/8/8/8/8/p7/1N2K3 b -", "a2b1Q a2a1Q", "the same for Black"},
        {"7k/8/2p1p3/3P4/8/8/8/7K w -", "d5e6 d5c6", "no pushes"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        evaluate();
        EXPECT_EQ(listed(generate_captures), c.expected) << c.fen << " " << c.why;
    }
    set_up("4k3/3p4/8/4P3/8/8/8/4K3 b -");
    play("d7d5");
    evaluate();
    EXPECT_EQ(listed(generate_captures), "") << "no en passant";
}

TEST_F(Generate, QuietChecks) {
    const Case cases[] = {
        {"4k3/8/8/8/8/4N3/8/K3R3 w -", "e3c4 e3g2 e3g4 e3c2 e3d5 e3f1 e3f5 e3d1",
         "a knight uncovers the rook"},
        {"4k3/8/8/8/8/8/8/K2R4 w -", "d1e1 d1d8", "direct checks of a rook"},
        {"4k3/8/8/8/8/8/4P3/K3R3 w -", "", "a pawn on the file of its rook uncovers nothing"},
        {"8/8/2k5/8/3P4/4K3/8/8 w -", "d4d5", "a pawn push checks"},
        {"8/8/8/2k5/8/8/1P6/4K3 w -", "b2b4", "a double step checks"},
        {"8/8/8/2k5/8/1p6/1P6/4K3 w -", "", "but not over a man"},
        {"8/8/8/8/4k3/8/8/2K1R3 b -", "", "a king gives no check by itself"},
        {"K7/8/8/8/8/2k5/8/b7 b -", "", "the bishop's line does not reach the king"},
        {"7K/8/8/8/3k4/8/8/b7 b -", "d4e4 d4c4 d4d5 d4d3 d4c5 d4e3", "a king leaves the line of its bishop"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(listed(generate_quiet_checks), c.expected) << c.fen << " " << c.why;
    }
}

TEST_F(Generate, Evasions) {
    const Case cases[] = {
        {"4k3/8/8/8/1b6/8/4PPPP/RN1QKBNR w -", "b1d2 b1c3 d1d2", "interpose on c3 and d2"},
        {"8/8/8/8/5k2/7b/4r3/4K3 w -", "e1d1 e1e2", "the king takes a bare rook"},
        {"4r2k/8/8/8/8/3n4/PPP5/3QK3 w -", "e1f1 e1d2", "two men check: only the king moves"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(listed(generate_evasions), c.expected) << c.fen << " " << c.why;
    }
    // A pawn that checks by its double step can be taken en passant.
    set_up("8/3p4/8/4P3/2K5/8/8/6k1 b -");
    play("d7d5");
    EXPECT_NE(listed(generate_evasions).find("e5d6"), std::string::npos);
}

TEST_F(Generate, PieceListOrderIsKept) {
    EXPECT_EQ(piece_list(WHITE), "e1a1b1c1d1f1g1h1a2b2c2d2e2f2g2h2");
    EXPECT_EQ(piece_list(BLACK), "e8a7b7c7d7e7f7g7h7a8b8c8d8f8g8h8");
    play("e2e4 d7d5");
    ASSERT_EQ(parse_move("e4d5"), 1);
    const Move capture = protocol_state.user_move;
    make_move(&capture);
    EXPECT_TRUE(piece_list(WHITE).ends_with("d5f2g2h2")) << "a man keeps its place when it moves";
    unmake_move(&capture);
    EXPECT_TRUE(piece_list(BLACK).starts_with("e8d5")) << "a man put back stands behind its king";
    // A castling that a generator tries sorts both lists.
    set_up("4k3/8/8/3p4/4P3/8/8/4K2R w K");
    play("e4d5 e8e7");
    EXPECT_EQ(piece_list(WHITE), "e1h1d5");
}

TEST_F(Generate, CastlingsMoveKingAndRook) {
    set_up("5k2/8/8/8/8/8/8/5KR1 w K");
    play("O-O");
    EXPECT_EQ(position.at(G1), WHITE_KING);
    EXPECT_EQ(position.at(F1), WHITE_ROOK);
    EXPECT_EQ(position.current().castle_lost, CASTLE_ANY);
    EXPECT_EQ(position.current().halfmove_clock, 0);
    const Move castling = position.previous().move;
    unmake_move(&castling);
    EXPECT_EQ(position.at(F1), WHITE_KING);
    EXPECT_EQ(position.at(G1), WHITE_ROOK);
    EXPECT_TRUE(position_is_consistent());

    // A rook that leaves its square and comes back has lost its right, a king both.
    set_up("r3k2r/8/8/8/8/8/8/R3K2R w KQkq");
    play("h1h2 e8e7 h2h1 e7e8");
    EXPECT_EQ(position.current().castle_lost, CASTLE_WHITE_SHORT | CASTLE_BLACK_SHORT | CASTLE_BLACK_LONG);
}

TEST_F(Generate, AnyPositionFitsTheMoveStack) {
    // More queens than any game has.
    for (const char* fen :
         {"QQQQQQQQ/Q6Q/Q6Q/Q2kq2Q/Q6Q/Q6Q/Q6Q/QQQKQQQQ w -", "QqQqQqQq/8/QqQqQqQq/8/QqQqQqQk/8/K7/8 w -",
          "PPPPPPPP/k7/8/8/8/8/7K/pppppppp b -"}) {
        set_up(fen);
        generate_moves();
        EXPECT_LT(move_list.current().size(), static_cast<std::size_t>(MAX_MOVES_IN_POSITION));
        build_root_moves();
    }
}

}  // namespace
}  // namespace quelmar
