// Positions from text: what is read, what is refused; games and boards.
#include "board/consistency.h"
#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/setup.h"
#include "protocol/game.h"
#include "protocol/game_clock.h"
#include "protocol/move_text.h"
#include "protocol/protocol_state.h"
#include "protocol/root_moves.h"
#include "protocol/settings.h"
#include "support/engine.h"

namespace quelmar {
namespace {

using SetupText = EngineTest;
using MoveText = EngineTest;

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
    EXPECT_EQ(position.king_home, (Table<Square, 2>{E1, E8}));
    EXPECT_EQ(position.castle_rook_square, (Table<Square, 4>{H1, A1, H8, A8}));
    EXPECT_EQ(here.material_us, 5228);
    EXPECT_EQ(here.material_them, 5228);
    EXPECT_EQ(here.men_us, 16);
    EXPECT_EQ(here.pawns_them, 8);
    EXPECT_EQ(here.clock[BLACK].time_left_ms, time_control.base_ms);
    EXPECT_EQ(link_of(LIST_END).next, 0) << "the scratch entry behind the lists is not used";
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
        bool good = false;
        EXPECT_EQ(printed_by([&] { good = set_up_or_report(c.fen); }), c.message) << c.fen;
        EXPECT_EQ(good, c.message[0] == '\0') << c.fen;
        EXPECT_EQ(position.usable, good) << c.fen;
        build_root_moves();  // has nothing to read after a failure, and does not try
        EXPECT_EQ(root_moves[0].from != 0, good) << c.fen;
    }
}

TEST_F(SetupText, KingsAreNotOfferedForCapture) {
    set_up("4k3/8/8/8/8/8/8/4RK2 w -");
    build_root_moves();
    EXPECT_EQ(find_root_move("e1e8"), nullptr);
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

TEST_F(MoveText, NoMoveAndNoText) {
    EXPECT_EQ(move_text(Move{}), "-");
    build_root_moves();
    for (const char* text : {"", "\xff\x01zz"})
        EXPECT_EQ(find_root_move(text), nullptr);
    EXPECT_NE(find_root_move("g1f3\n"), nullptr);
    settings.piece_letters = "BS";  // too short a setting leaves letters out
    set_up("4k3/8/8/8/8/8/8/R3K3 w -");
    build_root_moves();
    EXPECT_EQ(san_text(*find_root_move("a1a2")), "a2");
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

}  // namespace
}  // namespace quelmar
