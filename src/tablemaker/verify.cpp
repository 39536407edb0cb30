#include "tablemaker/verify.h"

#include "tablebase/catalogue.h"
#include "tablemaker/conversions.h"
#include "tablemaker/error.h"
#include "tablemaker/plain_board.h"
#include "tablemaker/table_file.h"

#include <mutex>

namespace quelmar::tablemaker {

namespace {

constexpr std::size_t FAULTS_TOLD = 8;
constexpr int MATED = -126;  // as an entry
constexpr int NO_POSITION = 127;
constexpr int LONGEST = 1000;     // moves, more than any mate takes
constexpr int UNEXPECTED = 9999;  // no entry is this

// All tables that positions of one ending and their successors need.
class Values {
public:
    Values(TableStore& store, int number) : men_(ending_men(number)) {
        add(store, men_);
        for (const int below : Conversions::endings_below(men_)) {
            Men men = ending_men(below);
            add(store, men);
            for (Man& man : men.man)  // a successor may have the colours exchanged
                man.side = other_side(man.side);
            add(store, men);
        }
    }

    int entry(const Board& board) const {
        Men men;
        Squares squares{};
        men.count = 2;
        for (int square = 0; square < 64; ++square) {
            const Piece man = board.piece[square];
            if (man == EMPTY)
                continue;
            const std::size_t i = kind_of(man) == KING ? static_cast<std::size_t>(side_of(man)) : men.count++;
            men.man[i] = {side_of(man), kind_of(man)};
            squares[i] = static_cast<u8>(square);
        }
        if (men.count == 2)
            return 0;
        return values_.at(key(men)).byte(men, squares, board.to_move, board.ep_square);
    }

    const Men& men() const { return men_; }

private:
    // The material as a number: three bits for the count of each kind of either side.
    static u64 key(const Men& men) {
        u64 sum = 0;
        for (std::size_t i = 2; i < men.count; ++i)
            sum += u64{1} << (3 * (men.man[i].kind + 6 * men.man[i].side));
        return sum;
    }

    void add(TableStore& store, const Men& men) {
        if (!values_.contains(key(men)))
            values_.emplace(key(men), EndingValues(store, men));
    }

    Men men_;
    std::map<u64, EndingValues> values_;
};

// The entry that the position must have, by those of its successors.
int expected_entry(const Board& board, const Values& values) {
    int shortest_win = LONGEST, longest_loss = -1;
    bool draw = false, any = false, broken = false;
    for_each_move(board, [&](const Board& next) {
        any = true;
        const int entry = values.entry(next);
        if (entry == NO_POSITION)
            broken = true;
        else if (entry == 0)
            draw = true;
        else if (entry < 0 && entry > -128)  // the opponent is mated in this many moves, we mate one later
            shortest_win = std::min(shortest_win, entry == -127 ? 127 : entry - MATED + 1);
        else
            longest_loss = std::max(longest_loss, entry == -128 ? 127 : 127 - entry);
    });
    if (broken)
        return UNEXPECTED;
    if (!any)
        return king_attacked(board, board.to_move) ? MATED : 0;
    if (shortest_win < LONGEST)
        return shortest_win == 127 ? -128 : 127 - shortest_win;
    if (draw)
        return 0;
    return longest_loss >= 126 ? -127 : MATED + longest_loss;
}

class Verifier {
public:
    Verifier(TableStore& store, int number) : values_(store, number) {}

    // All positions with White's king on this square.
    void verify_king(int white_king) {
        Board board;
        put(board, white_king, WHITE_KING);
        place(board, 1, 0);
    }

    Verification result() const { return result_; }

private:
    // Puts man `i` and all later ones everywhere; equal men only in increasing order.
    void place(Board& board, std::size_t i, int first) {
        const Men& men = values_.men();
        if (i == men.count) {
            verify_sides(board);
            return;
        }
        const Man man = men.man[i];
        const bool pawn = man.kind == PAWN;
        for (int square = std::max(first, pawn ? 8 : 0); square < (pawn ? 56 : 64); ++square) {
            if (at(board, square) != EMPTY)
                continue;
            put(board, square, man_of(man.side, man.kind));
            place(board, i + 1, i + 1 < men.count && men.man[i + 1] == man ? square + 1 : 0);
            put(board, square, EMPTY);
        }
    }

    void verify_sides(Board board) {
        for (board.to_move = WHITE; board.to_move <= BLACK; ++board.to_move) {
            if (king_attacked(board, other_side(board.to_move)))
                continue;
            board.ep_square = NO_EP_SQUARE;
            verify_board(board);
            for (int square = 0; square < 64; ++square)
                if (at(board, square) == man_of(other_side(board.to_move), PAWN) &&
                    may_have_leapt(board, square)) {
                    board.ep_square = step(square, {0, up(board.to_move)});
                    verify_board(board);
                }
        }
    }

    static bool may_have_leapt(const Board& board, int square) {
        if (square / 8 != (board.to_move == WHITE ? 4 : 3))
            return false;
        const int passed = step(square, {0, up(board.to_move)}), start = step(passed, {0, up(board.to_move)});
        return at(board, passed) == EMPTY && at(board, start) == EMPTY && pawn_stands_ready(board, passed);
    }

    void verify_board(const Board& board) {
        const int entry = values_.entry(board), expected = expected_entry(board, values_);
        ++result_.positions;
        if (entry == expected)
            return;
        ++result_.faults;
        if (result_.first_faults.size() < FAULTS_TOLD)
            result_.first_faults.push_back(fen(board) + " has " + std::to_string(entry) + " instead of " +
                                           std::to_string(expected));
    }

    Values values_;
    Verification result_;
};

}  // namespace

void check_table_file(const std::filesystem::path& path) {
    const std::optional<TableName> name = table_named(path);
    if (!name)
        throw TablemakerError(path.string() + ": this is not the name of a table");
    const Ending& catalogued = ending(name->ending);
    const u64 entries = catalogued.entry_count[name->side];
    if (read_table(path).size() != entries * (catalogued.wide ? 2 : 1))
        throw TablemakerError(path.string() + ": wrong number of entries");
}

Verification verify_ending(TableStore& store, int number, const Workers& workers) {
    const bool pawns = ending(number).has_pawns();
    std::vector<int> kings;  // the others only repeat what these show
    for (int square = 0; square < 64; ++square)
        if (square % 8 < 4 && (pawns || square / 8 <= square % 8))
            kings.push_back(square);
    Verification total;
    std::mutex total_lock;
    const Verifier pattern(store, number);
    workers.share(kings.size(), 1, [&](u64 i, u64) {
        Verifier verifier = pattern;
        verifier.verify_king(kings[i]);
        const Verification part = verifier.result();
        const std::lock_guard lock(total_lock);
        total.positions += part.positions;
        total.faults += part.faults;
        total.first_faults.insert(total.first_faults.end(), part.first_faults.begin(),
                                  part.first_faults.end());
    });
    if (total.first_faults.size() > FAULTS_TOLD)
        total.first_faults.resize(FAULTS_TOLD);
    return total;
}

}  // namespace quelmar::tablemaker
