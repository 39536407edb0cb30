#include "search/ordering.h"

#include "board/position.h"
#include "board/processor.h"
#include "eval/exchange.h"
#include "search/search_state.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <span>

#ifdef QUELMAR_HAS_MODERN_COPY
#include <immintrin.h>
#endif

namespace quelmar {

namespace {

constexpr i32 HANDED_OUT = std::numeric_limits<i32>::min();

// The scores of a ply's moves, each in the place of its move. They lie apart from the moves so that the
// picker reads nothing else, and end with a whole number of lanes, so that it reads them as vectors.
constexpr int LANES = 8;
using ScoreList = Table<i32, MAX_MOVES_IN_POSITION + LANES>;
static_assert(ScoreList::size() % LANES == 0);

struct Scores {
    alignas(LANES * sizeof(i32)) ScoreList of;
};
Table<Scores, MOVE_LIST_PLIES> scores;

ScoreList& current_scores() {
    return scores[position.search_ply].of;
}

// A move's score is its worth times this plus the cheapness of the man that moves, which decides between
// equals.
constexpr i32 WORTH_UNIT = 8;
constexpr Table<i32, 14> cheapness = {0, 5, 4, 4, 3, 2, 1, 5, 4, 4, 3, 2, 1, 0};

constexpr i32 THREATENED_STEP = 100;  // between the worst and the second worst hanging man
constexpr int HISTORY_DEPTH_SHIFT = 5;

// By the victim's code; a king last of all, since a move that can take it ends the node.
constexpr Table<i32, 14> capture_order = {0, 115, 116, 117, 118, 119, 126, 115, 116, 117, 118, 119, 126, 0};

i32 capture_worth(const UndoRecord& here, const Move& move) {
    for (int i = 0; i < here.threat_square_them.size(); ++i) {
        if (here.threat_value_them[i] != 0 && here.threat_square_them[i] == move.to)
            return ORDER_WINS_THREATENED - THREATENED_STEP * static_cast<i32>(i) - move.piece;
    }
    return ORDER_CAPTURE + capture_order[move.captured];
}

i32 promotion_worth(const Move& move) {
    const bool sound = static_exchange(move.from, move.to) >= 0;
    if (kind_of(move.promotion) == QUEEN)
        return sound ? ORDER_QUEEN_PROMOTION : ORDER_LOSING_QUEEN_PROMOTION;
    return sound ? ORDER_UNDERPROMOTION : ORDER_LOSING_UNDERPROMOTION;
}

// What the worth of every move of a node asks, read once.
class Worth {
public:
    i32 of(const Move& move) const {
        if (is_quiet(move))
            return quiet_worth(move);
        return move.captured != EMPTY ? capture_worth(here_, move) : promotion_worth(move);
    }

private:
    i32 quiet_worth(const Move& move) const {
        const u16 squares = squares_of(move);
        if (squares == killer_)
            return ORDER_KILLER;
        if (squares == older_killer_)
            return ORDER_OLDER_KILLER;
        return static_cast<i32>(search_state.history_of(move) >> history_shift_);
    }

    const UndoRecord& here_ = position.current();
    const u16 killer_ = squares_of(search_state.at(position.search_ply).killer);
    const u16 older_killer_ = squares_of(search_state.at(position.search_ply - 2).killer);
    const int history_shift_ = search_state.history_shift;
};

i32 score_of(const Move& move, i32 worth) {
    return worth * WORTH_UNIT + cheapness[move.piece];
}

void lift_first(u16 squares, i32 worth) {
    i32* score = current_scores().begin();
    for (const Move& move : move_list.current()) {
        if (squares_of(move) == squares) {
            *score = score_of(move, worth);
            return;
        }
        ++score;
    }
}

// The place of the best score, the first of equals; -1 when all are handed out. The first vector can always
// be read, since a vector's worth of HANDED_OUT stands behind the last score.
int place_of_best(const i32* left, int vectors) {
    const int size = LANES * vectors;
    i32 best = HANDED_OUT;
    for (int i = 0; i < size; ++i)
        best = std::max(best, left[i]);
    if (best == HANDED_OUT)
        return -1;
    int from_end = 0;
    for (int i = 0; i < size; ++i) {
        const int is_best = left[i] == best;
        from_end = std::max(from_end, -is_best & (size - i));
    }
    return size - from_end;
}

#ifdef QUELMAR_HAS_MODERN_COPY
// The same, a whole vector at a time.
QUELMAR_IN_MODERN_COPY int place_of_best_among_lanes(const i32* left, int vectors) {
    const auto* lanes = reinterpret_cast<const __m256i*>(left);
    __m256i most = lanes[0];
    for (int i = 1; i < vectors; ++i)
        most = _mm256_max_epi32(most, lanes[i]);
    // The largest of the lanes in all of them.
    most = _mm256_max_epi32(most, _mm256_permute2x128_si256(most, most, 1));
    most = _mm256_max_epi32(most, _mm256_shuffle_epi32(most, 0b01'00'11'10));
    most = _mm256_max_epi32(most, _mm256_shuffle_epi32(most, 0b10'11'00'01));
    if (_mm256_cvtsi256_si32(most) == HANDED_OUT)
        return -1;
    for (int i = 0;; ++i) {
        const int equal = _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpeq_epi32(lanes[i], most)));
        if (equal != 0)
            return LANES * i + std::countr_zero(static_cast<unsigned>(equal));
    }
}
#else
constexpr int (*place_of_best_among_lanes)(const i32* left, int vectors) = place_of_best;
#endif

// What pick_move() does.
template <int (*PlaceOfBest)(const i32* left, int vectors)> Move* pick_by() {
    const std::span<Move> moves = move_list.current();
    i32* const left = current_scores().begin();
    const int place = PlaceOfBest(left, static_cast<int>((moves.size() + LANES - 1) / LANES));
    if (place < 0)
        return nullptr;
    left[place] = HANDED_OUT;
    return moves.data() + place;
}

QUELMAR_MODERN_COPY Move* pick_on_modern_processor() {
    return pick_by<place_of_best_among_lanes>();
}

// Scores the moves by themselves.
void score_moves() {
    const Worth worth;
    i32* score = current_scores().begin();
    for (const Move& move : move_list.current())
        *score++ = score_of(move, worth.of(move));
    std::fill_n(score, LANES, HANDED_OUT);
}

QUELMAR_MODERN_COPY void score_moves_on_modern_processor() {
    score_moves();
}

}  // namespace

void order_moves(PackedMove table_move) {
    if (modern_processor)
        score_moves_on_modern_processor();
    else
        score_moves();
    // The later the stronger: each may override the one before.
    const int ply = position.search_ply;
    if (table_move != 0)
        lift_first(packed_squares(table_move), ORDER_TABLE_MOVE);
    const Move& mate_killer = search_state.at(ply).mate_killer;
    if (mate_killer.from != 0)
        lift_first(squares_of(mate_killer), ORDER_MATE_KILLER);
    const PackedMove threat = search_state.at(ply - 2).threat_move;
    if (threat != 0 && move_before().from == 0)
        lift_first(packed_squares(threat), ORDER_MATE_KILLER);
}

Move* pick_move() {
    return modern_processor ? pick_on_modern_processor() : pick_by<place_of_best>();
}

void update_history_and_killer(const Move& move, Depth depth) {
    u32& counter = search_state.history_of(move);
    counter += static_cast<u32>(depth >> HISTORY_DEPTH_SHIFT);
    if (counter > HISTORY_LIMIT << search_state.history_shift)
        ++search_state.history_shift;
    search_state.at(position.search_ply).killer = move;
}

}  // namespace quelmar
