// Published counts of the legal move tree, by both generators, and a walk that checks at every node what the
// moves carry and what make and unmake keep up to date.
#include "board/attacks.h"
#include "board/check_maps.h"
#include "board/consistency.h"
#include "board/generate.h"
#include "board/hash_keys.h"
#include "board/make_move.h"
#include "board/perft.h"
#include "board/position.h"
#include "protocol/move_text.h"
#include "support/engine.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace quelmar {
namespace {

using Perft = EngineTest;

constexpr u64 MOST_LEAVES = 300'000;  // deeper counts are for the perft tool

void expect_published_counts(const std::string& file) {
    for (const std::string& line : data_lines(file)) {
        const std::string fen = line.substr(0, line.find(';'));
        set_up(fen);
        std::istringstream fields(line.substr(line.find(';')));
        for (std::string name; fields >> name;) {
            u64 leaves = 0;
            fields >> leaves;
            if (leaves > MOST_LEAVES)
                continue;
            const int depth = name.back() - '0';
            EXPECT_EQ(perft(depth, generate_legal_moves), leaves) << fen << name;
            EXPECT_EQ(perft(depth, generate_moves), leaves) << fen << name;
        }
    }
}

TEST_F(Perft, StandardPositions) {
    expect_published_counts("perft.epd");
}
TEST_F(Perft, Chess960Positions) {
    expect_published_counts("chess960_perft.epd");
}

// What has to be as before after a move was made and taken back; the order of the lists is not part of it.
struct Snapshot {
    decltype(position.board) board = position.board;
    Side side = position.side_to_move;
    int game_ply = position.game_ply, search_ply = position.search_ply;
    HashKey key = position.current().key;
    u8 castle_lost = position.current().castle_lost, ep_square = position.current().ep_square;

    bool operator==(const Snapshot&) const = default;
};

std::vector<PackedMove> sorted_moves(void (*generate)()) {
    std::vector<PackedMove> moves;
    generate();
    for (const Move& move : move_list.current())
        moves.push_back(pack_move(move));
    std::sort(moves.begin(), moves.end());
    return moves;
}

void expect_consistent_move(const Move& move) {
    const Side mover = position.side_to_move;
    const Snapshot before;
    const HashKey expected_key = key_after_packed_move(before.key, pack_move(move));
    const Move unpacked = unpack_move(pack_move(move));
    EXPECT_EQ(std::memcmp(&unpacked, &move, 6), 0) << move_text(move);

    make_move(&move);
    EXPECT_TRUE(position_is_consistent()) << move_text(move);
    EXPECT_EQ(position.current().key, expected_key) << move_text(move);
    const bool under_promotion = move.promotion != EMPTY && kind_of(move.promotion) != QUEEN;
    // A promotion may also check along the line the pawn has left, which its flag does not see.
    if (move.promotion == EMPTY && !in_check(mover)) {
        EXPECT_EQ(move.gives_check != 0, in_check(other_side(mover))) << move_text(move);
    }
    if (under_promotion) {
        EXPECT_EQ(move.gives_check, 0);
    }
    unmake_move(&move);
    EXPECT_TRUE(Snapshot() == before && position_is_consistent()) << move_text(move);
}

// Quiet checks are what the full generator marks as checks among the plain moves to empty squares. Promotions
// are compared by their squares only.
void expect_quiet_checks_match() {
    std::vector<std::pair<int, int>> marked, generated;
    generate_moves();
    for (const Move& move : move_list.current()) {
        if (move.gives_check != 0 && move.captured == EMPTY && move.flags == 0 && move.promotion == EMPTY)
            marked.emplace_back(move.from, move.to);
    }
    generate_quiet_checks();
    for (const Move& move : move_list.current()) {
        EXPECT_TRUE(move.gives_check == 1 && move.captured == EMPTY);
        if (move.promotion == EMPTY)
            generated.emplace_back(move.from, move.to);
    }
    std::sort(marked.begin(), marked.end());
    std::sort(generated.begin(), generated.end());
    EXPECT_EQ(generated, marked);
}

void walk(int depth) {
    if (in_check(position.side_to_move)) {
        EXPECT_EQ(sorted_moves(generate_evasions), sorted_moves(generate_legal_moves));
    }
    expect_quiet_checks_match();
    generate_moves();
    const std::vector<Move> moves(move_list.current().begin(), move_list.current().end());
    for (const Move& move : moves) {
        expect_consistent_move(move);
        make_move(&move);
        if (depth > 1 && !in_check(other_side(position.side_to_move)))
            walk(depth - 1);
        unmake_move(&move);
        if (::testing::Test::HasFailure())
            return;
    }
}

TEST_F(Perft, EveryNodeIsConsistent) {
    for (const char* file : {"perft.epd", "chess960_perft.epd"}) {
        for (const std::string& line : data_lines(file)) {
            set_up(line.substr(0, line.find(';')));
            walk(2);
            ASSERT_FALSE(HasFailure()) << line;
        }
    }
    // Bishops and rooks behind pawns that capture en passant, checks by castling, promotions with check.
    for (const char* fen :
         {"8/8/8/KPp4r/8/8/8/4k3 b -", "5k2/8/8/8/8/8/8/4K2R w K", "3k4/8/8/8/8/8/8/R3K3 w Q",
          "r3k3/1P6/8/8/8/8/8/4K3 w -", "4k3/8/8/2pP4/8/8/B7/K7 b -", "7k/8/8/8/1b6/8/3P4/4K3 w -",
          "k7/8/8/1r6/8/3p4/2P5/1K6 w -", "4k3/2p5/8/1P1P4/8/8/4R3/4K3 b -"}) {
        set_up(fen);
        walk(4);
        ASSERT_FALSE(HasFailure()) << fen;
    }
}

TEST_F(Perft, NullMoveSwapsAndRestores) {
    play("e2e4 e7e5 g1f3");
    const Snapshot before;
    const UndoRecord here = position.current();
    make_null_move();
    const UndoRecord& after = position.current();
    EXPECT_TRUE(position_is_consistent());
    EXPECT_EQ(after.key, here.key ^ zobrist_side);
    EXPECT_EQ(after.pawn_key, here.pawn_key);
    EXPECT_EQ(after.ep_square, 0);
    EXPECT_EQ(after.castle_lost, here.castle_lost);
    EXPECT_EQ(after.halfmove_clock, here.halfmove_clock + 1);
    EXPECT_TRUE(move_list.start_of(position.search_ply) == move_list.start_of(position.search_ply - 1));
    unmake_null_move();
    EXPECT_TRUE(Snapshot() == before);
}

}  // namespace
}  // namespace quelmar
