// Positions from text: what is read, what is refused; texts of moves and boards.
#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "board/position.h"
#include "board/san.h"
#include "board/setup.h"
#include "eval/attacks.h"
#include "protocol/clocks.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "support/engine.h"

namespace quelmar {
namespace {

using SetupText = EngineTest;
using MoveText = EngineTest;
using San = EngineTest;

template <typename Action> std::string printed_by(Action action) {
    ::testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

TEST_F(SetupText, RandomNumbersAndKeysAreFixed) {
    EXPECT_EQ(zobrist_side, 0x4890D6A4039B11BFULL);
    EXPECT_EQ(piece_key(WHITE_PAWN, 0), 0xA7E3A10437539B8AULL);
    EXPECT_EQ(piece_key(EMPTY, 100), 0U);
    const HashKey white_to_move = compute_key();
    position.side_to_move = BLACK;
    EXPECT_EQ(compute_key(), white_to_move ^ zobrist_side);
}

TEST_F(SetupText, StartPosition) {
    const UndoRecord& here = position.current();
    EXPECT_EQ(here.castle_lost, 0);
    EXPECT_EQ(position.king_home, (std::array<Square, 2>{E1, E8}));
    EXPECT_EQ(position.castle_rook_square, (std::array<Square, 4>{H1, A1, H8, A8}));
    EXPECT_EQ(here.material_us, 5228);
    EXPECT_EQ(here.material_them, 5228);
    EXPECT_EQ(here.men_us, 16);
    EXPECT_EQ(here.pawns_them, 8);
    EXPECT_EQ(here.clock[BLACK].time_left_ms, time_control.base_ms);
    EXPECT_EQ(link_of(LIST_END).next, 0) << "the scratch entry behind the lists is not used";
}

TEST_F(SetupText, CastlingGeometry) {
    struct Case {
        const char* fen;
        int lost;
        std::array<Square, 4> rooks;  // 0 where the right is lost
    };
    const Case cases[] = {
        {"bqnbrkrn/pppppppp/8/8/8/8/PPPPPPPP/BQNBRKRN w KQkq - 0 1", 0, {G1, E1, G8, E8}},
        {"4k3/8/8/8/8/8/8/R5KR w KQ", 12, {H1, A1, 0, 0}},
        {"4k3/8/8/8/8/8/8/1R1RK3 w KQ", 13, {0, D1, 0, 0}},
        {"4k3/8/8/8/8/8/8/R3K2R w HAha bm Qd5;", 12, {H1, A1, 0, 0}},
        {"1r2k3/8/8/8/8/8/8/RR2K1RR w GBb - 0 1", 4, {G1, B1, 0, B8}},
        {"1r2k3/8/8/8/8/8/8/RR2K1RR w KAk - 0 1", 12, {G1, A1, 0, 0}},
        {"1r2k3/8/8/8/8/8/8/4K2R w Hbm", 15, {0, 0, 0, 0}},
        {"1r2k3/8/8/8/4K2R/8/8/8 w Hb", 7, {0, 0, 0, B8}},
        {"r3k2r/8/8/8/8/8/8/R3K2R b Kq e3 bm Qk;", 6, {H1, 0, 0, A8}},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        EXPECT_EQ(position.current().castle_lost, c.lost) << c.fen;
        for (std::size_t i = 0; i < 4; ++i) {
            if (c.rooks[i] != 0) {
                EXPECT_EQ(position.castle_rook_square[i], c.rooks[i]) << c.fen;
            }
        }
        EXPECT_EQ(position.current().ep_square, 0) << c.fen;
    }
}

TEST_F(SetupText, BadTextIsRefused) {
    struct Case {
        const char* fen;
        const char* message;  // "" when the text is good
    };
    const Case cases[] = {
        {"8/8/8/8/8/8/8/8", "Error in EPD line1\n"},
        {"", "Error in EPD line1\n"},
        {"4k3/8/8/8/8/8/8/4K3", "Error in EPD line1\n"},
        {"4k3/8/8/8/8/8/8/4K3 x", "Error in EPD line3\n"},
        {"4k3/8/8/8/8/8/8/4K3 ", "Error in EPD line3\n"},
        {"4k3/8/8/8/8/8/8/4K3 W -", ""},
        {"4k3/8/8/8/8/8/8/4K3;b -", ""},
        {"4k/8/8/8/8///4K b", ""},
        {"4k3/8/8/8/8/8/8/4X3 w -", "Error in EPD line2\n"},
        {"4k4/8/8/8/8/8/8/4K3 w -", "Error in EPD line2\n"},
        {"4k3p/8/8/8/8/8/8/4K3 w -", "Error in EPD line2\n"},
        {"9/8/8/8/8/8/8/4K3 w -", "Error in EPD line2\n"},
        {"ppppppppp/8/8/8/8/8/8/4K3 w -", "Error in EPD line2\n"},
        {"4k3/8/8/8/8/8/8/8 w -", "Error in EPD line2\n"},
        {"4k3/8/8/8/8/8/8/KK6 w -", "Error in EPD line2\n"},
    };
    for (const Case& c : cases) {
        int result = 0;
        EXPECT_EQ(printed_by([&] { result = parse_fen(c.fen); }), c.message) << c.fen;
        EXPECT_EQ(result, c.message[0] == '\0' ? 0 : 1) << c.fen;
        EXPECT_EQ(position.usable, result == 0) << c.fen;
        build_root_moves();  // has nothing to read after a failure, and does not try
        EXPECT_EQ(root_moves[0].from != 0, result == 0) << c.fen;
    }
}

TEST_F(SetupText, KingsAreNotOfferedForCapture) {
    set_up("4k3/8/8/8/8/8/8/4RK2 w -");
    build_root_moves();
    for (const Move* move = root_moves.data(); move->from != 0; ++move)
        EXPECT_EQ(move->captured, EMPTY);
}

TEST_F(SetupText, MoveClocksAndEnPassantSquare) {
    play("e2e4");
    EXPECT_EQ(position.current().ep_square, square_at(4, 2));
    EXPECT_EQ(position.current().halfmove_clock, 0);
    play("g8f6 b1c3");
    EXPECT_EQ(position.current().ep_square, 0);
    EXPECT_EQ(position.current().halfmove_clock, 2);
    EXPECT_EQ(root_side(), position.side_to_move) << "the search starts at the current position";
    position.current().halfmove_clock = 255;
    play("b8c6");
    EXPECT_EQ(position.current().halfmove_clock, 255) << "the clock stays at its end";
}

TEST_F(SetupText, GamesMayBeLongerThanTheStack) {
    const char* const shuffle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    constexpr int PLIES = 3000;
    for (int ply = 0; ply < PLIES; ++ply) {
        make_room_on_stack();
        play(shuffle[ply % 4]);
    }
    EXPECT_EQ(position.game_ply + position.dropped_plies, PLIES);
    EXPECT_LT(position.game_ply, POSITION_STACK_SIZE - SEARCH_HEADROOM);
    EXPECT_TRUE(position_is_consistent());
    EXPECT_EQ(position.current().key, position.back(4).key);
}

TEST_F(MoveText, WrittenAndRead) {
    struct Case {
        const char* fen;
        const char* text;
        const char* expected;  // "" when the text names no legal move
        bool uci;
    };
    const Case cases[] = {
        {START_FEN, "g1f3", "g1f3", false},
        {START_FEN, "g1f3\n", "g1f3", false},
        {START_FEN, "e2e4x", "e2e4", false},
        {START_FEN, "e2e5", "", false},
        {START_FEN, "e2", "", false},
        {START_FEN, "", "", false},
        {START_FEN, "O-O", "", false},
        {START_FEN, "\xff\x01zz", "", false},
        {START_FEN, "e2q2", "", false},
        {"8/4P2k/8/8/8/8/8/K7 w -", "e7e8", "", false},
        {"8/4P2k/8/8/8/8/8/K7 w -", "e7e8N", "e7e8N", false},
        {"8/4P2k/8/8/8/8/8/K7 w -", "e7e8Q", "e7e8q", true},
        {"8/8/8/8/8/7k/1p6/K7 b -", "b2b1n", "b2b1N", false},
        {"4k3/8/8/8/8/8/8/RK6 w Q", "O-O-O", "O-O-O", false},
        {"4k3/8/8/8/8/8/8/RK6 w Q", "b1c1", "b1c1", false},
        {"4k3/8/8/8/8/8/8/R3K2R w KQ", "e1g1", "O-O", true},
        {"4k3/8/8/8/8/8/8/R3K2R w KQ", "e1c1", "O-O-O", true},
        {"4k3/8/8/8/8/8/8/R3K2R w KQ", "0-0", "", true},
        {"r3k3/8/8/8/8/8/8/4K3 b q", "O-O-O", "O-O-O", false},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        build_root_moves();
        protocol_state.uci_mode = c.uci;
        int found = 0;
        const std::string output = printed_by([&] { found = parse_move(c.text); });
        EXPECT_EQ(found, c.expected[0] != '\0') << c.fen << " " << c.text;
        EXPECT_EQ(found ? move_text(protocol_state.user_move) : "", c.expected) << c.fen << " " << c.text;
        EXPECT_EQ(output.starts_with("Legal moves:\n"), found == 0) << c.text;
    }
    protocol_state.uci_mode = false;
    EXPECT_EQ(move_text(Move{}), "-");
    protocol_state.uci_mode = true;
    EXPECT_EQ(move_text(Move{}), "0000");
}

TEST_F(MoveText, ListingAfterAnUnknownMove) {
    set_up("8/8/8/8/8/k7/p7/K7 w -");
    build_root_moves();
    EXPECT_EQ(printed_by([] { parse_move("a1b1"); }).substr(0, 48),
              "Legal moves:\n+---+---+---+---+---+---+---+---+\n|");
    set_up(START_FEN);
    build_root_moves();
    const std::string text = printed_by([] { parse_move("e2e5"); });
    EXPECT_NE(text.find("\n|=R=|=N=|=B=|=Q=|=K=|=B=|=N=|=R=|\n"), std::string::npos);
    EXPECT_NE(text.find("\n|   | . |   | . |   | . |   | . |\n"), std::string::npos);
    EXPECT_NE(text.find("\n| R | N | B | Q | K | B | N | R |\n"), std::string::npos);
    char key[32];
    std::snprintf(key, sizeof key, "Hashkey: %llx\n",
                  static_cast<unsigned long long>(position.current().key));
    EXPECT_TRUE(text.ends_with(key));
    EXPECT_EQ(printed_by([] { print_coded_move(12 | 28 << 7); }), "e2e4");
}

TEST_F(San, Disambiguation) {
    struct Case {
        const char* fen;
        const char* move;
        const char* expected;
    };
    const Case cases[] = {
        {"4k3/8/8/8/8/5N2/8/1N2K3 w -", "b1d2", "Nbd2"},  {"4k3/8/8/8/8/5N2/3p4/1N2K3 w -", "b1d2", "Nbxd2"},
        {"4k3/8/8/3R4/8/8/8/K2R4 w -", "d1d3", "R1d3"},   {"4k3/8/8/3R4/8/3p4/8/K2R4 w -", "d5d3", "R5xd3"},
        {"4k3/8/8/8/8/8/8/R3K2r w -", "a1a2", "*"},       {"4k3/8/4r3/8/8/8/4R3/R3K3 w Q", "a1a2", "Ra2"},
        {"4k2n/6P1/8/8/8/8/8/4K3 w -", "g7h8R", "gxh8R"}, {"4k3/6P1/8/8/8/8/8/4K3 w -", "g7g8N", "g8N"},
        {"r3k3/8/8/8/8/8/8/4K3 b q", "O-O-O", "O-O-O"},   {"4k3/8/8/8/8/8/4P3/4K3 w -", "e2e4", "e4"},
        {"3qk3/8/8/3q3q/8/8/8/K7 b -", "d5f7", "Qdf7"},
    };
    for (const Case& c : cases) {
        set_up(c.fen);
        build_root_moves();
        Move move;
        if (std::string(c.expected) == "*") {
            move.from = A1;
            move.to = 80;
            move.piece = WHITE_ROOK;
        } else {
            ASSERT_EQ(parse_move(c.move), 1) << c.fen;
            move = protocol_state.user_move;
        }
        EXPECT_EQ(san_text(move), c.expected) << c.fen;
    }
    settings.piece_letters = "BS";  // too short a setting leaves letters out
    set_up("4k3/8/8/8/8/8/8/R3K3 w -");
    build_root_moves();
    ASSERT_EQ(parse_move("a1a2"), 1);
    EXPECT_EQ(san_text(protocol_state.user_move), "a2");
}

TEST_F(San, EnPassant) {
    set_up("4k3/3p4/8/4P3/8/8/8/4K3 b -");
    play("d7d5");
    ASSERT_EQ(parse_move("e5d6"), 1);
    EXPECT_EQ(san_text(protocol_state.user_move), "exd6");
}

}  // namespace
}  // namespace quelmar
