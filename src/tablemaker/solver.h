// Retrograde analysis: the distance to mate of every position of one ending.
//
// First every position is looked at once: it is marked illegal, or mate, and the best of its captures and
// promotions is noted from the smaller tables. Then follows one pass per ply. In an odd ply every position
// from which a move leads to one just found lost is won, and so is every position whose best conversion wins
// in this very ply. In an even ply the positions before those just found won are tried: a position is lost
// when each of its moves leads to a win for the other side. So a value is final when it is written and the
// distances are exact: the shortest win, the longest defence. What is still open at the end is a draw.
//
// A position in which a pawn can be captured en passant differs from the one without that right. There are
// few of them, so they are kept apart in sorted lists; each is reached by a double step only.
#pragma once

#include "tablemaker/conversions.h"
#include "tablemaker/numbering.h"
#include "tablemaker/progress.h"
#include "tablemaker/workers.h"

#include <atomic>

namespace quelmar::tablemaker {

class Solver {
public:
    Solver(TableStore& store, const Men& men, const Workers& workers, Progress& progress);

    // Computes everything; called once. Throws TablemakerError if a mate takes longer than a table byte can
    // tell.
    void solve();

    const Numbering& numbering() const { return numbering_; }

    // After solve(): the value of a number for the side to move; ILLEGAL where there is no position.
    u8 value(Side side, u32 number) const { return at(side).value[number].load(std::memory_order_relaxed); }

    // After solve(): calls f(squares, square of the pawn that can be captured, value) for each position with
    // an en-passant right.
    template <typename F> void for_each_en_passant_position(Side side, const F& f) const {
        const EnPassantList& list = at(side).en_passant;
        for (std::size_t i = 0; i < list.keys.size(); ++i) {
            Squares squares{};
            numbering_.squares_of(static_cast<u32>(list.keys[i] / 64), squares);
            f(squares, static_cast<int>(list.keys[i] % 64), list.value[i].load(std::memory_order_relaxed));
        }
    }

private:
    using Values = std::vector<std::atomic<u8>>;

    // Positions with an en-passant right: number * 64 + square of the pawn, ascending.
    struct EnPassantList {
        std::vector<u64> keys;
        Values value, conversion;
    };
    struct SideValues {
        Values value, conversion;
        EnPassantList en_passant;
    };
    // A place where a value is kept and what is needed to decide about it.
    struct Entry {
        std::atomic<u8>& value;
        const std::atomic<u8>& conversion;
    };

    SideValues& at(Side side) { return sides_[side]; }
    const SideValues& at(Side side) const { return sides_[side]; }

    void mark_illegal(Side side);
    void list_en_passant(Side side);
    void look_at_all(Side side);
    void look_at(Side side, const Squares& squares, u32 number);
    void look_at_en_passant(Side side);
    void note_conversion(std::atomic<u8>& place, u8 conversion);
    bool has_quiet_move(Side side, const Squares& squares, u32 number) const;

    u64 pass(Side side, int ply);
    u64 pass_en_passant(Side side, int ply);
    u64 expand(Side side, const Squares& squares, u32 number, int ply);
    u64 expand_en_passant(Side side, const Squares& squares, int victim, int ply);
    u64 arrive(Side side, Squares squares, int ply);
    u64 arrive_at(Side side, const Squares& squares, u32 number, int ply);
    bool settle(Side side, const Squares& squares, u32 number, const Entry& entry, int ply);
    bool all_moves_lose(Side side, const Squares& squares, u32 number) const;
    u8 value_after(Side mover, const Squares& squares, u32 number, std::size_t man, int to) const;
    static std::size_t find_en_passant(const EnPassantList& list, u32 number, int victim);

    Men men_;
    Numbering numbering_;
    Conversions conversions_;
    const Workers& workers_;
    Progress& progress_;
    bool pawns_face_;
    Table<SideValues, 2> sides_;
    std::atomic<int> longest_conversion_{0};
};

}  // namespace quelmar::tablemaker
