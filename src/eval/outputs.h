// What an evaluation leaves for the search: the attack maps and the outputs of its ply.
//
// There are two attack maps, one byte per square and colour.
// Bits 0-2 count the attackers, bits 3-7 say their kinds. An x-ray attack counts but sets no kind. An eighth
// attacker carries into bit 3; nothing guards against it.
//
// A map is kept as eight sets, one per bit of its bytes, so that a man's attacks are counted on all their
// squares at once and a question about one bit is a question about a set.
#pragma once

#include "board/square_set.h"
#include "board/types.h"
#include "search/score.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace quelmar {

inline constexpr int ATTACK_COUNT = 7;  // mask
inline constexpr int ATTACK_PAWN = 8, ATTACK_MINOR = 16, ATTACK_ROOK = 32, ATTACK_QUEEN = 64,
                     ATTACK_KING = 128;
inline constexpr int ATTACK_XRAY = 0;
inline constexpr int ATTACK_KIND_SHIFT = 3;

struct AttackMap {
    // One set per bit of a byte, bit 0 first.
    alignas(16) Table<SquareSet, 8> bits{};
    SquareSet attacked = 0;  // the squares whose byte is not 0

    // The squares that a kind bears on, and those that the king alone bears on.
    SquareSet pawn() const { return bits[3]; }
    SquareSet minor() const { return bits[4]; }
    SquareSet rook() const { return bits[5]; }
    SquareSet queen() const { return bits[6]; }
    SquareSet king() const { return bits[7]; }
    SquareSet king_alone() const {
        return king() & bits[0] & ~(bits[1] | bits[2] | pawn() | minor() | rook() | queen());
    }

    // The squares whose count is not 0, and those where it is 1.
    SquareSet counted() const { return bits[0] | bits[1] | bits[2]; }
    SquareSet counted_once() const { return bits[0] & ~(bits[1] | bits[2]); }

    int count_on(Square square) const;
    int byte_on(Square square) const;
    void set_byte(Square square, int byte);
};

// [WHITE] and [BLACK]; written by evaluate() only.
inline Table<AttackMap, 2> attack_map;

inline const AttackMap& attacks_of(Side side) {
    return attack_map[side];
}

// The bit of a playing square in a set, as a number.
inline int bit_at(SquareSet set, int index) {
    return static_cast<int>(set >> index & 1);
}

inline int AttackMap::count_on(Square square) const {
    return byte_on(square) & ATTACK_COUNT;
}

inline int AttackMap::byte_on(Square square) const {
    const int index = index_of(square);
    int byte = 0;
    for (int bit = 0; bit < bits.size(); ++bit)
        byte |= bit_at(bits[bit], index) << bit;
    return byte;
}

inline int attack_byte(Side side, Square square) {
    return attacks_of(side).byte_on(square);
}

inline void AttackMap::set_byte(Square square, int byte) {
    for (SquareSet& set : bits) {
        set = (byte & 1) != 0 ? set | set_of(square) : set & ~set_of(square);
        byte >>= 1;
    }
}

// Two bytes of a square in one number, as the exchange table is indexed: that of the side which captures
// there first.
constexpr int attack_pair(int attackers, int defenders) {
    return attackers << 8 | defenders;
}

#ifdef __SSE2__
// Eight words that are negative where the set of that bit has the square; `to_sign` shifts its bit to the
// top.
inline __m128i bits_of_byte(const AttackMap& map, __m128i to_sign) {
    const auto high_halves = [&](const SquareSet* sets) {
        const __m128i lower = _mm_sll_epi64(_mm_load_si128(reinterpret_cast<const __m128i*>(sets)), to_sign);
        const __m128i upper =
            _mm_sll_epi64(_mm_load_si128(reinterpret_cast<const __m128i*>(sets + 2)), to_sign);
        return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(lower), _mm_castsi128_ps(upper), 0xDD));
    };
    return _mm_packs_epi32(high_halves(&map.bits[0]), high_halves(&map.bits[4]));
}

template <Side Attacker> int attack_pair_on(Square square) {
    const __m128i to_sign = _mm_cvtsi32_si128(63 - index_of(square));
    return _mm_movemask_epi8(_mm_packs_epi16(bits_of_byte(attacks_of(other_side(Attacker)), to_sign),
                                             bits_of_byte(attacks_of(Attacker), to_sign)));
}
#else
template <Side Attacker> int attack_pair_on(Square square) {
    return attack_pair(attack_byte(Attacker, square), attack_byte(other_side(Attacker), square));
}
#endif

// Values stay until the next evaluation at that ply, and the search reads some of them before it evaluates a
// node itself.
struct PlyOutputs {
    int ply_material_placement = 0;    // material and placement of the side to move minus the other's
    Table<int, 2> ply_king_danger{};   // by colour, zero or negative, 128ths of a pawn
    Table<int, 2> ply_passed_score{};  // by colour
    int ply_eval = 0;                  // the score returned
};

// Indexed by search_ply. Written by evaluate() only.
inline Table<PlyOutputs, PLY_RECORDS> ply_outputs;

inline PlyOutputs& outputs_at(int ply) {
    return ply_outputs[ply];
}

}  // namespace quelmar
