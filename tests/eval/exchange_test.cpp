#include "board/position.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "eval/random_positions.h"
#include "support/engine.h"

#include <algorithm>

namespace quelmar {
namespace {

class Exchange : public EngineTest {};

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

// What every man would gain on every square of many random positions. When this fails, the order or the value
// of some exchange has changed.
TEST_F(Exchange, Signature) {
    u64 signature = 14695981039346656037U;
    RandomPositions random(5);
    for (int i = 0; i < 2000; ++i) {
        set_up(random.middlegame());
        for (const Square from : square_of_index) {
            const Square to = square_of_index[random.below(64)];
            if (is_man(position.at(from)) && kind_of(position.at(to)) != KING)
                signature = (signature ^ static_cast<u32>(static_exchange(from, to))) * 1099511628211U;
        }
    }
    EXPECT_EQ(signature, 6110322081685514115U);
}

}  // namespace
}  // namespace quelmar
