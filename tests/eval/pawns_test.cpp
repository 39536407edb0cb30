// The classification of pawns.
#include "board/position.h"
#include "eval/pawns.h"
#include "eval/random_positions.h"
#include "eval/terms.h"

namespace quelmar {
namespace {

class Pawns : public EngineTest {};

template <std::size_t SIZE> std::string text_of(const std::array<u8, SIZE>& list) {
    std::string text;
    for (const Square square : list) {
        if (square == 0)
            break;
        text += (text.empty() ? "" : " ");
        text += static_cast<char>('a' + file_of(square));
        text += static_cast<char>('1' + rank_of(square));
    }
    return text;
}

TEST_F(Pawns, Lists) {
    struct ListCase {
        const char* fen;
        Side side;
        const char *isolated, *doubled, *isolated_rear, *backward, *passed;
        const char* why;
    };
    const ListCase CASES[] = {
        {"4k3/8/8/8/8/8/8/4K3 w", WHITE, "", "", "", "", "", "no pawns"},
        {"4k3/pp6/8/8/8/8/PP6/4K3 w", WHITE, "", "", "", "", "", "nothing wrong"},
        {"4k3/8/8/P7/P7/P7/8/4K3 w", WHITE, "a5", "a4 a5", "a3 a4", "", "a3 a4 a5", "three on a file"},
        {"4k3/8/1p6/8/P7/8/8/4K3 w", WHITE, "a4", "", "", "", "", "stopped from the next file"},
        {"4k3/8/p7/8/P7/8/8/4K3 w", BLACK, "a6", "", "", "", "", "and from its own"},
        {"4k3/8/8/4p3/2P5/3P4/8/4K3 w", WHITE, "", "", "", "d3", "c4", "backward"},
        {"4k3/8/8/4p3/8/3P4/2P5/4K3 w", WHITE, "", "", "", "", "c2", "c2 supports"},
        {"4k3/8/8/4p3/8/2PP4/8/4K3 w", WHITE, "", "", "", "", "c3", "c3 beside it supports"},
        {"4k3/8/4p3/8/2P5/3P4/8/4K3 w", WHITE, "", "", "", "", "c4", "c4 supports one square on"},
        {"4k3/8/4p3/2P5/8/3P4/8/4K3 w", WHITE, "", "", "", "d3", "c5", "c5 does not"},
        {"4k3/4p3/2P5/8/3P4/8/8/4K3 w", WHITE, "", "", "", "d4", "c6",
         "held two squares on, on the fourth rank"},
        {"4k3/8/8/8/P1P1P1P1/8/P1P1P1P1/4K3 w", WHITE, "a4 c4 e4 g4", "a4 c4 e4 g4", "a2 c2 e2 g2", "",
         "a2 c2 e2 g2 a4 c4 e4 g4", "full lists"},
    };
    for (const ListCase& c : CASES) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        const SidePawns& pawns = pawn_entry().of(c.side);
        EXPECT_EQ(text_of(pawns.isolated), c.isolated);
        EXPECT_EQ(text_of(pawns.doubled), c.doubled);
        EXPECT_EQ(text_of(pawns.isolated_rear), c.isolated_rear);
        EXPECT_EQ(text_of(pawns.backward), c.backward);
        EXPECT_EQ(text_of(pawns.passed), c.passed);
    }
}

// Five doubled pawns: the list has room for four, the count of weak pawns knows all.
TEST_F(Pawns, ListsAreCutTheCountIsNot) {
    set_up("4k3/8/8/PPP5/PPP5/8/P7/4K3 w");
    const SidePawns& pawns = pawn_entry().of(WHITE);
    EXPECT_EQ(text_of(pawns.doubled), "a4 a5 b5 c5");
    EXPECT_EQ(pawns.weak_count_penalty, 30) << "seven passed pawns alone are more than the table knows";
    set_up("4k3/ppp5/8/PP6/PP6/P7/8/4K3 w");
    EXPECT_EQ(pawn_entry().of(WHITE).weak_count_penalty, 5) << "a4, a5 and b5 doubled";
}

TEST_F(Pawns, Centre) {
    struct CentreCase {
        const char* fen;
        CentreType type;
        const char* why;
    };
    const CentreCase CASES[] = {
        {"4k3/8/8/8/8/8/3P4/4K3 w", CENTRE_OPEN, "one half-file"},
        {"4k3/8/8/3P4/8/8/3P4/4K3 w", CENTRE_OPEN, "one half-file with two pawns"},
        {"4k3/8/8/4p3/3P4/8/8/4K3 w", CENTRE_LEVER, "d4 and e5"},
        {"4k3/8/8/3p4/4P3/8/8/4K3 w", CENTRE_LEVER, "e4 and d5"},
        {"4k3/8/8/3pp3/3PP3/8/8/4K3 w", CENTRE_LEVER, "before blocked files"},
        {"4k3/8/4p3/3pP3/3P4/8/8/4K3 w", CENTRE_CLOSED, "both files blocked"},
        {"4k3/3pp3/8/8/8/8/3PP3/4K3 w", CENTRE_FULL, "all four, apart"},
        {"4k3/4p3/8/3p4/3P4/8/4P3/4K3 w", CENTRE_BLOCKED, "d-file blocked"},
        {"4k3/3p4/8/4p3/4P3/8/3P4/4K3 w", CENTRE_BLOCKED, "e-file blocked"},
        {"4k3/3p4/8/8/8/8/3P4/4K3 w", CENTRE_HALF_OPEN, "two, apart"},
        {"4k3/8/8/3p4/3P4/8/8/4K3 w", CENTRE_BLOCKED, "two, face to face"},
        {"4k3/8/8/4p3/4P3/8/8/4K3 w", CENTRE_BLOCKED, "on the e-file"},
        {"4k3/3p4/3P4/8/8/8/4P3/4K3 w", CENTRE_BLOCKED, "on the seventh rank"},
    };
    for (const CentreCase& c : CASES) {
        set_up(c.fen);
        EXPECT_EQ(pawn_entry().structure_type, c.type) << c.fen << ' ' << c.why;
    }
}

TEST_F(Pawns, CountsAndStorms) {
    set_up("4k3/8/7P/6P1/8/8/P2P4/4K3 w");
    const SidePawns& pawns = pawn_entry().of(WHITE);
    EXPECT_EQ(pawns.dark_pawns, 3);
    EXPECT_EQ(pawns.central_dark, 1);
    EXPECT_EQ(pawns.light_pawns, 1);
    EXPECT_EQ(pawns.central_light, 0);
    EXPECT_EQ(pawns.lowest_file, 0);
    EXPECT_EQ(pawns.highest_file, 7);
    EXPECT_EQ(pawns.pawn_files, 1 + 8 + 64 + 128);
    EXPECT_EQ(pawns.storm_king_side, 8 + 6 - 1);
    EXPECT_EQ(pawns.storm_queen_side, -5 - 3);
    set_up("4k3/8/8/8/8/8/PP5P/4K3 w");
    EXPECT_EQ(pawn_entry().of(WHITE).storm_queen_side, 2 * (-5 - 3)) << "-5 / 2 rounds down";
    set_up("4k3/8/8/8/8/8/8/4K3 w - -");
    EXPECT_EQ(pawn_entry().of(WHITE).pawn_files, 0);
}

}  // namespace
}  // namespace quelmar
