#include "board/hash_keys.h"

#include "board/position.h"

namespace quelmar {

Table<Table<HashKey, BOARD_SIZE>, 13> zobrist_piece_square;
HashKey zobrist_side;
Table<Table<u32, BOARD_SIZE>, 2> pawn_zobrist;

namespace {

// An additive lagged Fibonacci generator, x(n) = x(n-24) + x(n-55) modulo 2^32.
constexpr int LONG_LAG = 55, FIRST_J = 23, FIRST_K = 54;

// clang-format off
constexpr Table<u32, LONG_LAG> random_seed_table = {
    0x5414D5F4, 0xB3935330, 0xD0773E27, 0xAC62A182, 0x5DB20C92, 0xC1E618AC, 0xD003926A,
    0x171FA3B3, 0x9AD12101, 0x762172C1, 0xBC5D9DC3, 0x07B72A70, 0x6E5AC890, 0xF7BE54D1,
    0x0D6332FA, 0x56BA8FBE, 0xEBA585EC, 0x571421C5, 0x96B3C079, 0x12EB9B92, 0xC07C0978,
    0x0700C5BD, 0x31A43513, 0x74EBA4AA, 0x4EC55DB5, 0x2C91C2E9, 0x208771F6, 0x304EE204,
    0x1E004673, 0xF3AC22F9, 0xA8561FEB, 0xDED13435, 0xD03E7513, 0xDAE66BC2, 0x01C20BE1,
    0x46638997, 0xFB26CE62, 0x01F87FC3, 0xC0016099, 0x44429270, 0xB04F4481, 0xF31B8AD7,
    0x86DD7A46, 0x03E72091, 0x96A22589, 0x74DCB7D4, 0x12D0FC03, 0x474A16E8, 0x2FF5717C,
    0x54BDED92, 0x783A9487, 0xE767978C, 0x3052D5CD, 0x16ECA191, 0x8EAF6D15,
};
// clang-format on

Table<u32, LONG_LAG> random_state = random_seed_table;
int random_j = FIRST_J, random_k = FIRST_K;

u32 random32() {
    u32& slot = random_state[random_k];
    slot += random_state[random_j];
    random_j = random_j == 0 ? LONG_LAG - 1 : random_j - 1;
    random_k = random_k == 0 ? LONG_LAG - 1 : random_k - 1;
    return slot;
}

// Two draws, the first in the low half.
u64 random64() {
    const u64 low = random32();
    const u64 high = random32();
    return high << 32 | low;
}

}  // namespace

// The order fixes which draw lands where.
void init_hash_keys() {
    zobrist_side = random64();
    for (int code = 1; code < zobrist_piece_square.size(); ++code) {
        for (HashKey& key : zobrist_piece_square[code])
            key = random64();
    }
    for (auto& colour : pawn_zobrist) {
        for (u32& key : colour)
            key = random32();
    }
}

HashKey compute_key() {
    HashKey key = position.side_to_move == BLACK ? zobrist_side : 0;
    for (u8 square : square_of_index)
        key ^= piece_key(position.at(square), square);
    return key;
}

u32 compute_pawn_key() {
    u32 key = 0;
    for (u8 square : square_of_index) {
        if (is_pawn(position.at(square)))
            key ^= pawn_zobrist[side_of(position.at(square))][square];
    }
    return key;
}

}  // namespace quelmar
