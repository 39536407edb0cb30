// Values worked out by hand, one to a line of tests/data/evaluation.txt, which says how a line reads. Every
// case is also asked with the colours exchanged, unless it is marked as an exception.
#include "board/attacks.h"
#include "board/game_result.h"
#include "board/make_move.h"
#include "board/setup.h"
#include "eval/eval_trace.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "eval/pawns.h"
#include "protocol/move_text.h"
#include "protocol/root_moves.h"
#include "support/engine.h"

#include <algorithm>
#include <sstream>

namespace quelmar {
namespace {

// A case as it is written, or the same with the colours exchanged: sides and squares are named as written.
struct View {
    bool exchanged;

    Side side(Side written) const { return exchanged ? other_side(written) : written; }
    Side side(const std::string& name) const { return side(name == "white" ? WHITE : BLACK); }
    Square square(std::string_view name) const {
        const Square square = square_at(name[0] - 'a', name[1] - '1');
        return exchanged ? flip_rank(square) : square;
    }
    std::string name(Square square) const { return square_text(exchanged ? flip_rank(square) : square); }
};

// Asks `question` of both sides as written, White first.
template <typename Question> std::string of_both(View view, Question question) {
    return question(view.side(WHITE)) + " / " + question(view.side(BLACK));
}

std::string score(View /*unused*/, const Words& words) {
    if (words.size() > 1)
        playing_style = static_cast<Style>(std::stoi(words[2]));
    return std::to_string(evaluate());
}

std::string totals(View /*unused*/, const Words& /*unused*/) {
    const EvalTrace trace = trace_evaluation();
    return std::to_string(trace.mg) + " " + std::to_string(trace.eg);
}

std::string blended(View /*unused*/, const Words& /*unused*/) {
    return std::to_string(trace_evaluation().blended);
}

std::string scaling(View view, const Words& /*unused*/) {
    const EvalTrace trace = trace_evaluation();
    return of_both(view, [&trace](Side side) {
        return trace.cannot_win[side] ? "cannot win" : std::to_string(trace.scale_shift[side]);
    });
}

std::string formation(View /*unused*/, const Words& /*unused*/) {
    constexpr const char* NAMES[] = {"open", "half open", "closed", "blocked", "lever", "full"};
    return NAMES[static_cast<int>(pawn_entry().structure_type)];
}

template <int SIZE> std::string list_text(View view, const char* title, const Table<u8, SIZE>& list) {
    Words names;
    for (const Square square : list) {
        if (square == 0)
            break;
        names.push_back(view.name(square));
    }
    std::sort(names.begin(), names.end());
    std::string text = names.empty() ? "" : title;
    for (const std::string& name : names)
        text += " " + name;
    return text.empty() ? "" : text + ", ";
}

std::string pawns(View view, const Words& words) {
    const SidePawns& lists = pawn_entry().of(view.side(words.at(1)));
    const std::string text =
        list_text(view, "isolated", lists.isolated) + list_text(view, "doubled", lists.doubled) +
        list_text(view, "rear", lists.isolated_rear) + list_text(view, "backward", lists.backward) +
        list_text(view, "passed", lists.passed);
    return text.empty() ? "none" : text.substr(0, text.size() - 2);
}

std::string storm(View view, const Words& words) {
    const SidePawns& side = pawn_entry().of(view.side(words.at(1)));
    return std::to_string(side.storm_queen_side) + " " + std::to_string(side.storm_king_side);
}

std::string weak(View view, const Words& words) {
    return std::to_string(pawn_entry().of(view.side(words.at(1))).weak_count_penalty);
}

std::string exchange(View view, const Words& words) {
    const auto board = position.board;
    const int gain = static_exchange(view.square(words.at(1)), view.square(words.at(1).substr(2)));
    return position.board == board ? std::to_string(gain) : "the board is not left as it was";
}

std::string threats(View view, const Words& /*unused*/) {
    evaluate();
    find_threats();
    const UndoRecord& here = position.current();
    const auto text_of = [view](const Table<u8, 3>& squares, const Table<u8, 3>& values) {
        std::string text;
        for (int i = 0; i < 3 && values[i] != 0; ++i)
            text += " " + view.name(squares[i]) + "=" + std::to_string(values[i]);
        return text.empty() ? " none" : text;
    };
    return "us" + text_of(here.threat_square_us, here.threat_value_us) + ", them" +
           text_of(here.threat_square_them, here.threat_value_them);
}

std::string attackers(View view, const Words& words) {
    evaluate();
    const int byte = attack_byte(view.side(words.at(2)), view.square(words.at(1)));
    std::string text;
    for (std::size_t kind = 0; kind < 5; ++kind)
        text += (byte >> ATTACK_KIND_SHIFT >> kind & 1) != 0 ? std::string(1, "PMRQK"[kind]) : "";
    return text + std::to_string(byte & ATTACK_COUNT);
}

std::string attacked(View view, const Words& words) {
    return is_square_attacked(view.square(words.at(1)), view.side(words.at(2))) ? "yes" : "no";
}

// How far the guess is from what the position after the move has.
std::string estimate(View view, const Words& words) {
    const std::string& move_words = words.at(1);
    const std::string text = square_text(view.square(move_words)) +
                             square_text(view.square(move_words.substr(2))) + move_words.substr(4);
    build_root_moves();
    const Move* found = find_root_move(text);
    if (found == nullptr)
        return "no such move";
    const Move move = *found;
    const int guess = material_placement_after_move(move);
    make_move(&move);
    evaluate();
    return std::to_string(-outputs_at(position.search_ply).ply_material_placement - guess);
}

std::string result(View /*unused*/, const Words& words) {
    position.current().halfmove_clock = static_cast<u8>(words.size() > 1 ? std::stoi(words[1]) : 0);
    constexpr const char* NAMES[] = {"none", "fifty moves", "repetition", "material", "stalemate",
                                     "",     "mate"};
    return NAMES[static_cast<int>(game_state())];
}

constexpr struct {
    const char* name;
    std::string (*answer)(View, const Words&);
} QUESTIONS[] = {
    {"score", score},         {"totals", totals},   {"blended", blended},   {"scaling", scaling},
    {"formation", formation}, {"pawns", pawns},     {"storm", storm},       {"weak", weak},
    {"exchange", exchange},   {"threats", threats}, {"attacked", attacked}, {"attackers", attackers},
    {"estimate", estimate},   {"result", result},
};

// A term as its row in the trace has it.
std::string term(View view, const std::string& name) {
    for (const EvalTrace::Row& row : trace_evaluation().rows) {
        if (row.term == name)
            return of_both(view, [&row](Side side) {
                const Points& points = side == WHITE ? row.white : row.black;
                return std::to_string(points.mg) + " " + std::to_string(points.eg);
            });
    }
    return "nobody knows " + name;
}

std::string answer(View view, const std::string& question) {
    std::istringstream stream(question);
    const Words words{std::istream_iterator<std::string>(stream), {}};
    for (const auto& known : QUESTIONS) {
        if (words.front() == known.name)
            return known.answer(view, words);
    }
    return term(view, question);
}

class EvaluationCases : public EngineTest {};

TEST_F(EvaluationCases, AreAnsweredInBothColours) {
    for (const Words& fields : data_rows("evaluation.txt")) {
        ASSERT_EQ(fields.size(), 4U) << fields.front();
        const bool exception = fields[0].front() == '!';
        const std::string fen = fields[0].substr(exception ? 1 : 0);
        SCOPED_TRACE(fen + ": " + fields[3]);
        for (const bool exchanged : {false, true}) {
            if (exchanged && exception)
                continue;
            playing_style = Style::ACTIVE;
            set_up(exchanged ? mirrored_fen(fen) : fen);
            EXPECT_EQ(answer({exchanged}, fields[1]), fields[2])
                << fields[1] << (exchanged ? ", colours exchanged" : "");
        }
    }
}

TEST_F(EvaluationCases, Repetition) {
    set_up(START_FEN);
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_EQ(game_state(), GameResult::NONE) << "twice";
    play("g1f3 g8f6 f3g1 f6g8");
    EXPECT_FALSE(is_threefold_repetition()) << "the look-back ends before the reversible part's first entry";
    play("g1f3");
    EXPECT_EQ(game_state(), GameResult::REPETITION) << "the third time with the knight on f3";
    set_up(START_FEN);
    play("e2e4 e7e5 g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8 b1c3");
    EXPECT_EQ(game_state(), GameResult::NONE) << "a new position";
}

}  // namespace
}  // namespace quelmar
