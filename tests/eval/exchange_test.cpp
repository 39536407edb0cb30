#include "board/position.h"
#include "eval/attack_map.h"
#include "eval/exchange.h"
#include "eval/square_tables.h"

#include <gtest/gtest.h>

namespace quelmar {
namespace {

TEST(ExchangeTable, HoldsEveryExchange) {
    build_exchange_table();
    for (Piece piece = EMPTY; piece < OFF_BOARD; ++piece) {
        for (int white = 0; white < 256; ++white) {
            for (int black = 0; black < 256; ++black)
                ASSERT_EQ(exchange_loss(piece, white, black), attack_byte_exchange(piece, white, black))
                    << "piece " << piece << " bytes " << white << ' ' << black;
        }
    }
}

}  // namespace
}  // namespace quelmar
