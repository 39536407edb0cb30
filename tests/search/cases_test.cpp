// Single rules of the search, one case to a line of tests/data/search.txt, which says how a line reads.
#include "board/check_maps.h"
#include "board/generate.h"
#include "board/make_move.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "eval/exchange.h"
#include "eval/outputs.h"
#include "protocol/move_text.h"
#include "search/extensions.h"
#include "search/ordering.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "support/searching.h"

namespace quelmar {
namespace {

void set_clock(const Words& words) {
    if (words[words.size() - 2] == "clock")
        position.current().halfmove_clock = static_cast<u8>(std::stoi(words.back()));
}

std::string search(const Words& words) {
    set_clock(words);
    forget_searches();
    const Verdict verdict = search_to(std::stoi(words.at(1)));
    return std::to_string(verdict.score) + " " + verdict.best;
}

std::string sound(const Words& words) {
    forget_searches();
    const Verdict verdict = search_to(std::stoi(words.at(1)));
    return verdict.score < FOUND_MATE_LIMIT ? "yes" : verdict.output;
}

void tell_node(MoveContext& context, const std::string& fact, int value) {
    const int ply = position.search_ply;
    if (fact == "threat") {
        context.mate_threat = value != 0;
    } else if (fact == "evasions") {
        context.in_check = true;
        context.evasions = value;
    } else if (fact == "balance") {
        outputs_at(ply).ply_material_placement = value;
    } else if (fact == "hanging") {
        position.current().threat_value_them[0] = static_cast<u8>(value);
    } else if (fact == "danger") {
        outputs_at(ply - 1).ply_king_danger[WHITE] = 0;
        outputs_at(ply).ply_king_danger[WHITE] = value;
    }
}

// The tree starts before the moves that were played.
std::string extension(const Words& words) {
    position.search_ply = position.game_ply;
    const Move move = move_named(words.at(1));
    MoveContext context;
    evaluate();
    find_threats();
    keep_attack_facts(context);
    for (std::size_t i = 3; i + 1 < words.size(); i += 2)
        tell_node(context, words[i], std::stoi(words[i + 1]));
    context.common = common_extension(context);
    const Depth depth = move_extension(context, move, std::stoi(words.at(2)));
    position.search_ply = 0;
    return std::to_string(depth);
}

std::string reduction(const Words& words) {
    forget_searches();
    position.search_ply = 1;
    Move move = position.previous().move;
    for (std::size_t i = 1; i + 1 < words.size(); i += 2) {
        const int value = std::stoi(words[i + 1]);
        if (words[i] == "nodes")
            search_state.nodes = static_cast<u64>(value);
        else if (words[i] == "history")
            search_state.history_of(move) = static_cast<u32>(value);
        else if (words[i] == "selectivity")
            search_settings.selectivity = value;
        else if (words[i] == "capture")
            move.captured = BLACK_PAWN;
        else
            search_state.at(words[i] == "extension-1" ? -1 : -4).extension = value;
    }
    const int plies = late_move_reduction(move);
    position.search_ply = 0;
    return std::to_string(plies);
}

std::string null_move(const Words& /*unused*/) {
    return std::to_string(null_move_reduction());
}

std::string repetition(const Words& /*unused*/) {
    return is_search_repetition() ? "yes" : "no";
}

std::string draw(const Words& words) {
    if (words.size() > 1)
        set_clock(words);
    return is_search_draw() ? "yes" : "no";
}

// What a search remembers; gives the move of the table.
PackedMove remember(const Words& words) {
    PackedMove table_move = 0;
    for (std::size_t i = 2; i + 1 < words.size(); i += 2) {
        const Move move = move_named(words[i + 1]);
        if (words[i] == "table")
            table_move = pack_move(move);
        else if (words[i] == "history")
            search_state.history_of(move) = HISTORY_LIMIT;
        else if (words[i] == "killer")
            search_state.at(0).killer = move;
        else if (words[i] == "mate-killer")
            search_state.at(0).mate_killer = move;
        else
            search_state.at(0).threat_move = pack_move(move);
    }
    return table_move;
}

std::string first(const Words& words) {
    evaluate();
    find_threats();
    forget_searches();
    const bool passed = words.size() > 2 && words[2] == "threat";
    for (int i = 0; i < 2 && passed; ++i)
        make_null_move();
    const PackedMove table_move = remember(words);
    generate_moves();
    order_moves(table_move);
    std::string names;
    for (int left = std::stoi(words.at(1)); left > 0; --left)
        if (const Move* move = pick_move())
            names += (names.empty() ? "" : " ") + move_text(*move);
    for (int i = 0; i < 2 && passed; ++i)
        unmake_null_move();
    return names;
}

std::string check(const Words& words) {
    const CheckKind kind = check_kind(move_named(words.at(1)));
    return kind == CheckKind::NONE ? "none" : kind == CheckKind::DIRECT ? "direct" : "discovered";
}

TEST_F(SearchTest, NullMoveReductionsHaveTheirBounds) {
    for (const auto& [value, expected] : {std::pair{0, 0}, {-9, 0}, {2147483647, 60}}) {
        search_settings.null_reduction = value;
        EXPECT_EQ(null_move_reduction(), expected);
    }
}

TEST_F(SearchTest, TheReadShiftOfTheHistoryGrowsWithTheCounters) {
    const Move move = move_named("a2a4");
    search_state.history_of(move) = HISTORY_LIMIT - 2;
    update_history_and_killer(move, 127);  // two plies and a bit count 3
    EXPECT_EQ(search_state.history_of(move), HISTORY_LIMIT + 1);
    EXPECT_EQ(search_state.history_shift, 1);
    update_history_and_killer(move, 240);
    EXPECT_EQ(search_state.history_of(move), HISTORY_LIMIT + 8);
    EXPECT_EQ(search_state.history_shift, 1);
    EXPECT_TRUE(same_squares(search_state.at(0).killer, move));
}

TEST_F(SearchTest, CasesAreAnswered) {
    constexpr Question QUESTIONS[] = {
        {"search", search},       {"extension", extension},   {"reduction", reduction},
        {"null-move", null_move}, {"repetition", repetition}, {"draw", draw},
        {"first", first},         {"check", check},           {"sound", sound},
    };
    expect_answers("search.txt", QUESTIONS);
}

}  // namespace
}  // namespace quelmar
