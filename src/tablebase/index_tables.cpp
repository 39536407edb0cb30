#include "tablebase/index_tables.h"

#include <algorithm>
#include <cstdlib>

namespace quelmar {
namespace {

constexpr bool is_pawn_square(int square) {
    return rank_of_index(square) > 0 && rank_of_index(square) < 7;
}

// A man of `kind` on `square` attacks `king` without anything between them.
bool touches(int kind, int square, int king) {
    const int files = file_of_index(king) - file_of_index(square),
              ranks = rank_of_index(king) - rank_of_index(square);
    const int far = std::max(std::abs(files), std::abs(ranks));
    switch (kind) {
    case PAWN:
        return ranks == 1 && std::abs(files) == 1;
    case KNIGHT:
        return std::abs(files * ranks) == 2;
    case BISHOP:
        return std::abs(files * ranks) == 1;
    case ROOK:
        return far == 1 && files * ranks == 0;
    case QUEEN:
        return far == 1;
    default:
        return false;  // FREE_PAWN
    }
}

IndexTables tables;
// By kinds, read as up to three digits in base 7 with FREE_PAWN as 1: see slot_of.
Table<Table<BaseTable, 343>, 2> base_tables;

int slot_of(const PlacedKinds& kinds) {
    int slot = 0;
    for (int i = 0; i < kinds.count; ++i)
        slot = slot * 7 + kinds.kind[i] + 1;
    return slot;
}

template <typename Table> auto& at(Table& table, int i, int j) {
    return table[i][j];
}

void fill_placement(int kind, int king) {
    u8 number = 0;
    for (int square = 0; square < 64; ++square) {
        const bool allowed =
            square != king && !touches(kind, square, king) && (kind > PAWN || is_pawn_square(square));
        at(tables.placement[kind], king, square) = allowed ? number++ : NOT_PLACEABLE;
    }
    at(tables.placement_count, kind, king) = number;
}

bool kings_apart(int a, int b) {
    return std::max(std::abs(file_of_index(a) - file_of_index(b)),
                    std::abs(rank_of_index(a) - rank_of_index(b))) > 1;
}

bool is_reference(Scheme scheme, int reference, int other) {
    if (scheme == Scheme::PAWNS)
        return file_of_index(reference) < 4;
    if (file_of_index(reference) >= 4 || rank_of_index(reference) > file_of_index(reference))
        return false;
    return rank_of_index(reference) < file_of_index(reference) ||
           rank_of_index(other) <= file_of_index(other);
}

void number_king_pairs(Scheme scheme) {
    u16 number = 0;
    for (int reference = 0; reference < 64; ++reference)
        for (int other = 0; other < 64; ++other) {
            const bool valid = kings_apart(reference, other) && is_reference(scheme, reference, other);
            at(tables.king_pairs[static_cast<int>(scheme)], reference, other) =
                valid ? number++ : INVALID_KING_PAIR;
        }
    assert(number == (scheme == Scheme::PAWNS ? PAWN_KING_PAIRS : PAWNLESS_KING_PAIRS));
}

// Ways to place the kinds beside one pair of kings; equal kinds are interchangeable.
u64 placements(const PlacedKinds& kinds, int own_king, int faced_king) {
    u64 ways = 1;
    for (int i = 0; i < kinds.count;) {
        int equal = 1;
        while (i + equal < kinds.count && kinds.kind[i + equal] == kinds.kind[i])
            ++equal;
        const int room = tables.room(kinds.kind[i], faced_king, own_king);
        ways *= choose(static_cast<u64>(room), equal);
        i += equal;
    }
    return ways;
}

void build_base_table(const PlacedKinds& kinds, Scheme scheme) {
    BaseTable& table = base_tables[static_cast<int>(scheme)][slot_of(kinds)];
    u64 total = 0;
    for (int own = 0; own < 64; ++own)
        for (int faced = 0; faced < 64; ++faced) {
            if (at(tables.king_pairs[static_cast<int>(scheme)], own, faced) == INVALID_KING_PAIR)
                continue;
            table.before.push_back(static_cast<u32>(total));
            total += placements(kinds, own, faced);
        }
    table.total = narrow<u32>(total);
}

// All combinations that extend `kinds` by men of equal or lower kind.
void build_base_tables(PlacedKinds kinds) {
    const int highest = kinds.count == 0 ? QUEEN : kinds.kind[kinds.count - 1u];
    ++kinds.count;
    for (int kind = FREE_PAWN; kind <= highest; ++kind) {
        kinds.kind[kinds.count - 1u] = static_cast<u8>(kind);
        build_base_table(kinds, Scheme::PAWNS);
        if (kind > PAWN)
            build_base_table(kinds, Scheme::PAWNLESS);
        if (kinds.count < 3)
            build_base_tables(kinds);
    }
}

}  // namespace

bool IndexTables::can_stand(int kind, int faced_king, int square) const {
    return at(placement[kind], faced_king, square) != NOT_PLACEABLE;
}

int IndexTables::room(int kind, int faced_king, int own_king) const {
    return at(placement_count, kind, faced_king) - (can_stand(kind, faced_king, own_king) ? 1 : 0);
}

void build_placement_tables() {
    static bool built = false;
    if (built)
        return;
    built = true;
    for (int kind = 0; kind < PLACEMENT_KINDS; ++kind)
        for (int king = 0; king < 64; ++king)
            fill_placement(kind, king);
    number_king_pairs(Scheme::PAWNLESS);
    number_king_pairs(Scheme::PAWNS);
    build_base_tables({});
}

const IndexTables& index_tables() {
    return tables;
}

const BaseTable& base_table(const PlacedKinds& kinds, Scheme scheme) {
    return base_tables[static_cast<int>(scheme)][slot_of(kinds)];
}

}  // namespace quelmar
