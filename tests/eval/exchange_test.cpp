#include "board/position.h"
#include "eval/attack_map.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/random_positions.h"
#include "eval/threats.h"
#include "support/engine.h"

#include <algorithm>

namespace quelmar {
namespace {

class Exchange : public EngineTest {};

Square square_of(const char* name) {
    return square_at(name[0] - 'a', name[1] - '1');
}

TEST_F(Exchange, TableHoldsEveryExchange) {
    for (Piece piece = EMPTY; piece < OFF_BOARD; ++piece) {
        for (int white = 0; white < 256; ++white) {
            for (int black = 0; black < 256; ++black)
                ASSERT_EQ(exchange_loss(piece, white, black), attack_byte_exchange(piece, white, black))
                    << "piece " << piece << " bytes " << white << ' ' << black;
        }
    }
}

// The same by minimax over lists of capturing values, for bytes that real attackers leave: kinds[] from the
// cheapest, count >= number of kinds, the surplus being of the cheapest kind.
int minimax(int standing, const std::vector<int>& attackers, std::size_t first,
            const std::vector<int>& defenders, std::size_t next) {
    if (first == attackers.size())
        return 0;
    return std::max(0, standing - minimax(attackers[first], defenders, next, attackers, first + 1));
}

struct ByteAndValues {
    int byte;
    std::vector<int> values;
};

std::vector<ByteAndValues> plain_bytes() {
    constexpr int VALUES[] = {1, 3, 5, 10, 100};
    std::vector<ByteAndValues> bytes = {{0, {}}};
    for (int kinds = 1; kinds < 32; ++kinds) {
        std::vector<int> values;
        for (int kind = 0; kind < 5; ++kind) {
            if ((kinds >> kind & 1) != 0)
                values.push_back(VALUES[kind]);
        }
        for (; values.size() <= 7; values.insert(values.begin(), values.front())) {
            const int byte = kinds << ATTACK_KIND_SHIFT | static_cast<int>(values.size());
            if (byte != 255)  // counts as one attacker
                bytes.push_back({byte, values});
        }
    }
    return bytes;
}

TEST_F(Exchange, TableIsMinimax) {
    constexpr int PIECE_VALUES[] = {0, 1, 3, 3, 5, 10, 100};
    const std::vector<ByteAndValues> bytes = plain_bytes();
    for (const ByteAndValues& white : bytes) {
        for (const ByteAndValues& black : bytes) {
            for (Piece kind = PAWN; kind <= KING; ++kind) {
                ASSERT_EQ(exchange_loss(kind, white.byte, black.byte),
                          minimax(PIECE_VALUES[kind], black.values, 0, white.values, 0))
                    << kind << ' ' << white.byte << ' ' << black.byte;
                ASSERT_EQ(exchange_loss(man_of(BLACK, kind), white.byte, black.byte),
                          minimax(PIECE_VALUES[kind], white.values, 0, black.values, 0))
                    << kind << ' ' << white.byte << ' ' << black.byte;
            }
        }
    }
}

TEST_F(Exchange, OddBytes) {
    EXPECT_EQ(exchange_loss(WHITE_KNIGHT, 0, 9), 3);
    EXPECT_EQ(exchange_loss(WHITE_KNIGHT, 9, 9), 2);
    EXPECT_EQ(exchange_loss(WHITE_KNIGHT, 9, 0), 0);
    EXPECT_EQ(exchange_loss(BLACK_QUEEN, 1, 1), 0) << "x-rays count as queens";
    EXPECT_EQ(exchange_loss(BLACK_KING, 1, 1), 90);
    EXPECT_EQ(exchange_loss(WHITE_PAWN, 0, 24), 0) << "eight knights carry to a count of 0";
    EXPECT_EQ(exchange_loss(WHITE_QUEEN, 255, 255), 9) << "255 holds one pawn and nothing behind it";
}

TEST_F(Exchange, PlayedOut) {
    struct ExchangeCase {
        const char* fen;
        const char *from, *to;
        int score;
        const char* why;
    };
    const ExchangeCase CASES[] = {
        {"4k3/8/8/3q4/4P3/8/8/4K3 w", "e4", "d5", 1248, "undefended queen"},
        {"4k3/8/4p3/3p4/8/8/8/3QK3 w", "d1", "d5", 128 - 1248, "queen for a pawn"},
        {"4k3/8/4p3/8/8/2N5/8/4K3 w", "c3", "d5", -416, "empty square before a pawn"},
        {"4k3/8/8/8/8/2N5/8/4K3 w", "c3", "d5", 0, "empty and safe"},
        {"3rk3/8/8/3p4/8/8/3R4/3RK3 w", "d2", "d5", 128 - 646 + 646, "rook behind rook"},
        {"3rk3/3r4/8/3p4/8/8/3R4/3RK3 w", "d2", "d5", 128 - 646, "two against two"},
        {"4k3/8/2n5/4p3/3P4/8/1B6/4K3 w", "d4", "e5", 128, "the knight may not take back"},
        {"4k3/8/8/3p4/4P3/5B2/8/4K3 b", "d5", "e4", 128 - 128, "bishop behind the capturing pawn's square"},
        {"4k3/8/3p4/4p3/3P4/8/1B6/4K3 w", "d4", "e5", 128, "the bishop joins behind the pawn"},
        {"4k3/8/4p3/3p4/8/3Q4/3R4/4K3 w", "d3", "d5", 128 - 1248 + 128, "the queen goes first all the same"},
        {"4k3/8/5p2/4p3/8/2PN4/1B6/4K3 w", "d3", "e5", 128 - 416, "a pawn two squares away stops the bishop"},
        {"4k3/3q4/8/3r4/8/8/8/3RK3 w", "d1", "d5", 646 - 646, "queen behind"},
        {"4k3/8/5b2/3r4/4q3/8/8/3RK3 w", "d1", "d5", 0, "queen beside"},
        {"8/8/2k5/3r4/8/8/8/3RK3 w", "d1", "d5", 0, "king takes back"},
        {"8/8/2k5/3r4/8/8/3R4/3RK3 w", "d2", "d5", 646, "but not into a second rook"},
        {"8/2k5/8/3r4/8/8/8/3RK3 w", "d1", "d5", 646, "a king two squares away does not"},
        {"4k3/8/8/3r4/4K3/8/8/3R4 w", "d1", "d5", 646, "nobody"},
        {"4k3/2p5/3p4/4P3/8/8/7B/4K3 b", "d6", "e5", 0, "black to move, defended pawn"},
        {"4k3/2p5/3n4/4P3/8/8/8/4K3 w", "e5", "d6", 416 - 128, "c7 takes back"},
        {"4k3/2p5/3n4/4P3/5B2/8/8/4K3 w", "e5", "d6", 416, "which the bishop behind e5 punishes"},
        {"2r1k3/2n5/8/3p4/8/8/8/2R1K2Q w", "h1", "d5", 128 - 1248,
         "a knight defends, whatever stands behind"},
        {"4k3/8/8/3p2P1/2N1b3/8/6Q1/4K3 b", "d5", "c4", 416,
         "what a move uncovers behind itself does not matter"},
    };
    for (const ExchangeCase& c : CASES) {
        set_up(c.fen);
        const auto board = position.board;
        EXPECT_EQ(static_exchange(square_of(c.from), square_of(c.to)), c.score) << c.fen << ' ' << c.why;
        EXPECT_EQ(position.board, board) << "left as it was";
    }
}

// A pinned-down check of the bounds: the exchange is the minimax value of the two capture lists for every
// capture in random positions, when only men in direct contact take part.
TEST_F(Exchange, KnightsAndPawnsAgreeWithMinimax) {
    RandomPositions random(5);
    for (int i = 0; i < 2000; ++i) {
        set_up(random.with_men("NNNNPPPPPnnnnppppp"));
        for (const Square to : square_of_index) {
            std::array<std::vector<int>, 2> takers;
            std::vector<Square> origins;
            for (const Side side : {WHITE, BLACK}) {
                auto& list = takers[static_cast<std::size_t>(side)];
                for (Square from = position.first_of(side); from != LIST_END;
                     from = position.next_man(from)) {
                    const int files = std::abs(file_of(from) - file_of(to)),
                              ranks = (side == WHITE ? 1 : -1) * (rank_of(to) - rank_of(from));
                    const Piece kind = kind_of(position.at(from));
                    if ((kind == PAWN && files == 1 && ranks == 1) ||
                        (kind == KNIGHT && files * std::abs(ranks) == 2)) {
                        list.push_back(kind == PAWN ? 128 : 416);
                        if (side == position.side_to_move)
                            origins.push_back(from);
                    } else if (kind == KING && std::max(files, std::abs(ranks)) == 1) {
                        list.push_back(30000);
                    }
                }
                std::sort(list.begin(), list.end());
            }
            const Piece target = position.at(to);
            if (target == EMPTY || side_of(target) == position.side_to_move || origins.empty() ||
                kind_of(target) == KING)
                continue;
            const int victim = kind_of(target) == PAWN ? 128 : 416;
            const Square from =
                origins[static_cast<std::size_t>(random.below(static_cast<int>(origins.size())))];
            const int mover = kind_of(position.at(from)) == PAWN ? 128 : 416;
            auto own = takers[static_cast<std::size_t>(position.side_to_move)];
            own.erase(std::find(own.begin(), own.end(), mover));
            const auto& theirs = takers[static_cast<std::size_t>(other_side(position.side_to_move))];
            EXPECT_EQ(static_exchange(from, to), victim - minimax(mover, theirs, 0, own, 0));
        }
    }
}

TEST_F(Exchange, Threats) {
    struct ThreatCase {
        const char* fen;
        const char *us, *them;  // squares and values, worst first
        const char* why;
    };
    const ThreatCase CASES[] = {
        {"4k3/8/8/8/8/8/8/4K3 w", "", "", "nothing there"},
        {"4k3/8/8/3r4/4P3/8/8/4K3 w", "", "d5=5 ", "a rook before a pawn"},
        {"4k3/8/8/3r4/4P3/8/8/4K3 b", "d5=5 ", "", "seen from the other side"},
        {"4k3/8/4p3/3r4/4P3/8/8/4K3 w", "", "d5=4 ", "defended: rook for pawn"},
        {"4k3/8/1n3b1q/P3P1P1/8/8/8/4K3 w", "e5=1 g5=1 ", "h6=10 b6=3 f6=3 ",
         "largest first, of equals the earlier"},
        {"4k3/8/n1r1b2q/1P1P2P1/8/8/8/4K3 w", "d5=1 g5=1 ", "h6=10 c6=5 a6=2 ", "three of four"},
        {"4k3/8/8/8/8/8/4q3/4K3 w", "", "e2=10 ", "a king can take"},
        {"4k3/8/8/8/8/5n2/8/4K3 w", "", "", "a king in check is no threatened man"},
    };
    const auto text_of = [](const std::array<u8, 3>& squares, const std::array<u8, 3>& values) {
        std::string text;
        for (std::size_t i = 0; i < 3 && values[i] != 0; ++i) {
            text += static_cast<char>('a' + file_of(squares[i]));
            text += static_cast<char>('1' + rank_of(squares[i]));
            text += '=' + std::to_string(values[i]) + ' ';
        }
        return text;
    };
    for (const ThreatCase& c : CASES) {
        SCOPED_TRACE(std::string(c.fen) + ": " + c.why);
        set_up(c.fen);
        evaluate();
        find_threats();
        const UndoRecord& here = position.current();
        EXPECT_EQ(text_of(here.threat_square_us, here.threat_value_us), c.us);
        EXPECT_EQ(text_of(here.threat_square_them, here.threat_value_them), c.them);
    }
}

}  // namespace
}  // namespace quelmar
