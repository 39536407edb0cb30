// One function per form. The console has a table with columns, xboard wants centiseconds and mates as
// numbers near 32767, UCI names every field.
#include "protocol/thinking.h"

#include "board/attacks.h"
#include "board/game_result.h"
#include "board/make_move.h"
#include "board/position.h"
#include "board/square_tables.h"
#include "protocol/move_text.h"
#include "protocol/output.h"
#include "protocol/protocol_state.h"
#include "protocol/settings.h"
#include "search/principal_variation.h"
#include "search/search_control.h"
#include "search/search_state.h"
#include "search/time_control.h"
#include "search/transposition.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>

namespace quelmar {

namespace {

constexpr Score PLAIN_SCORE_LIMIT = 14999;  // larger ones are mates, which the grain does not divide
constexpr int XBOARD_MATE_OFFSET = 2768;
constexpr int XBOARD_PV_MOVES = 30;
constexpr std::size_t CONSOLE_LINE = 41;  // characters of a variation before it is continued
constexpr char CONSOLE_CONTINUATION[] = "\n                                   ";

std::string last_pv_text;

int internal_units(Score score) {
    return std::abs(score) <= PLAIN_SCORE_LIMIT ? score * search_settings.grain() : score;
}

}  // namespace

bool is_mate_score(Score score) {
    return std::abs(internal_units(score)) > MATE_DISPLAY_LIMIT;
}

int centipawns(Score score) {
    return internal_units(score) * 100 >> 7;
}

namespace {

// Moves to mate after `sign`, with "-" in front of both when we are mated.
std::string mate_text(Score score, const char* sign) {
    const int moves = score >= 0 ? (MATE_SCORE + 1 - score) / 2 : (score + MATE_SCORE) / 2;
    Table<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%s%s%d", score < 0 ? "-" : "", sign, moves);
    return text.data();
}

std::span<const Move> pv_moves(int at_most = MAX_PV) {
    return {search_state.pv.data(), static_cast<std::size_t>(std::min(search_state.pv_length, at_most))};
}

// A blank behind each move, or in front of each where lines must not end with one.
void print_moves(std::span<const Move> moves) {
    for (const Move& move : moves)
        print(protocol_state.standard_uci ? " %s" : "%s ", move_text(move).c_str());
}

// "+" or "#" when the move just made gives check or mate.
const char* check_mark() {
    if (!in_check(position.side_to_move))
        return "";
    return game_state() == GameResult::MATE ? "#" : "+";
}

// An en-passant capture from the table may no longer be one on this path.
bool is_stale_en_passant(const Move& move) {
    return move.flags == EN_PASSANT && move.to != position.current().ep_square;
}

// The variation in SAN, on the console broken into lines that keep its column. Also kept for print_tellall.
std::string pv_to_san() {
    const PieceOrderGuard guard;
    std::string text;
    std::size_t on_line = 0;
    int made = 0;
    for (const Move& move : pv_moves()) {
        if (is_stale_en_passant(move))
            break;
        const std::string san = san_text(move);
        if (san == "*")
            break;
        make_move(&move);
        ++made;
        if (!protocol_state.xboard_mode && on_line + san.size() > CONSOLE_LINE) {
            text += CONSOLE_CONTINUATION;
            on_line = 0;
        }
        const std::string marked = san + check_mark();
        text += marked + " ";
        on_line += marked.size() + 1;
    }
    while (made > 0)
        unmake_move(&search_state.pv[--made]);
    last_pv_text = text;
    return text;
}

void print_xboard_line(int depth, Score score, i32 elapsed_ms, u64 nodes, LineKind kind) {
    int shown = centipawns(score);
    if (is_mate_score(score))
        shown = internal_units(score) + (score > 0 ? XBOARD_MATE_OFFSET : -XBOARD_MATE_OFFSET);
    print("%d %d %d %lld ", depth, shown, elapsed_ms / 10, static_cast<long long>(nodes));
    if (settings.san_output != 0)
        print("%s", pv_to_san().c_str());
    else
        print_moves(pv_moves(XBOARD_PV_MOVES));
    if (kind == LineKind::UPPER_BOUND)
        print(":-(");
    else if (kind == LineKind::LOWER_BOUND)
        print(":-)");
    print("\n");
}

void print_console_score(Score score, LineKind kind) {
    constexpr double PAWNS_PER_UNIT = 0.0078125;
    const bool mate = is_mate_score(score);
    const std::string mate_in = mate_text(score, "#");
    const double pawns = internal_units(score) * PAWNS_PER_UNIT;
    if (kind == LineKind::EXACT)
        mate ? print("%8s ", mate_in.c_str()) : print("%8.2f ", pawns);
    else {
        print(kind == LineKind::UPPER_BOUND ? "<=" : ">=");
        mate ? print("%6s ", mate_in.c_str()) : print("%6.2f ", pawns);
    }
}

void print_console_line(int depth, Score score, i32 elapsed_ms, u64 nodes, LineKind kind) {
    print("%2d    ", depth);
    print_console_score(score, kind);
    print("%8s %10lld %s\n", format_time(elapsed_ms).c_str(), static_cast<long long>(nodes),
          pv_to_san().c_str());
}

void print_uci_line(int depth, Score score, i32 elapsed_ms, u64 nodes, LineKind kind) {
    const char* bound = kind == LineKind::UPPER_BOUND   ? "upperbound "
                        : kind == LineKind::LOWER_BOUND ? "lowerbound "
                                                        : "";
    print("info depth %d seldepth %d time %d nodes %lld ", depth, search_state.sel_depth, elapsed_ms,
          static_cast<long long>(nodes));
    if (is_mate_score(score)) {
        print("score mate %s %scurrmovenumber %d currmove %s nps %lld ", mate_text(score, "").c_str(), bound,
              search_state.root_moves_searched, move_text(search_state.current_root_move).c_str(),
              static_cast<long long>(nodes) / std::max(elapsed_ms / 1000, 1));
    } else {
        print("score cp %d %snps %lld ", centipawns(score), bound,
              static_cast<long long>(nodes) * 1000 / std::max(elapsed_ms, 1));
    }
    print("pv ");
    print_moves(pv_moves());
    print("\n");
}

}  // namespace

void print_thinking_line(int depth, Score score, i32 elapsed_ms, u64 nodes, LineKind kind) {
    if (protocol_state.uci_mode) {
        print_uci_line(depth, score, elapsed_ms, nodes, kind);
    } else if (protocol_state.xboard_mode) {
        const bool negate = settings.white_score != 0 && position.side_to_move == BLACK;
        print_xboard_line(depth, negate ? -score : score, elapsed_ms, nodes, kind);
    } else {
        print_console_line(depth, score, elapsed_ms, nodes, kind);
    }
}

namespace {

void print_refutation(const Move& root_move) {
    if (!protocol_state.uci_mode || settings.show_refutations == 0)
        return;
    const PieceOrderGuard guard;
    Table<Move, MAX_PV> line;
    make_move(&root_move);
    const int length = walk_table(line);
    print(protocol_state.standard_uci ? "info refutation" : "info refutation ");
    print_moves({&root_move, 1});
    print_moves({line.data(), static_cast<std::size_t>(length)});
    print("\n");
    unmake_move(&root_move);
}

void announce_iteration() {
    if (search_state.iteration > 1 && protocol_state.uci_mode)
        print("info depth %d seldepth %d\n", search_state.iteration,
              std::max(search_state.sel_depth, search_state.iteration));
}

void print_current_move() {
    if (!protocol_state.uci_mode)
        return;
    print("info currmove %s currmovenumber %d\n", move_text(search_state.current_root_move).c_str(),
          search_state.root_moves_searched);
}

void print_current_line() {
    print(protocol_state.standard_uci ? "info currline 1" : "info currline");
    for (int back = position.search_ply; back > 0; --back) {
        const Move& move = position.back(back).move;
        if (protocol_state.standard_uci && move.from == 0)
            break;  // clients play the moves, and a null move is none
        print(" %s", move_text(move).c_str());
    }
    print("\n");
}

void print_status() {
    if (!protocol_state.uci_mode)
        return;
    const i32 elapsed = elapsed_since(search_state.start_time);
    const auto nodes = static_cast<long long>(search_state.nodes);
    const long long nps = elapsed > 0 ? nodes * 1000 / elapsed : nodes * 1000;
    print("info nodes %lld nps %lld hashfull %d tbhits %d\n", nodes, nps, tt_hashfull(),
          static_cast<int>(search_state.tb_hits));
    if (settings.show_curr_line != 0)
        print_current_line();
}

void print_variation(Score score, i32 elapsed_ms, LineKind kind) {
    print_thinking_line(search_state.iteration, score, elapsed_ms, search_state.nodes, kind);
}

}  // namespace

void print_what_the_search_says() {
    search_reports.iteration_begins = announce_iteration;
    search_reports.line = print_variation;
    search_reports.root_move_begins = print_current_move;
    search_reports.root_move_refuted = print_refutation;
    search_reports.status = print_status;
}

std::string score_text(Score score) {
    constexpr double CENTIPAWNS = 100.0;
    if (is_mate_score(score))
        return mate_text(score, "#");
    Table<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%+.2f", centipawns(score) / CENTIPAWNS);
    return text.data();
}

void print_stat01() {
    print("stat01: %d %lld %d %d %d %s\n", elapsed_since(search_state.start_time) / 10,
          static_cast<long long>(search_state.nodes), search_state.iteration,
          search_state.root_legal_moves - search_state.root_moves_searched, search_state.root_legal_moves,
          move_text(search_state.current_root_move).c_str());
}

void print_tellall() {
    const Score score = search_state.last_score;
    const int scores_per_pawn = PAWN_VALUE / search_settings.grain();
    print("tellall depth=%d nodes=%lld score=", search_state.iteration,
          static_cast<long long>(search_state.nodes));
    if (is_mate_score(score))
        print("%s", mate_text(score, "#").c_str());
    else
        print("%.2f", static_cast<double>(score) / scores_per_pawn);
    print(" PV: %s\n", last_pv_text.c_str());
}

void clear_last_pv_text() {
    last_pv_text.clear();
}

std::string format_time(i32 ms) {
    const int hours = ms / 3600000, minutes = ms % 3600000 / 60000;
    const int seconds = ms % 60000 / 1000, hundredths = ms % 1000 / 10;
    Table<char, 40> text{};
    if (hours > 0)
        std::snprintf(text.data(), text.size(), "%d:%02d:%02d", hours, minutes, seconds);
    else if (minutes > 0)
        std::snprintf(text.data(), text.size(), "%d:%02d", minutes, seconds);
    else
        std::snprintf(text.data(), text.size(), "%d.%02d", seconds, hundredths);
    return text.data();
}

}  // namespace quelmar
