#include "board/game_result.h"

#include "board/attacks.h"
#include "board/generate.h"
#include "board/position.h"

namespace quelmar {

namespace {

constexpr Table<const char*, 9> RESULT_TEXTS = {
    "", "50 moves", "Repetition", "Material", "Stalemate", "Agreement", "Mate", "Time", "Resign"};

}  // namespace

bool is_material_insufficient() {
    return has_bare_material(position.current());
}

const char* result_text(GameResult result) {
    return RESULT_TEXTS[static_cast<int>(result)];
}

bool is_decisive_result(GameResult result) {
    return result > GameResult::AGREEMENT;
}

bool is_threefold_repetition() {
    const UndoRecord& here = position.current();
    const int reversible = here.halfmove_clock;
    if (reversible <= 2)
        return false;
    int count = 1;
    int plies = 2;
    do {
        if (plies > position.game_ply)
            return false;
        if (position.back(plies).key == here.key && ++count > 2)
            return true;
        plies += 2;
    } while (plies < reversible);
    return false;
}

GameResult game_state() {
    generate_legal_moves();
    if (move_list.current().empty())
        return in_check(position.side_to_move) ? GameResult::MATE : GameResult::STALEMATE;
    const UndoRecord& here = position.current();
    if (here.halfmove_clock >= FIFTY_MOVES)
        return GameResult::FIFTY_MOVES;
    if (is_threefold_repetition())
        return GameResult::REPETITION;
    return is_material_insufficient() ? GameResult::MATERIAL : GameResult::NONE;
}

}  // namespace quelmar
