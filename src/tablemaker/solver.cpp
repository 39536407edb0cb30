#include "tablemaker/solver.h"

#include "tablebase/catalogue.h"
#include "tablemaker/error.h"
#include "tablemaker/men.h"
#include "tablemaker/values.h"

#include <algorithm>

namespace quelmar::tablemaker {

namespace {

constexpr u64 CHUNK = 1 << 15;

u8 load(const std::atomic<u8>& place) {
    return place.load(std::memory_order_relaxed);
}

void store(std::atomic<u8>& place, u8 value) {
    place.store(value, std::memory_order_relaxed);
}

}  // namespace

Solver::Solver(TableStore& tables, const Men& men, const Workers& workers, Progress& progress)
    : men_(men), numbering_(men), conversions_(tables, men), workers_(workers), progress_(progress),
      pawns_face_(men.has_pawn(WHITE) && men.has_pawn(BLACK)) {
    for (SideValues& side : sides_) {
        side.value = Values(numbering_.size());
        side.conversion = Values(numbering_.size());
    }
}

void Solver::solve() {
    progress_.show("positions");
    for (const Side side : {WHITE, BLACK})
        mark_illegal(side);
    if (pawns_face_)
        for (const Side side : {WHITE, BLACK})
            list_en_passant(side);
    progress_.show("captures and promotions");
    for (const Side side : {WHITE, BLACK}) {
        look_at_all(side);
        look_at_en_passant(side);
    }
    u64 found = 1;
    for (int ply = 1; found != 0 || ply <= longest_conversion_; ++ply) {
        if (ply > DEEPEST_WIN + 1) {
            // The losses just found are one move deeper than an entry can tell. In kppkp there are seven, no
            // win rests on them, and readers know them.
            if (ending_name(men_, WHITE) == ending(ENDING_KPPKP).name)
                break;
            throw TablemakerError("a mate takes longer than a table entry can tell");
        }
        progress_.show("ply " + std::to_string(ply) + ", " + std::to_string(found) + " new");
        found = 0;
        for (const Side side : {WHITE, BLACK})
            found += pass(side, ply) + pass_en_passant(side, ply);
    }
}

void Solver::mark_illegal(Side side) {
    workers_.share(numbering_.size(), CHUNK, [&](u64 first, u64 last) {
        for (u64 number = first; number < last; ++number) {
            Squares squares{};
            if (!numbering_.squares_of(static_cast<u32>(number), squares) ||
                in_check(men_, squares, other_side(side)))
                store(at(side).value[number], ILLEGAL);
        }
    });
}

void Solver::list_en_passant(Side side) {
    EnPassantList& list = at(side).en_passant;
    for (u32 number = 0; number < numbering_.size(); ++number) {
        Squares squares{};
        if (load(at(side).value[number]) == ILLEGAL)
            continue;
        numbering_.squares_of(number, squares);
        for_each_en_passant(men_, squares, side, [&](int victim) {
            list.keys.push_back(u64{number} * 64 + static_cast<u64>(victim));
        });
    }
    std::sort(list.keys.begin(), list.keys.end());
    list.value = Values(list.keys.size());
    list.conversion = Values(list.keys.size());
}

void Solver::look_at_all(Side side) {
    workers_.share(numbering_.size(), CHUNK, [&](u64 first, u64 last) {
        for (u64 number = first; number < last; ++number) {
            if (load(at(side).value[number]) == ILLEGAL)
                continue;
            Squares squares{};
            numbering_.squares_of(static_cast<u32>(number), squares);
            look_at(side, squares, static_cast<u32>(number));
        }
    });
}

void Solver::look_at(Side side, const Squares& squares, u32 number) {
    const u8 conversion = conversions_.best(squares, side);
    note_conversion(at(side).conversion[number], conversion);
    if (conversion == OPEN && in_check(men_, squares, side) && !has_quiet_move(side, squares, number))
        store(at(side).value[number], value_of_plies(0));
}

// A stalemate or mate that only the capture en passant lifts needs no care here: the conversion decides.
void Solver::look_at_en_passant(Side side) {
    EnPassantList& list = at(side).en_passant;
    for (std::size_t i = 0; i < list.keys.size(); ++i) {
        const auto number = static_cast<u32>(list.keys[i] / 64);
        Squares squares{};
        numbering_.squares_of(number, squares);
        const u8 capture = conversions_.best_en_passant(squares, side, static_cast<int>(list.keys[i] % 64));
        note_conversion(list.conversion[i], better_conversion(capture, load(at(side).conversion[number])));
        if (capture == OPEN)
            store(list.value[i], load(at(side).value[number]));
    }
}

void Solver::note_conversion(std::atomic<u8>& place, u8 conversion) {
    store(place, conversion);
    if (conversion == OPEN || conversion == HOLDS_DRAW)
        return;
    int longest = longest_conversion_;
    while (conversion - 1 > longest && !longest_conversion_.compare_exchange_weak(longest, conversion - 1)) {
    }
}

bool Solver::has_quiet_move(Side side, const Squares& squares, u32 number) const {
    const SquareSet occupied = occupied_squares(men_, squares);
    for (std::size_t i = 0; i < men_.count; ++i) {
        if (men_.man[i].side != side)
            continue;
        for (const int to : indices_of(quiet_targets(men_.man[i], squares[i], occupied)))
            if (value_after(side, squares, number, i, to) != ILLEGAL)
                return true;
    }
    return false;
}

u8 Solver::value_after(Side mover, const Squares& squares, u32 number, std::size_t man, int to) const {
    const SideValues& theirs = at(other_side(mover));
    const u32 next = numbering_.after(number, squares, man, to);
    if (next == NOWHERE)
        return ILLEGAL;
    if (pawns_face_ && opens_en_passant(men_, squares, man, squares[man], to) &&
        load(theirs.value[next]) != ILLEGAL)
        return load(theirs.en_passant.value[find_en_passant(theirs.en_passant, next, to)]);
    return load(theirs.value[next]);
}

std::size_t Solver::find_en_passant(const EnPassantList& list, u32 number, int victim) {
    const u64 key = u64{number} * 64 + static_cast<u64>(victim);
    return static_cast<std::size_t>(std::lower_bound(list.keys.begin(), list.keys.end(), key) -
                                    list.keys.begin());
}

// Finds the positions with `side` to move that are decided in exactly `ply` plies; returns how many.
u64 Solver::pass(Side side, int ply) {
    const SideValues& theirs = at(other_side(side));
    SideValues& ours = at(side);
    const u8 sought = value_of_plies(ply - 1), now = value_of_plies(ply);
    std::atomic<u64> found{0};
    workers_.share(numbering_.size(), CHUNK, [&](u64 first, u64 last) {
        u64 count = 0;
        for (u64 i = first; i < last; ++i) {
            const auto number = static_cast<u32>(i);
            Squares squares{};
            if (load(theirs.value[i]) == sought) {
                numbering_.squares_of(number, squares);
                count += expand(side, squares, number, ply);
            }
            if (load(ours.conversion[i]) == now && load(ours.value[i]) == OPEN) {
                numbering_.squares_of(number, squares);
                count += settle(side, squares, number, {ours.value[i], ours.conversion[i]}, ply) ? 1 : 0;
            }
        }
        found += count;
    });
    return found;
}

u64 Solver::pass_en_passant(Side side, int ply) {
    const EnPassantList& theirs = at(other_side(side)).en_passant;
    EnPassantList& ours = at(side).en_passant;
    u64 found = 0;
    Squares squares{};
    for (std::size_t i = 0; i < theirs.keys.size(); ++i)
        if (load(theirs.value[i]) == value_of_plies(ply - 1)) {
            numbering_.squares_of(static_cast<u32>(theirs.keys[i] / 64), squares);
            found += expand_en_passant(side, squares, static_cast<int>(theirs.keys[i] % 64), ply);
        }
    for (std::size_t i = 0; i < ours.keys.size(); ++i)
        if (load(ours.conversion[i]) == value_of_plies(ply) && load(ours.value[i]) == OPEN) {
            const auto number = static_cast<u32>(ours.keys[i] / 64);
            numbering_.squares_of(number, squares);
            found += settle(side, squares, number, {ours.value[i], ours.conversion[i]}, ply) ? 1 : 0;
        }
    return found;
}

// Tells all positions from which a quiet move of `side` leads to this one.
u64 Solver::expand(Side side, const Squares& squares, u32 number, int ply) {
    const SquareSet occupied = occupied_squares(men_, squares);
    const SideValues& ours = at(side);
    u64 found = 0;
    for (std::size_t i = 0; i < men_.count; ++i) {
        if (men_.man[i].side != side)
            continue;
        for (const int from : indices_of(retreat_squares(men_.man[i], squares[i], occupied))) {
            const u32 before = numbering_.after(number, squares, i, from);
            if (before == NOWHERE || (!pawns_face_ && load(ours.value[before]) != OPEN && i >= 2) ||
                (pawns_face_ && opens_en_passant(men_, squares, i, from, squares[i])))
                continue;
            Squares origin = squares;
            origin[i] = static_cast<u8>(from);
            found += arrive(side, origin, ply);
        }
    }
    return found;
}

// The same for a position with an en-passant right: only the double step of the pawn on `victim` leads there.
u64 Solver::expand_en_passant(Side side, const Squares& squares, int victim, int ply) {
    Squares origin = squares;
    *std::find(origin.begin() + 2, origin.end(), victim) = static_cast<u8>(victim - 2 * pawn_step(side));
    return arrive(side, origin, ply);
}

u64 Solver::arrive(Side side, Squares squares, int ply) {
    const u32 number = numbering_.normalise(squares);
    u64 found = arrive_at(side, squares, number, ply);
    if (numbering_.two_faced(squares)) {
        const u32 reflected = numbering_.reflect(squares);
        found += arrive_at(side, squares, reflected, ply);
    }
    return found;
}

u64 Solver::arrive_at(Side side, const Squares& squares, u32 number, int ply) {
    SideValues& ours = at(side);
    if (load(ours.value[number]) == ILLEGAL)
        return 0;
    u64 found = settle(side, squares, number, {ours.value[number], ours.conversion[number]}, ply) ? 1 : 0;
    if (!pawns_face_)
        return found;
    EnPassantList& list = ours.en_passant;
    for_each_en_passant(men_, squares, side, [&](int victim) {
        const std::size_t i = find_en_passant(list, number, victim);
        found += settle(side, squares, number, {list.value[i], list.conversion[i]}, ply) ? 1 : 0;
    });
    return found;
}

// Decides an open position if `ply` is its distance: in odd plies the caller has found a winning move, in
// even ones all moves must be seen to lose.
bool Solver::settle(Side side, const Squares& squares, u32 number, const Entry& entry, int ply) {
    if (load(entry.value) != OPEN)
        return false;
    const bool wins = ply % 2 == 1;
    if (!wins) {
        // A conversion that does not lose, or loses later than this ply, is a better move.
        const u8 conversion = load(entry.conversion);
        if (conversion != OPEN && (!is_loss(conversion) || conversion > value_of_plies(ply)))
            return false;
        if (!all_moves_lose(side, squares, number))
            return false;
    }
    store(entry.value, value_of_plies(wins ? ply : std::min(ply, DEEPEST_LOSS)));
    return true;
}

bool Solver::all_moves_lose(Side side, const Squares& squares, u32 number) const {
    const SquareSet occupied = occupied_squares(men_, squares);
    for (std::size_t i = 0; i < men_.count; ++i) {
        if (men_.man[i].side != side)
            continue;
        for (const int to : indices_of(quiet_targets(men_.man[i], squares[i], occupied))) {
            const u8 theirs = value_after(side, squares, number, i, to);
            if (theirs != ILLEGAL && !is_win(theirs))
                return false;
        }
    }
    return true;
}

}  // namespace quelmar::tablemaker
